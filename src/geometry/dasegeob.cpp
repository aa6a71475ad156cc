// One *GEOMOBJECT of an ASE file. z is up there: (x, y, z) becomes (x, z, -y). Each face gets three vertices of its
// own.

#include "foundation/qreport.h"
#include "geometry/dase.h"
#include "geometry/dgeob.h"
#include "geometry/dmaterial.h"

#include <glm/geometric.hpp>

#include <algorithm>

namespace {

constexpr int UNSET = -1;
constexpr int CHANNELS = DGeob::MAX_CHANNELS;
constexpr size_t FREE_SIZE = 1 << 20; // bytes that an array may have however short the file is
constexpr size_t TIMES = 8;           // and for each byte that is left of the file

DVector3 Swapped(const DVector3& v)
{
  return {v.x, v.z, -v.y};
}

enum Keyword
{
  OTHER,
  NODE_NAME,
  TM_ROW0,
  TM_ROW1,
  TM_ROW2,
  NUMVERTEX,
  VERTEX,
  NUMFACES,
  FACE,
  FACENORMAL,
  VERTEXNORMAL,
  MAPPINGCHANNEL,
  NUMTVERTEX,
  TVERT,
  NUMTVFACES,
  TFACE,
  FACEMAPLIST,
  FACEMAPVERT,
  NUMCVERTEX,
  VERTCOL,
  CFACE,
  MATERIAL_REF,
  ANIMATION,
};

struct Word
{
  std::string_view text;
  Keyword keyword;
};

// By length; those of one length are told apart by comparison.
constexpr Word WORDS[] = {
    {"*TM_ROW0", TM_ROW0},
    {"*TM_ROW1", TM_ROW1},
    {"*TM_ROW2", TM_ROW2},
    {"*MESH_FACE", FACE},
    {"*NODE_NAME", NODE_NAME},
    {"*MESH_TVERT", TVERT},
    {"*MESH_TFACE", TFACE},
    {"*MESH_CFACE", CFACE},
    {"*MESH_VERTEX", VERTEX},
    {"*MESH_VERTCOL", VERTCOL},
    {"*MATERIAL_REF", MATERIAL_REF},
    {"*MESH_NUMFACES", NUMFACES},
    {"*MESH_ANIMATION", ANIMATION},
    {"*MESH_NUMVERTEX", NUMVERTEX},
    {"*MESH_FACENORMAL", FACENORMAL},
    {"*MESH_NUMTVERTEX", NUMTVERTEX},
    {"*MESH_NUMTVFACES", NUMTVFACES},
    {"*MESH_NUMCVERTEX", NUMCVERTEX},
    {"*MESH_FACEMAPLIST", FACEMAPLIST},
    {"*MESH_FACEMAPVERT", FACEMAPVERT},
    {"*MESH_VERTEXNORMAL", VERTEXNORMAL},
    {"*MESH_MAPPINGCHANNEL", MAPPINGCHANNEL},
};
constexpr size_t SHORTEST_WORD = 8, LONGEST_WORD = 20;

// Where the words of each length begin in WORDS, and their end behind the last.
constexpr auto FIRST_OF_LENGTH = [] {
  std::array<uint8_t, LONGEST_WORD + 2> first{};
  for (size_t length = 0; length < first.size(); ++length)
    for (const Word& word : WORDS)
      first[length] = static_cast<uint8_t>(first[length] + (word.text.size() < length));
  return first;
}();

uint64_t Eight(const char* text)
{
  uint64_t eight;
  std::memcpy(&eight, text, sizeof eight);
  return eight;
}

// Of two texts of the same length, that of a keyword: by their first, their last and, of long ones, their middle eight.
bool IsSame(std::string_view a, std::string_view b)
{
  const size_t last = a.size() - SHORTEST_WORD;
  return Eight(&a[last]) == Eight(&b[last]) && Eight(&a[0]) == Eight(&b[0]) &&
         (last <= SHORTEST_WORD || Eight(&a[SHORTEST_WORD]) == Eight(&b[SHORTEST_WORD]));
}

Keyword KeywordOf(std::string_view token)
{
  const size_t length = token.size();
  if (length < SHORTEST_WORD || length > LONGEST_WORD)
    return OTHER;
  for (size_t i = FIRST_OF_LENGTH[length]; i < FIRST_OF_LENGTH[length + 1]; ++i)
    if (IsSame(WORDS[i].text, token))
      return WORDS[i].keyword;
  return OTHER;
}

template <typename T>
bool Has(const T& array, int64_t i)
{
  return i >= 0 && i < static_cast<int64_t>(array.size());
}

// The work state of an object while it is read.
class AseObject
{
public:
  AseObject(DGeob& target, DAseFile& aseFile) : geob(target), file(aseFile), in(aseFile.in) {}
  bool Read();

private:
  bool ReadBlock();
  bool ReadKeyword(Keyword keyword); // false ends the import
  bool ReadTexture(Keyword keyword); // false: not one of these keywords
  void ReadColor(Keyword keyword);
  bool Affords(int64_t entries) const
  {
    return static_cast<size_t>(entries) * sizeof(DVector3) <= FREE_SIZE + TIMES * in.Left();
  }
  // A length of a list: none, reported, when that is out of all proportion to what is left of the file.
  int Count(const char* what);
  void NodeName();
  void Vertex();
  void VertexNormal();
  bool NumFaces();
  void Face();
  int Corner(int number, const char* name);
  void SkipToMaterialID();
  void AddToBurst(int face, int id);
  void TextureVertex();
  void TextureFace();
  void FaceMapVertex();
  void ColorFace();
  bool ChannelIsKept() const { return channel >= 0 && channel < CHANNELS; }
  DArray<DVector2>& Coordinates() { return geob.texCoord[static_cast<size_t>(channel)]; }
  void FitLists();
  void Tile();
  DVector3 Three()
  {
    const float x = in.Float();
    const float y = in.Float();
    const float z = in.Float();
    return {x, y, z};
  }

