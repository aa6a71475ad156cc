#include "app/demo/exports.h"

#include <algorithm>
#include <charconv>
#include <span>

namespace {

// Text with numbers that look the same whatever the locale.
class Text
{
public:
  template <typename... Parts>
  Text& Put(const Parts&... parts)
  {
    (Add(parts), ...);
    return *this;
  }
  std::string Take() { return std::move(text); }

private:
  void Add(std::string_view part) { text += part; }
  void Add(size_t number) { text += std::to_string(number); }
  void Add(float number)
  {
    char digits[64];
    const auto end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, 4).ptr;
    text.append(digits, end);
  }
  std::string text;
};

// Meshes that become one object; a face names its mesh's submaterial.
struct Object
{
  std::string name;
  std::vector<const DemoMesh*> meshes;
  size_t material = 0;

  size_t Vertices() const
  {
    size_t n = 0;
    for (const DemoMesh* m : meshes)
      n += m->vertices.size();
    return n;
  }
  size_t Faces() const
  {
    size_t n = 0;
    for (const DemoMesh* m : meshes)
      n += m->indices.size() / 3;
    return n;
  }
};

std::vector<const DemoMesh*> MeshesOf(const DemoNode& node)
{
  std::vector<const DemoMesh*> meshes;
  for (const DemoMesh& m : node.levels.front().meshes)
    if (!m.indices.empty())
      meshes.push_back(&m);
  return meshes;
}

// In order of first use.
std::vector<std::string> MaterialsOf(const DemoScenery& scenery)
{
  std::vector<std::string> names;
  for (const DemoNode& node : scenery.nodes)
    for (const DemoMesh* m : MeshesOf(node))
      if (std::find(names.begin(), names.end(), m->material) == names.end())
        names.push_back(m->material);
  return names;
}

size_t MaterialNumber(std::span<const std::string> materials, const DemoMesh& mesh)
{
  return static_cast<size_t>(std::find(materials.begin(), materials.end(), mesh.material) - materials.begin());
}

std::vector<Object> PlainObjects(const DemoScenery& scenery, std::span<const std::string> materials)
{
  std::vector<Object> objects;
  for (const DemoNode& node : scenery.nodes) {
    const auto meshes = MeshesOf(node);
    for (size_t i = 0; i < meshes.size(); ++i) {
      std::string name = node.name + (meshes.size() > 1 ? "_" + meshes[i]->material : "");
      const auto before = std::count_if(meshes.begin(), meshes.begin() + static_cast<std::ptrdiff_t>(i),
                                        [&](const DemoMesh* m) { return m->material == meshes[i]->material; });
      if (before > 0)
        name += "_" + std::to_string(before + 1);
      objects.push_back({name, {meshes[i]}, MaterialNumber(materials, *meshes[i])});
    }
  }
  return objects;
}

std::vector<Object> MultiSubObjects(const DemoScenery& scenery)
{
  std::vector<Object> objects;
  for (const DemoNode& node : scenery.nodes)
    if (auto meshes = MeshesOf(node); !meshes.empty())
      objects.push_back({node.name, std::move(meshes), 0});
  return objects;
}

// What stands between the braces of a plain material, each line behind the indent.
void PutMaterial(Text& out, const std::string& indent, const std::string& name)
{
  out.Put(indent, "*MATERIAL_NAME \"", name, "\"\n", indent, "*MATERIAL_CLASS \"Standard\"\n");
  out.Put(indent, "*MATERIAL_AMBIENT 0.8000\t0.8000\t0.8000\n", indent, "*MATERIAL_DIFFUSE 0.8000\t0.8000\t0.8000\n");
  out.Put(indent, "*MATERIAL_SPECULAR 0.0000\t0.0000\t0.0000\n", indent, "*MATERIAL_SHINE 0.0000\n");
  out.Put(indent, "*MATERIAL_TRANSPARENCY 0.0000\n", indent, "*MAP_DIFFUSE {\n");
  out.Put(indent, "\t*MAP_NAME \"Map ", name, "\"\n", indent, "\t*MAP_CLASS \"Bitmap\"\n");
  out.Put(indent, "\t*BITMAP \"..\\maps\\", name, ".tga\"\n");
  for (const char* setting : {"*UVW_U_OFFSET 0.0000", "*UVW_V_OFFSET 0.0000", "*UVW_U_TILING 1.0000",
                              "*UVW_V_TILING 1.0000", "*UVW_ANGLE 0.0000"})
    out.Put(indent, "\t", setting, "\n");
  out.Put(indent, "}\n");
}

