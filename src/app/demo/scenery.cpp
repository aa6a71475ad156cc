#include "app/demo/scenery.h"

int DemoMesh::Add(const DemoVertex& v)
{
  vertices.push_back(v);
  vertices.back().color = glm::clamp(v.color, DVector3(0.0f), DVector3(1.0f));
  return static_cast<int>(vertices.size()) - 1;
}

void DemoMesh::Triangle(int a, int b, int c)
{
  const auto at = [&](int i) -> const DVector3& { return vertices[static_cast<size_t>(i)].position; };
  const DVector3 cross = glm::cross(at(b) - at(a), at(c) - at(a));
  // Also what a tree of triangles would refuse: an edge of less than 3 mm.
  const float shortest = std::min({glm::length(at(b) - at(a)), glm::length(at(c) - at(b)), glm::length(at(a) - at(c))});
  if (glm::length(cross) < 1e-4f || shortest < 0.01f)
    return;
  for (const int i : {a, b, c})
    indices.push_back(static_cast<uint16_t>(i));
}

void DemoMesh::Quad(int a, int b, int c, int d)
{
  Triangle(a, b, c);
  Triangle(a, c, d);
}

void DemoMesh::Plane(const std::array<DVector3, 4>& corners, const DVector2& uv0, const DVector2& uv1,
                     const DVector3& tint)
{
  const DVector3 normal = DNormalized(glm::cross(corners[1] - corners[0], corners[3] - corners[0]));
  const DVector2 uv[] = {uv0, {uv1.x, uv0.y}, uv1, {uv0.x, uv1.y}};
  int first = 0;
  for (size_t i = 0; i < 4; ++i) {
    const int n = Add({corners[i], normal, uv[i], DemoLight(normal) * tint});
    first = i == 0 ? n : first;
  }
  Quad(first, first + 1, first + 2, first + 3);
}

void DemoMesh::Box(const DVector3& centreOfBase, const DVector3& along, double length, double depth, double height,
                   double scale, const DVector3& tint)
{
  const DVector3 x = DNormalized({along.x, 0, along.z}, {1, 0, 0}) * static_cast<float>(length / 2);
  const DVector3 z = DNormalized(glm::cross(x, DVector3(0, 1, 0))) * static_cast<float>(depth / 2);
  const DVector3 up(0, static_cast<float>(height), 0);
  const DVector3 base[] = {centreOfBase - x + z, centreOfBase + x + z, centreOfBase + x - z, centreOfBase - x - z};
  for (size_t i = 0; i < 4; ++i) {
    const DVector3 a = base[i], b = base[(i + 1) % 4];
    const auto wide = static_cast<float>((i % 2 == 0 ? length : depth) / scale);
    Plane({a, b, b + up, a + up}, {0, 0}, {wide, static_cast<float>(height / scale)}, tint);
  }
  Plane({base[0] + up, base[1] + up, base[2] + up, base[3] + up}, {0, 0},
        {static_cast<float>(length / scale), static_cast<float>(depth / scale)}, tint);
}

DemoMesh& DemoModel::Mesh(std::string_view material)
{
  for (DemoMesh& m : meshes)
    if (m.material == material && m.vertices.size() < 60000)
      return m;
  return meshes.emplace_back(DemoMesh{std::string(material), {}, {}});
}

int DemoModel::Triangles() const
{
  size_t n = 0;
  for (const DemoMesh& m : meshes)
    n += m.indices.size() / 3;
  return static_cast<int>(n);
}

DemoNode& DemoScenery::AddNode(std::string name, int flags)
{
  DemoNode node;
  node.name = std::move(name);
  node.flags = flags;
  return nodes.emplace_back(std::move(node));
}

int DemoScenery::Triangles() const
{
  int n = 0;
  for (const DemoNode& node : nodes)
    n += node.levels.front().Triangles();
  return n;
}

DVector3 DemoSun()
{
  return glm::normalize(DVector3(-0.55f, 0.62f, 0.42f));
}

DVector3 DemoLight(const DVector3& normal)
{
  // A warm sun, a blue sky above, and some green that the ground throws back.
  const float sun = std::max(0.0f, glm::dot(normal, DemoSun()));
  const float sky = 0.5f + 0.5f * normal.y;
  const DVector3 light = sun * DVector3(0.66f, 0.61f, 0.50f) + sky * DVector3(0.54f, 0.57f, 0.61f) +
                         (1 - sky) * DVector3(0.46f, 0.46f, 0.40f);
  return glm::min(light, DVector3(1.0f));
}

void DemoShade(DemoMesh& mesh)
{
  std::vector<DVector3> sum(mesh.vertices.size(), DVector3(0.0f));
  for (size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
    const uint16_t* t = &mesh.indices[i];
    const DVector3 a = mesh.vertices[t[0]].position;
    const DVector3 n = glm::cross(mesh.vertices[t[1]].position - a, mesh.vertices[t[2]].position - a);
    for (int k = 0; k < 3; ++k)
      sum[t[k]] += n;
  }
  for (size_t i = 0; i < sum.size(); ++i) {
    mesh.vertices[i].normal = DNormalized(sum[i]);
    mesh.vertices[i].color *= DemoLight(mesh.vertices[i].normal);
  }
}

std::string DemoNumbered(std::string_view name, int number, int digits)
{
  std::string n = std::to_string(number);
  n.insert(0, n.size() < static_cast<size_t>(digits) ? static_cast<size_t>(digits) - n.size() : 0, '0');
  return std::string(name) + n;
}
