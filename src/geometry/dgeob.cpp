#include "geometry/dgeob.h"

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dintersect.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace {

constexpr float FAR_OUT = 99999.0f;

// Least and greatest of each axis. Four vertices a step, each float with a slot of its own, so that the compiler can
// take several at once. A NaN never wins a comparison.
DBox BoxOf(const DArray<DVector3>& vertex)
{
  constexpr size_t STEP = 12;
  float low[STEP];
  float high[STEP];
  std::fill_n(low, STEP, FAR_OUT);
  std::fill_n(high, STEP, -FAR_OUT);
  const float* f = &vertex[0].x;
  const size_t count = vertex.size() * 3;
  size_t i = 0;
  for (; i + STEP <= count; i += STEP)
    for (size_t k = 0; k < STEP; ++k) {
      low[k] = f[i + k] < low[k] ? f[i + k] : low[k];
      high[k] = f[i + k] > high[k] ? f[i + k] : high[k];
    }
  for (size_t k = 0; i + k < count; ++k) {
    low[k] = std::min(low[k], f[i + k]);
    high[k] = std::max(high[k], f[i + k]);
  }
  DBox box{DVector3(FAR_OUT), DVector3(-FAR_OUT)};
  for (size_t k = 0; k < STEP; k += 3)
    box.Merge({{low[k], low[k + 1], low[k + 2]}, {high[k], high[k + 1], high[k + 2]}});
  return box;
}

uint16_t LargestOf(const DArray<uint16_t>& index)
{
  constexpr size_t STEP = 32;
  uint16_t largest[STEP] = {};
  size_t i = 0;
  for (; i + STEP <= index.size(); i += STEP)
    for (size_t k = 0; k < STEP; ++k)
      largest[k] = std::max(largest[k], index[i + k]);
  for (; i < index.size(); ++i)
    largest[0] = std::max(largest[0], index[i]);
  return *std::max_element(largest, largest + STEP);
}

} // namespace

DGeob::DGeob(DGeode* owner) : geode(owner)
{
  ShapeChanged();
}

void DGeob::ShapeChanged()
{
  static std::atomic<uint64_t> last{0};
  shapeVersion = ++last;
}

DGeob::~DGeob()
{
  DisableVBO();
}

const char* DGeob::GeodeName() const
{
  return geode ? geode->name.c_str() : "<no_geode>";
}

bool DGeob::AddBurst(const DBurst& b)
{
  if (Bursts() >= MAX_BURSTS) {
    QWARN("DGeob:AddBurst(); max (%d) reached (geode %s)", MAX_BURSTS, GeodeName());
    return false;
  }
  burst.push_back(b);
  return true;
}

std::span<const uint16_t> DGeob::BurstIndices(int i) const
{
  if (i < 0 || i >= Bursts())
    return {};
  const DBurst& b = burst[static_cast<size_t>(i)];
  const auto first = static_cast<size_t>(std::clamp(b.FirstIndex(), 0, IndexCount()));
  const auto count = static_cast<size_t>(std::max(b.IndexCount(), 0));
  return std::span(index).subspan(first, std::min(count, index.size() - first));
}

std::span<const uint16_t> DGeob::PaintedIndices(int i) const
{
  const int vperP = i < 0 || i >= Bursts() ? 0 : burst[static_cast<size_t>(i)].vperP;
  if (vperP != 4)
    return vperP == 3 ? BurstIndices(i) : std::span<const uint16_t>();
  const DBurst& b = burst[static_cast<size_t>(i)];
  const int first = std::clamp(b.start / vperP, 0, IndexCount());
  const int count = std::clamp(b.count / vperP, 0, IndexCount() - first);
  return std::span(index).subspan(static_cast<size_t>(first), static_cast<size_t>(count));
}

int DGeob::GetBurstOfIndex(int i) const
{
  for (int n = 0; n < Bursts(); ++n)
    if (const DBurst& b = burst[static_cast<size_t>(n)]; i < int64_t{b.start} + b.count)
      return n;
  return -1;
}