void PutMaterials(Text& out, std::span<const std::string> materials, DemoAseKind kind)
{
  const bool multi = kind == DemoAseKind::MULTI_SUB;
  out.Put("*MATERIAL_LIST {\n\t*MATERIAL_COUNT ", multi ? size_t{1} : materials.size(), "\n");
  if (multi)
    out.Put("\t*MATERIAL 0 {\n\t\t*MATERIAL_NAME \"scenery\"\n\t\t*MATERIAL_CLASS \"Multi/Sub-Object\"\n"
            "\t\t*NUMSUBMTLS ",
            materials.size(), "\n");
  for (size_t i = 0; i < materials.size(); ++i) {
    out.Put(multi ? "\t\t*SUBMATERIAL " : "\t*MATERIAL ", i, " {\n");
    PutMaterial(out, multi ? "\t\t\t" : "\t\t", materials[i]);
    out.Put(multi ? "\t\t}\n" : "\t}\n");
  }
  out.Put(multi ? "\t}\n}\n" : "}\n");
}

// Calls put with each vertex and its number.
template <typename Put>
void ForVertices(const Object& object, Put put)
{
  size_t n = 0;
  for (const DemoMesh* m : object.meshes)
    for (const DemoVertex& v : m->vertices)
      put(n++, v);
}

// Calls put with each face's number, its mesh, its corners in that mesh, and the mesh's first vertex in the object.
template <typename Put>
void ForFaces(const Object& object, Put put)
{
  size_t n = 0;
  size_t first = 0;
  for (const DemoMesh* m : object.meshes) {
    for (size_t i = 0; i + 2 < m->indices.size(); i += 3)
      put(n++, *m, &m->indices[i], first);
    first += m->vertices.size();
  }
}

// "*KEYWORD f a b c", the corners as numbers in the object.
void PutCorners(Text& out, const Object& object, std::string_view keyword)
{
  ForFaces(object, [&](size_t n, const DemoMesh&, const uint16_t* corner, size_t first) {
    out.Put("\t\t\t", keyword, " ", n);
    for (size_t k = 0; k < 3; ++k)
      out.Put("\t", first + corner[k]);
    out.Put("\n");
  });
}

void PutDirection(Text& out, const DVector3& v)
{
  out.Put("\t", v.x, "\t", -v.z, "\t", v.y, "\n");
}

void PutShape(Text& out, const Object& object, std::span<const std::string> materials, DemoAseKind kind)
{
  out.Put("\t\t*MESH_NUMVERTEX ", object.Vertices(), "\n\t\t*MESH_NUMFACES ", object.Faces(), "\n");
  out.Put("\t\t*MESH_VERTEX_LIST {\n");
  ForVertices(object, [&](size_t n, const DemoVertex& v) {
    out.Put("\t\t\t*MESH_VERTEX ", n);
    PutDirection(out, v.position);
  });
  out.Put("\t\t}\n\t\t*MESH_FACE_LIST {\n");
  ForFaces(object, [&](size_t n, const DemoMesh& mesh, const uint16_t* corner, size_t first) {
    const size_t id = kind == DemoAseKind::MULTI_SUB ? MaterialNumber(materials, mesh) : 0;
    out.Put("\t\t\t*MESH_FACE ", n, ":    A: ", first + corner[0], " B: ", first + corner[1], " C: ");
    out.Put(first + corner[2], " AB:    1 BC:    1 CA:    1\t *MESH_SMOOTHING 1 \t*MESH_MTLID ", id, "\n");
  });
  out.Put("\t\t}\n");
}

