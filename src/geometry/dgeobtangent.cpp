#include "geometry/dgeob.h"

#include "foundation/qreport.h"

#include <cmath>
#include <unordered_map>

namespace {

struct Directions
{
  DVector3 s{0.0f}; // in which u grows
  DVector3 t{0.0f}; // in which v grows
};

Directions DirectionsOf(const DGeob& g, const uint16_t* corner)
{
  const DVector3 x1 = g.vertex[corner[1]] - g.vertex[corner[0]];
  const DVector3 x2 = g.vertex[corner[2]] - g.vertex[corner[0]];
  const DVector2 d1 = g.texCoord[0][corner[1]] - g.texCoord[0][corner[0]];
  const DVector2 d2 = g.texCoord[0][corner[2]] - g.texCoord[0][corner[0]];
  float det = d1.x * d2.y - d2.x * d1.y;
  if (std::abs(det) < 1e-6f)
    det = det < 0 ? -1e-6f : 1e-6f;
  const float r = 1 / det;
  return {(d2.y * x1 - d1.y * x2) * r, (d1.x * x2 - d2.x * x1) * r};
}

// Gives each vertex to the triangles of one handedness; the others get a copy of it.
class Splitter
{
public:
  explicit Splitter(size_t count) : sums(count), sign(count, 0), remap(count), source(count)
  {
    for (size_t i = 0; i < count; ++i)
      remap[i] = source[i] = i;
  }
  size_t Corner(size_t i, int8_t s)
  {
    if (sign[i] == 0) {
      sign[i] = s;
      return i;
    }
    if (sign[i] == s)
      return i;
    if (remap[i] == i) {
      if (sign.size() >= DGeob::MAX_VERTICES)
        return i; // no index could name the copy
      remap[i] = sign.size();
      remap.push_back(sign.size());
      source.push_back(i);
      sums.emplace_back();
      sign.push_back(s);
    }
    sign[remap[i]] = s;
    return remap[i];
  }
  std::vector<Directions> sums;
  std::vector<int8_t> sign;
  std::vector<size_t> remap;
  std::vector<size_t> source; // of which a vertex is the copy
};

template <typename T>
void AppendCopies(DArray<T>& array, const std::vector<size_t>& source, size_t before)
{
  if (array.empty())
    return;
  array.resize(before, T(0.0f));
  for (size_t i = before; i < source.size(); ++i)
    array.push_back(T(array[source[i]]));
}

} // namespace

void DGeob::CalculateTangentArray()
{
  if (!tangent.empty())
    return;
  if (normal.empty())
    RethinkNormals();
  if (normal.empty() || normal.size() < vertex.size() || texCoord[0].size() < vertex.size()) {
    QWARN("CalculateTangentArray needs normals for geob; now normal=0");
    return;
  }
  const size_t before = vertex.size();
  Splitter splitter(before);
  for (size_t i = 0; i + 2 < index.size(); i += 3) {
    uint16_t* corner = &index[i];
    if (corner[0] >= before || corner[1] >= before || corner[2] >= before)
      continue;
    const Directions d = DirectionsOf(*this, corner);
    const DVector3 across = glm::cross(d.s, d.t);
    for (int k = 0; k < 3; ++k) {
      const auto s = static_cast<int8_t>(glm::dot(across, normal[corner[k]]) < 0 ? -1 : 1);
      const size_t at = splitter.Corner(corner[k], s);
      corner[k] = static_cast<uint16_t>(at);
      splitter.sums[at].s += d.s;
      splitter.sums[at].t += d.t;
    }
  }
  if (splitter.source.size() > before) {
    AppendCopies(vertex, splitter.source, before);
    AppendCopies(normal, splitter.source, before);
    AppendCopies(texCoord[0], splitter.source, before);
    AppendCopies(texCoord[1], splitter.source, before);
    AppendCopies(vertexColor, splitter.source, before);
    AppendCopies(baseVertex, splitter.source, before);
  }
  tangent.resize(vertex.size());
  for (size_t i = 0; i < vertex.size(); ++i) {
    const DVector3& t = splitter.sums[i].s;
    const DVector3& n = normal[i];
    const DVector3 flat = DNormalized(t - n * glm::dot(n, t));
    const float hand = glm::dot(glm::cross(n, t), splitter.sums[i].t) < 0 ? -1.0f : 1.0f;
    tangent[i] = DVector4(flat, hand);
  }
  RefreshVBO();
}

std::vector<uint16_t> DGeob::AdjacencyIndices() const
{
  constexpr uint16_t NONE = 65535;
  const std::vector<uint16_t> indices =
      indexArrayOverride ? *indexArrayOverride : std::vector<uint16_t>(index.begin(), index.end());
  // Of each edge the third corners of the first triangle that has it, and of the first with another third corner:
  // no vertex can ask for more.
  struct Thirds
  {
    int first = -1;
    int other = -1;
  };
  std::unordered_map<uint32_t, Thirds> edges;
  const auto key = [](uint16_t a, uint16_t b) { return a < b ? uint32_t{a} << 16 | b : uint32_t{b} << 16 | a; };
  for (size_t i = 0; i + 2 < indices.size(); i += 3)
    for (size_t k = 0; k < 3; ++k) {
      Thirds& thirds = edges[key(indices[i + k], indices[i + (k + 1) % 3])];
      const int third = indices[i + (k + 2) % 3];
      if (thirds.first < 0)
        thirds.first = third;
      else if (thirds.other < 0 && third != thirds.first)
        thirds.other = third;
    }
  std::vector<uint16_t> result = indices;
  result.reserve(indices.size() * 3);
  for (size_t i = 0; i < indices.size(); ++i) {
    const size_t triangle = i / 3 * 3;
    uint16_t neighbour = NONE;
    if (triangle + 2 < indices.size()) {
      const size_t k = i - triangle;
      const Thirds& thirds = edges[key(indices[i], indices[triangle + (k + 1) % 3])];
      const int third = thirds.first == indices[triangle + (k + 2) % 3] ? thirds.other : thirds.first;
      neighbour = third < 0 ? NONE : static_cast<uint16_t>(third);
    }
    result.push_back(indices[i]);
    result.push_back(neighbour);
  }
  return result;
}