int DGeob::GetTexCoordChannels() const
{
  int n = 0;
  while (n < MAX_CHANNELS && !texCoord[static_cast<size_t>(n)].empty())
    ++n;
  return n;
}

DMaterial* DGeob::GetMaterial(int mtlID) const
{
  if (!geode || geode->material.empty())
    return nullptr;
  const int last = geode->GetNoofMaterials() - 1;
  DMaterial* m = geode->GetMaterial(std::clamp(materialRef, 0, last));
  if (!m || m->sub.empty())
    return m;
  return m->sub[static_cast<size_t>(std::clamp(mtlID, 0, m->SubCount() - 1))].get();
}

void DGeob::Destroy()
{
  ShapeChanged();
  DisableVBO();
  index = {};
  vertex = {};
  normal = {};
  texCoord = {};
  vertexColor = {};
  tangent = {};
  baseVertex = {};
  faceVertex = {};
  burst = {};
  indexArrayOverride = nullptr;
  flags &= ~static_cast<uint32_t>(BOX_VALID);
}

void DGeob::FinalizeGeob()
{
  ShapeChanged();
  const int vertices = VertexCount();
  if (!index.empty() && LargestOf(index) >= vertices)
    for (size_t i = 0; i < index.size(); ++i)
      if (index[i] >= vertices) {
        QWARN("Geode %s has bad indices in geob (index[%d]=%d>%d vertices.", GeodeName(), static_cast<int>(i), index[i],
              vertices);
        index[i] = 0;
      }
  if (vertices == 0)
    index.clear(); // there is no vertex 0 either
  // A file may bring an array before it says how many vertices there are.
  for (auto* array : {&normal, &vertexColor})
    if (!array->empty() && array->size() < vertex.size())
      array->resize(vertex.size(), DVector3(0.0f));
  for (auto& channel : texCoord)
    if (!channel.empty())
      channel.resize(vertex.size(), DVector2(0.0f));
  flags &= ~static_cast<uint32_t>(BOX_VALID);
  GetBoundingBox();
  if (texCoord[0].empty()) {
    QWARN("Geode %s has geobs without texcoords; generating fake values", GeodeName());
    texCoord[0].assign(vertex.size(), DVector2(0.0f));
  }
}

const DBox& DGeob::GetBoundingBox()
{
  if (flags & BOX_VALID)
    return bbox;
  bbox = vertex.empty() ? DBox() : BoxOf(vertex);
  bboxCenter = bbox.Center();
  radius = bbox.Radius();
  flags |= BOX_VALID;
  return bbox;
}

DVector3 DGeob::GetBoundingSphere()
{
  GetBoundingBox();
  return bboxCenter;
}

void DGeob::RethinkNormals()
{
  if (vertex.empty())
    return;
  normal.assign(std::max(vertex.size(), normal.size()), DVector3(0.0f));
  const size_t wanted = burst.empty() ? 0 : static_cast<size_t>(std::max(burst[0].count / 9, 0));
  const size_t triangles = std::min(wanted, index.size() / 3);
  for (size_t i = 0; i < triangles; ++i) {
    const uint16_t* corner = &index[i * 3];
    if (corner[0] >= vertex.size() || corner[1] >= vertex.size() || corner[2] >= vertex.size())
      continue;
    const DVector3& a = vertex[corner[0]];
    const DVector3 across = glm::cross(vertex[corner[1]] - a, vertex[corner[2]] - a);
    const float length = glm::length(across);
    if (!(length > 0))
      continue; // no area, no direction
    for (int k = 0; k < 3; ++k)
      normal[corner[k]] += across / length;
  }
  for (DVector3& n : normal)
    n = DNormalized(n);
  RefreshVBO();
}

void DGeob::RotateNormals(const glm::mat3& m)
{
  for (DVector3& n : normal)
    n = m * n;
  RefreshVBO();
}

bool DGeob::Validate() const
{
  const auto check = [&](size_t count, const char* what) {
    for (const uint16_t i : index)
      if (i >= count)
        QWARN("DGeob (geode %s); index %d is out of %s range 0..%d.", GeodeName(), i, what,
              static_cast<int>(count) - 1);
  };
  check(vertex.size(), "vertex");
  if (!normal.empty())
    check(normal.size(), "normals");
  for (const auto& channel : texCoord)
    if (!channel.empty())
      check(channel.size(), "texCoord");
  if (!vertexColor.empty())
    check(vertexColor.size(), "vcolor");
  return true;
}