void PutTexture(Text& out, const Object& object)
{
  out.Put("\t\t*MESH_NUMTVERTEX ", object.Vertices(), "\n\t\t*MESH_TVERTLIST {\n");
  ForVertices(object, [&](size_t n, const DemoVertex& v) {
    out.Put("\t\t\t*MESH_TVERT ", n, "\t", v.uv.x, "\t", v.uv.y, "\t0.0000\n");
  });
  out.Put("\t\t}\n\t\t*MESH_NUMTVFACES ", object.Faces(), "\n\t\t*MESH_TFACELIST {\n");
  PutCorners(out, object, "*MESH_TFACE");
  out.Put("\t\t}\n");
}

void PutColors(Text& out, const Object& object)
{
  out.Put("\t\t*MESH_NUMCVERTEX ", object.Vertices(), "\n\t\t*MESH_CVERTLIST {\n");
  ForVertices(object, [&](size_t n, const DemoVertex& v) {
    out.Put("\t\t\t*MESH_VERTCOL ", n, "\t", v.color.x, "\t", v.color.y, "\t", v.color.z, "\n");
  });
  out.Put("\t\t}\n\t\t*MESH_NUMCVFACES ", object.Faces(), "\n\t\t*MESH_CFACELIST {\n");
  PutCorners(out, object, "*MESH_CFACE");
  out.Put("\t\t}\n");
}

void PutNormals(Text& out, const Object& object)
{
  out.Put("\t\t*MESH_NORMALS {\n");
  ForFaces(object, [&](size_t n, const DemoMesh& mesh, const uint16_t* corner, size_t first) {
    const auto at = [&](size_t k) -> const DemoVertex& { return mesh.vertices[corner[k]]; };
    const DVector3 a = at(0).position;
    out.Put("\t\t\t*MESH_FACENORMAL ", n);
    PutDirection(out, DNormalized(glm::cross(at(1).position - a, at(2).position - a)));
    for (size_t k = 0; k < 3; ++k) {
      out.Put("\t\t\t\t*MESH_VERTEXNORMAL ", first + corner[k]);
      PutDirection(out, at(k).normal);
    }
  });
  out.Put("\t\t}\n");
}

void PutObject(Text& out, const Object& object, std::span<const std::string> materials, DemoAseKind kind)
{
  out.Put("*GEOMOBJECT {\n\t*NODE_NAME \"", object.name, "\"\n\t*NODE_TM {\n\t\t*NODE_NAME \"", object.name, "\"\n");
  out.Put("\t\t*TM_ROW0 1.0000\t0.0000\t0.0000\n\t\t*TM_ROW1 0.0000\t1.0000\t0.0000\n");
  out.Put("\t\t*TM_ROW2 0.0000\t0.0000\t1.0000\n\t\t*TM_ROW3 0.0000\t0.0000\t0.0000\n\t}\n");
  out.Put("\t*MESH {\n\t\t*TIMEVALUE 0\n");
  PutShape(out, object, materials, kind);
  PutTexture(out, object);
  PutColors(out, object);
  PutNormals(out, object);
  out.Put("\t}\n\t*PROP_MOTIONBLUR 0\n\t*PROP_CASTSHADOW 1\n\t*PROP_RECVSHADOW 1\n");
  out.Put("\t*MATERIAL_REF ", object.material, "\n}\n");
}

// Lines of "  a b c," for a list between brackets.
template <typename Value>
void PutList(Text& out, const DemoMesh& mesh, Value value)
{
  for (size_t i = 0; i < mesh.vertices.size(); ++i) {
    out.Put("          ");
    value(mesh.vertices[i]);
    out.Put(i + 1 < mesh.vertices.size() ? ",\n" : "\n");
  }
}