  DGeob& geob;
  DAseFile& file;
  DTextReader& in;
  std::string nodeName;
  glm::mat3 tm{1.0f}; // its columns are the file's rows
  DArray<DVector3> vertex;
  std::array<DArray<DVector3>, CHANNELS> textureVertex;
  DArray<DVector3> color;
  int channel = 0;
  int textureVertexCount = 0; // in FACEMAPVERT: the slots filled
  int vertexCount = 0;
  int normalCount = 0;
  int currentID = UNSET;
  bool overflowReported = false;
};

bool AseObject::Read()
{
  const bool isWhole = ReadBlock();
  FitLists();
  if (isWhole)
    Tile();
  return isWhole;
}

bool AseObject::ReadBlock()
{
  int depth = 0;
  for (std::string_view token; in.NextKeyword(token);) {
    if (token == "{") {
      ++depth;
    } else if (token == "}") {
      if (--depth == 0)
        return true;
    } else if (!ReadKeyword(KeywordOf(token))) {
      return false;
    }
  }
  QWARN("DGeodImportASE: unexpected EOF");
  return false;
}

bool AseObject::ReadKeyword(Keyword keyword)
{
  switch (keyword) {
  case NODE_NAME:
    NodeName();
    break;
  case TM_ROW0:
  case TM_ROW1:
  case TM_ROW2:
    tm[keyword - TM_ROW0] = Three();
    break;
  case NUMVERTEX:
    vertexCount = Count("?tempVertex");
    vertex.assign(static_cast<size_t>(vertexCount), DVector3(0.0f));
    break;
  case VERTEX:
    Vertex();
    break;
  case NUMFACES:
    return NumFaces();
  case FACE:
    Face();
    break;
  case VERTEXNORMAL:
    VertexNormal();
    break;
  case MATERIAL_REF:
    geob.materialRef = in.Int();
    break;
  case ANIMATION:
    in.SkipBlock();
    break;
  default:
    if (!ReadTexture(keyword))
      ReadColor(keyword);
  }
  return true;
}

int AseObject::Count(const char* what)
{
  const int count = std::max(in.Int(), 0);
  if (Affords(count))
    return count;
  QERR("%s", what);
  return 0;
}

void AseObject::NodeName()
{
  nodeName = in.Token();
  QDBG("Node '%s'\n", nodeName.c_str());
}

void AseObject::Vertex()
{
  const int i = in.Int();
  const DVector3 v = Swapped(Three());
  if (Has(vertex, i))
    vertex[static_cast<size_t>(i)] = v;
}

void AseObject::VertexNormal()
{
  constexpr float SHORTEST = 1e-5f;
  in.Skip(1);
  DVector3 normal = tm * Three();
  const float length = glm::length(normal);
  normal = length < SHORTEST ? DVector3(0.0f, 1.0f, 0.0f) : normal / length;
  if (!Has(geob.normal, normalCount)) {
    QERR("Too many normals (defining normal %d with only %d vertices) [%s]", normalCount, vertexCount,
         nodeName.c_str());
    return;
  }
  geob.normal[static_cast<size_t>(normalCount++)] = Swapped(normal);
}

bool AseObject::NumFaces()
{
  const int faces = in.Int();
  if (faces <= 0)
    return false;
  size_t count = 3 * static_cast<size_t>(faces);
  if (!Affords(3 * int64_t{faces})) {
    for (const char* array : {"?vertex", "?normal", "DGeob:ImportASE out of memory (index)"})
      QERR("%s", array);
    count = 0;
  }
  vertexCount = static_cast<int>(count);
  geob.vertex.assign(count, DVector3(0.0f));
  geob.normal.assign(count, DVector3(0.0f));
  geob.index.assign(count, 0);
  file.faceIndex.assign(count, 0);
  return true;
}

int AseObject::Corner(int number, const char* name)
{
  if (Has(vertex, number))
    return number;
  QERR("MESH_FACE %s (%d) out of range (0..%d)", name, number, static_cast<int>(vertex.size()) - 1);
  return 0;
}

void AseObject::Face()
{
  constexpr int LIMIT = DGeob::MAX_VERTICES;
  constexpr int BETWEEN = 8; // the flags of three edges and the smoothing group, each with its label
  const int64_t face = in.Int();
  std::array<int, 3> corners{};
  for (int& corner : corners) {
    in.Skip(1);
    corner = in.Int();
  }
  corners = {Corner(corners[0], "v1"), Corner(corners[1], "v2"), Corner(corners[2], "v3")};
  const int64_t last = 3 * face + 2;
  const bool kept = face >= 0 && Has(geob.index, last);
  for (size_t c = 0; kept && c < corners.size(); ++c) {
    const size_t at = static_cast<size_t>(3 * face) + c;
    file.faceIndex[at] = corners[c];
    geob.vertex[at] = vertex.empty() ? DVector3(0.0f) : vertex[static_cast<size_t>(corners[c])];
    geob.index[at] = static_cast<uint16_t>(at);
  }
  if (kept && last >= LIMIT && !overflowReported) {
    overflowReported = true;
    QERR("DGeodeASEImport: indices overflow (n=%d giving index %d; limit is %d)", static_cast<int>(face),
         static_cast<int>(last), LIMIT);
    if (QReports().messageBox)
      QReports().messageBox("Index limit exceeded",
                            "Index limit per material exceeded.\nThis will clip a number of triangles. " + nodeName);
  }
  in.Skip(BETWEEN);
  SkipToMaterialID();
  if (const int id = in.Int(); kept)
    AddToBurst(static_cast<int>(face), id);
}

void AseObject::SkipToMaterialID()
{
  std::string_view token;
  while (in.NextKeyword(token) && token != "*MESH_MTLID") {
  }
}

void AseObject::AddToBurst(int face, int id)
{
  if (id != currentID) {
    if (geob.Bursts() >= DGeob::MAX_BURSTS) {
      QWARN("max face burst (%d) maxed out", DGeob::MAX_BURSTS);
    } else {
      geob.AddBurst({.start = 9 * face, .mtlID = id});
      currentID = id;
    }
  }
  if (!geob.burst.empty())
    geob.burst.back().count += 9;
}

bool AseObject::ReadTexture(Keyword keyword)
{
  if (keyword == MAPPINGCHANNEL) {
    channel = static_cast<int>(std::clamp<int64_t>(int64_t{in.Int()} - 1, INT32_MIN, INT32_MAX));
    if (!ChannelIsKept())
      QERR("ASE file '%s' contains node '%s' with uvChannel %d; only %d supported", file.name.c_str(), nodeName.c_str(),
           channel, CHANNELS);
    return true;
  }
  const bool texture = keyword >= NUMTVERTEX && keyword <= FACEMAPVERT;
  if (!texture || !ChannelIsKept())
    return texture;
  switch (keyword) {
  case NUMTVERTEX:
    textureVertexCount = Count("?tempTVertex[uvChannel]");
    if (textureVertexCount > 0) {
      textureVertex[static_cast<size_t>(channel)].assign(static_cast<size_t>(textureVertexCount), DVector3(0.0f));
      Coordinates().assign(static_cast<size_t>(vertexCount), DVector2(0.0f));
    }
    break;
  case TVERT:
    TextureVertex();
    break;
  case NUMTVFACES:
    QDBG("%d texture faces\n", in.Int());
    break;
  case TFACE:
    TextureFace();
    break;
  case FACEMAPLIST:
    if (Coordinates().empty()) {
      Coordinates().assign(static_cast<size_t>(vertexCount), DVector2(0.0f));
      textureVertexCount = 0;
    } else {
      QWARN("%s: has both regular texcoords (MESH_NUMTVERTEX) and MESH_FACEMAPLIST types", nodeName.c_str());
    }
    break;
  default:
    FaceMapVertex();
  }
  return true;
}

void AseObject::TextureVertex()
{
  int i = in.Int();
  const DVector3 v = Three();
  if (i < 0 || i >= textureVertexCount) {
    QERR("ASE: MESH_TVERT %d out of range 0..%d", i, textureVertexCount - 1);
    i = 0;
  }
  if (auto& kept = textureVertex[static_cast<size_t>(channel)]; Has(kept, i))
    kept[static_cast<size_t>(i)] = v;
}

void AseObject::TextureFace()
{
  const int64_t first = 3 * int64_t{in.Int()};
  const auto& from = textureVertex[static_cast<size_t>(channel)];
  for (int64_t c = 0; c < 3; ++c)
    if (const int i = in.Int(); Has(from, i) && Has(Coordinates(), first + c))
      Coordinates()[static_cast<size_t>(first + c)] = DVector2(from[static_cast<size_t>(i)]);
}

// u and v change places here.
void AseObject::FaceMapVertex()
{
  const DVector3 v = Three();
  if (textureVertexCount >= vertexCount || !Has(Coordinates(), textureVertexCount)) {
    QWARN("ASE: too many MESH_FACEMAPVERT entries; current %d, max %d\n", textureVertexCount, vertexCount);
    return;
  }
  Coordinates()[static_cast<size_t>(textureVertexCount++)] = DVector2(v.y, v.x);
}

void AseObject::ReadColor(Keyword keyword)
{
  if (keyword == NUMCVERTEX) {
    if (const int count = Count("?tempVColor"); count > 0) {
      color.assign(static_cast<size_t>(count), DVector3(0.0f));
      geob.vertexColor.assign(static_cast<size_t>(vertexCount), DVector3(0.0f));
    }
  } else if (keyword == VERTCOL) {
    const int i = in.Int();
    const DVector3 c = Three();
    if (Has(color, i))
      color[static_cast<size_t>(i)] = c;
  } else if (keyword == CFACE) {
    const int64_t first = 3 * int64_t{in.Int()};
    for (int64_t c = 0; c < 3; ++c)
      if (const int i = in.Int(); Has(color, i) && Has(geob.vertexColor, first + c))
        geob.vertexColor[static_cast<size_t>(first + c)] = color[static_cast<size_t>(i)];
  }
}

// A list that stood in front of the faces was made for another number of vertices.
void AseObject::FitLists()
{
  for (auto& coordinates : geob.texCoord)
    if (!coordinates.empty())
      coordinates.resize(geob.vertex.size(), DVector2(0.0f));
  if (!geob.vertexColor.empty())
    geob.vertexColor.resize(geob.vertex.size(), DVector3(0.0f));
}

// The tiling of the material goes into the coordinates of the last channel.
void AseObject::Tile()
{
  const DMaterial* m = geob.GetMaterial(0);
  if (!m)
    return;
  if (!ChannelIsKept() || Coordinates().empty()) {
    QWARN("DGeobImportASE: file %s has no texture coordinates", file.name.c_str());
    return;
  }
  for (DVector2& t : Coordinates()) {
    t.x = (t.x - 0.5f) * m->uTiling + 0.5f - m->uTiling * m->uOffset;
    t.y = (t.y - 0.5f) * m->vTiling + 0.5f - m->vTiling * m->vOffset;
  }
}

} // namespace

bool DGeob::ImportASE(DAseFile& file)
{
  return AseObject(*this, file).Read();
}