int DGeob::CheckDegenerate() const
{
  const auto near = [](const DVector3& a, const DVector3& b) {
    const DVector3 d = glm::abs(a - b);
    return d.x < 0.0001f && d.y < 0.0001f && d.z < 0.0001f;
  };
  int found = 0;
  for (size_t i = 0; i + 2 < index.size(); i += 3) {
    const uint16_t* corner = &index[i];
    if (corner[0] == corner[1] || corner[0] == corner[2] || corner[1] == corner[2])
      QWARN("Degenerate vertex by indices: %d/%d/%d", corner[0], corner[1], corner[2]);
    if (corner[0] >= vertex.size() || corner[1] >= vertex.size() || corner[2] >= vertex.size())
      continue;
    const DVector3& a = vertex[corner[0]];
    const DVector3& b = vertex[corner[1]];
    const DVector3& c = vertex[corner[2]];
    if (!near(a, b) && !near(a, c) && !near(b, c))
      continue;
    QWARN("Degenerate vertex! index=%d, vertex=%p\n", static_cast<int>(i), static_cast<const void*>(&a));
    ++found;
  }
  if (found > 0)
    QWARN("CheckDegenerate() found %d degenerate tris\n", found);
  return found;
}

void DGeob::ScaleVertices(float x, float y, float z)
{
  if (x == 0 && y == 0 && z == 0)
    QWARN("DGeob:ScaleVertices() scaling by 0; model will be invisible");
  const DVector3 factor(x, y, z);
  for (DVector3& v : vertex)
    v *= factor;
  for (auto& face : faceVertex)
    for (DVector3& v : face)
      v *= factor;
  flags &= ~static_cast<uint32_t>(BOX_VALID);
  RefreshVBO();
}

void DGeob::Translate(float x, float y, float z)
{
  for (DVector3& v : vertex)
    v += DVector3(x, y, z);
  flags &= ~static_cast<uint32_t>(BOX_VALID);
  RefreshVBO();
}

void DGeob::FlipFaces(int n)
{
  if (n == -1) {
    QWARN("DGeob:FlipFaces(%d) NYI", n);
    return;
  }
  if (n < 0 || n >= Bursts())
    return;
  const DBurst& b = burst[static_cast<size_t>(n)];
  const int64_t first = b.start / 3;
  const int64_t end = std::min<int64_t>(first + b.count / 9, FaceCount()); // a file may name any number
  for (int64_t t = std::max<int64_t>(first, 0); t < end; ++t)
    std::swap(index[static_cast<size_t>(t * 3 + 1)], index[static_cast<size_t>(t * 3 + 2)]);
  RefreshVBO();
}

bool DGeob::Query(const DVector3& from, const DVector3& to, const DMatrix4& matrix, DVector3* hit) const
{
  if (Bursts() != 1) {
    QWARN("ray-mesh intersection only works for a single burst");
    return false;
  }
  if (burst[0].vperP != 3) {
    QWARN("ray-mesh intersection only works for triangles");
    return false;
  }
  const DMatrix4 inverse = glm::inverse(matrix);
  const DVector3 direction = DNormalized(to - from);
  const DVector3 start(inverse * DVector4(from, 1.0f));
  const DVector3 along(inverse * DVector4(direction, 0.0f)); // not normalised: t stays in world units
  for (size_t i = 0; i + 2 < index.size(); i += 3) {
    const uint16_t* corner = &index[i];
    if (corner[0] >= vertex.size() || corner[1] >= vertex.size() || corner[2] >= vertex.size())
      continue;
    float t = 0;
    if (!RayTriangle(start, along, vertex[corner[0]], vertex[corner[1]], vertex[corner[2]], t, 10000.0f))
      continue;
    if (hit)
      *hit = from + direction * t;
    return true;
  }
  return false;
}