void PutFaces(Text& out, const char* name, const DemoMesh& mesh)
{
  out.Put("        ", name, " [\n");
  for (size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
    out.Put("          ", size_t{mesh.indices[i]}, ", ", size_t{mesh.indices[i + 1]}, ", ");
    out.Put(size_t{mesh.indices[i + 2]}, ", -1", i + 5 < mesh.indices.size() ? ",\n" : "\n");
  }
  out.Put("        ]\n");
}

} // namespace

std::string DemoAse(const DemoScenery& scenery, DemoAseKind kind)
{
  const std::vector<std::string> materials = MaterialsOf(scenery);
  Text out;
  out.Put("*3DSMAX_ASCIIEXPORT\t200\n*COMMENT \"pavex-demo\"\n*SCENE {\n\t*SCENE_FILENAME \"scenery.max\"\n");
  out.Put("\t*SCENE_FIRSTFRAME 0\n\t*SCENE_LASTFRAME 100\n\t*SCENE_FRAMESPEED 30\n\t*SCENE_TICKSPERFRAME 160\n");
  out.Put("\t*SCENE_BACKGROUND_STATIC 0.0000\t0.0000\t0.0000\n\t*SCENE_AMBIENT_STATIC 0.0000\t0.0000\t0.0000\n}\n");
  PutMaterials(out, materials, kind);
  for (const Object& object : kind == DemoAseKind::PLAIN ? PlainObjects(scenery, materials) : MultiSubObjects(scenery))
    PutObject(out, object, materials, kind);
  return out.Take();
}

std::string DemoWrl(const DemoNode& node)
{
  Text out;
  out.Put("#VRML V2.0 utf8\n\n# pavex-demo\n\nDEF ", node.name, " Transform {\n  children [\n");
  for (const DemoMesh* mesh : MeshesOf(node)) {
    out.Put("    Shape {\n      appearance Appearance {\n        material Material {\n");
    out.Put("          diffuseColor 0.800 0.800 0.800\n          ambientIntensity 0.000\n");
    out.Put("          specularColor 0.000 0.000 0.000\n          shininess 0.000\n          transparency 0.000\n");
    out.Put("        }\n        texture ImageTexture {\n          url \"", mesh->material,
            ".tga\"\n        }\n      }\n");
    out.Put("      geometry IndexedFaceSet {\n        ccw TRUE\n        coord Coordinate { point [\n");
    PutList(out, *mesh, [&](const DemoVertex& v) { out.Put(v.position.x, " ", v.position.y, " ", v.position.z); });
    out.Put("        ] }\n        normal Normal { vector [\n");
    PutList(out, *mesh, [&](const DemoVertex& v) { out.Put(v.normal.x, " ", v.normal.y, " ", v.normal.z); });
    out.Put("        ] }\n        normalPerVertex TRUE\n        texCoord TextureCoordinate { point [\n");
    PutList(out, *mesh, [&](const DemoVertex& v) { out.Put(v.uv.x, " ", v.uv.y); });
    out.Put("        ] }\n");
    for (const char* name : {"coordIndex", "texCoordIndex", "normalIndex"})
      PutFaces(out, name, *mesh);
    out.Put("      }\n    }\n");
  }
  out.Put("  ]\n}\n");
  return out.Take();
}

std::vector<DemoFile> DemoExportFiles(const DemoScenery& scenery)
{
  std::vector<DemoFile> files;
  files.push_back({"export/scenery.ase", DemoAse(scenery, DemoAseKind::PLAIN)});
  files.push_back({"export/scenery_multisub.ase", DemoAse(scenery, DemoAseKind::MULTI_SUB)});
  for (const DemoNode& node : scenery.nodes)
    files.push_back({"SCGT/wrl/" + node.name + ".wrl", DemoWrl(node)});
  return files;
}
