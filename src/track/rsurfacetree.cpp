#include "track/rsurfacetree.h"

#include "foundation/qreport.h"
#include "geometry/daabbtreehd.h"
#include "geometry/dgeode.h"
#include "geometry/dhermite.h"
#include "geometry/dintersect.h"
#include "geometry/dshader.h"
#include "track/rsplinerep.h"
#include "track/rsurfacetype.h"

#include <algorithm>

namespace {

constexpr float SHORTEST_EDGE = 0.00001f; // squared
constexpr float RAY_LENGTH = 1.0f;        // of the query, in directions
constexpr float HIT_LENGTH = 2.0f;        // up to which a triangle counts
constexpr float SMALLEST = 0.00001f;      // squared, of what is divided by
constexpr float LARGEST_STEP = 0.1f;      // of the search along and across the road

float Square(const DVector3& v)
{
  return glm::dot(v, v);
}

} // namespace

void RForEachTriangle(const DGeode& geode, const std::function<void(const RSceneryTriangle&)>& take)
{
  int number = -1;
  for (const auto& geob : geode.geob) {
    ++number;
    const DMaterial* const material = geob->GetMaterial(geob->burst.empty() ? 0 : geob->burst.front().mtlID);
    const DShader* const shader = material ? material->shader : nullptr;
    if (!shader) {
      QLOG("RTrackVRML:AddGeob(); geob %s does not have a shader; won't add to AABB tree",
           (geode.name + "/geob" + std::to_string(number)).c_str());
      continue;
    }
    if (shader->IsSky())
      continue;
    const bool hasColours = geob->vertexColor.size() >= geob->vertex.size();
    for (size_t i = 0; i + 2 < geob->index.size(); i += 3) {
      const std::array<size_t, 3> at{geob->index[i], geob->index[i + 1], geob->index[i + 2]};
      if (*std::max_element(at.begin(), at.end()) >= geob->vertex.size())
        continue;
      const auto& v = geob->vertex;
      RSceneryTriangle triangle{{v[at[0]], v[at[1]], v[at[2]]}, nullptr, material, shader};
      const auto& c = triangle.corner;
      if (Square(c[1] - c[0]) < SHORTEST_EDGE || Square(c[2] - c[1]) < SHORTEST_EDGE ||
          Square(c[0] - c[2]) < SHORTEST_EDGE)
        continue;
      std::array<DVector3, 3> colour;
      if (hasColours) {
        colour = {geob->vertexColor[at[0]], geob->vertexColor[at[1]], geob->vertexColor[at[2]]};
        triangle.colour = &colour;
      }
      take(triangle);
    }
  }
}

void RPolyTree::AddTriangle(const RSceneryTriangle& triangle)
{
  RPolyInfo of{triangle.material, triangle.material->surface};
  if (triangle.colour) {
    of.vertexColour = static_cast<int>(colours.size());
    colours.push_back(*triangle.colour);
  }
  tree.AddPoly({triangle.corner, static_cast<int>(info.size())});
  info.push_back(of);
}

void RPolyTree::AddSplines(const RSplineRep& splines)
{
  int number = 0;
  for (const RSplineTri& tri : splines.tris) {
    RPolyInfo of;
    of.splineTri = number++;
    tree.AddPoly({tri.p, static_cast<int>(info.size())});
    info.push_back(of);
  }
}

void RPolyTree::ForgetModel(const DGeode& geode)
{
  std::vector<const DMaterial*> gone;
  for (const auto& material : geode.material) {
    gone.push_back(material.get());
    for (const auto& sub : material->sub)
      gone.push_back(sub.get());
  }
  std::sort(gone.begin(), gone.end());
  for (RPolyInfo& of : info)
    if (of.material && std::binary_search(gone.begin(), gone.end(), of.material))
      of.material = nullptr;
}

struct RSurfaceQuery::State
{
  const DVector3& position;
  const DVector3& direction;
  RSurfaceInfo& result;
  bool isMeshHit = false;
  bool isSplineHit = false;
};

// False ends the search.
bool RSurfaceQuery::HitMesh(State& state, const DAABBPolyInfo& poly, const RPolyInfo& of, float t) const
{
  RSurfaceInfo& result = state.result;
  state.isMeshHit = true;
  result.flags |= RSurfaceInfo::HIT | RSurfaceInfo::ON_MESH;
  result.material = of.material;
  result.surface = of.surface ? of.surface : otherwise;
  result.polygon = static_cast<int>(&poly - polys.Tree().Polys().data());
  if (!(splines.flags & RSplineRep::USE_MESH_HITS) && state.isSplineHit)
    return false;
  result.position = state.position + state.direction * t;
  result.normal = DNormalized(glm::cross(poly.corner[1] - poly.corner[0], poly.corner[2] - poly.corner[0]));
  return !state.isSplineHit;
}

// One step towards the place on the smooth road: from a position across and along to the point there. The first step
// corrects both by how far the point is off the ray's middle.
void RSurfaceQuery::Refine(State& state, int line, float& s, float& along, bool isFirst, bool& goOn) const
{
  RSurfaceInfo& result = state.result;
  const RSplineLine& from = splines.lines[static_cast<size_t>(line)];
  const float distance = from.distance + along * from.length;
  DVector3 left(0.0f);
  DVector3 right(0.0f);
  for (int axis = 0; axis < 3; ++axis) {
    left[axis] = splines.Curve(RSplineRep::LEFT, axis)->GetValueIn(line, distance, &result.tangent[axis]);
    right[axis] = splines.Curve(RSplineRep::RIGHT, axis)->GetValueIn(line, distance);
  }
  if (splines.flags & RSplineRep::USE_MESH_HITS)
    return;
  const DVector3 across = right - left;
  result.position = left + across * s;
  result.normal = DNormalized(glm::cross(DNormalized(across), DNormalized(result.tangent)));
  goOn = isFirst && Square(across) >= SMALLEST && Square(result.tangent) >= SMALLEST;
  if (!goOn)
    return;
  const DVector3 delta = result.position - (state.position + state.direction * 0.5f);
  s -= std::clamp(glm::dot(delta, across) / Square(across), -LARGEST_STEP, LARGEST_STEP);
  along -= std::clamp(glm::dot(delta, result.tangent) / Square(result.tangent), -LARGEST_STEP, LARGEST_STEP);
}

bool RSurfaceQuery::HitSpline(State& state, int tri, float t, float a, float b) const
{
  RSurfaceInfo& result = state.result;
  const int line = tri / splines.trisPerLine;
  // The lines may have changed since the tree was built.
  if (static_cast<size_t>(tri) >= splines.tris.size() || line >= splines.LineCount() ||
      !splines.Curve(RSplineRep::LEFT, 0))
    return true;
  state.isSplineHit = true;
  result.line = line;
  result.flags |= RSurfaceInfo::HIT | RSurfaceInfo::ON_SPLINE;
  if (tri % 2 == 1) {
    a = 1 - a;
    b = 1 - b;
  }
  float s = b / static_cast<float>(splines.lateralDivisions) + splines.tris[static_cast<size_t>(tri)].t;
  float along = a;
  bool goOn = false;
  Refine(state, line, s, along, true, goOn);
  if (goOn)
    Refine(state, line, s, along, false, goOn);
  const RSplineLine& from = splines.lines[static_cast<size_t>(line)];
  const RSplineLine& to = splines.lines[static_cast<size_t>((line + 1) % splines.LineCount())];
  result.u = t;
  result.s = s;
  result.along = along;
  result.grip = (1 - along) * from.longGrip + along * to.longGrip;
  if (from.elevation > 0) {
    const float side = (s - 0.5f) * 2;
    result.position.y -= side * side * from.elevation;
  }
  return !state.isMeshHit;
}

bool RSurfaceQuery::Test(State& state, const DAABBPolyInfo& poly) const
{
  float t = 0;
  float u = 0;
  float v = 0;
  if (!RayTriangle(state.position, state.direction, poly.corner[0], poly.corner[1], poly.corner[2], t, u, v,
                   HIT_LENGTH))
    return true;
  const RPolyInfo& of = polys.Info(poly);
  // The first edge of a triangle of the road runs across it, the second one along.
  return of.splineTri < 0 ? HitMesh(state, poly, of, t) : HitSpline(state, of.splineTri, t, v, u);
}

void RSurfaceQuery::AskLidar(State& state) const
{
  if (!lidar)
    return;
  DAabbTreeHdQuery query;
  query.from = state.position;
  query.direction = state.direction;
  query.length = RAY_LENGTH;
  if (!lidar->Query(query))
    return;
  RSurfaceInfo& result = state.result;
  result.flags |= RSurfaceInfo::ON_LIDAR;
  result.position = query.hitPosition;
  result.normal = query.hitNormal;
  // Across the ground, as near to where the tangent pointed as can be.
  result.tangent = DNormalized(result.tangent - query.hitNormal * glm::dot(result.tangent, query.hitNormal), {0, 0, 1});
  result.grip = 1;
}

void RSurfaceQuery::Run(const DVector3& position, const DVector3& direction, RSurfaceInfo& result) const
{
  State state{position, direction, result};
  result.position = position + direction;
  result.surface = nullptr;
  result.material = nullptr;
  result.grip = 1;
  const auto& records = polys.Tree().Polys();
  bool goOn = true;
  if (result.polygon >= 0 && static_cast<size_t>(result.polygon) < records.size())
    goOn = Test(state, records[static_cast<size_t>(result.polygon)]);
  if (goOn)
    polys.Tree().Query(DAABB::FromSegment(position, direction, RAY_LENGTH),
                       [&](const DAABBPolyInfo& poly) { return Test(state, poly); });
  AskLidar(state);
}

bool RSurfaceQuery::FindWater(const DVector3& position, const DVector3& direction, DVector3& point) const
{
  // The search goes on until it is told not to: false is a hit.
  return !polys.Tree().Query(DAABB::FromSegment(position, direction, RAY_LENGTH), [&](const DAABBPolyInfo& poly) {
    const RSurfaceType* const surface = polys.Info(poly).surface;
    float t = 0;
    if (!surface || surface->type != RSurfaceType::WATER ||
        !RayTriangle(position, direction, poly.corner[0], poly.corner[1], poly.corner[2], t, HIT_LENGTH))
      return true;
    point = position + direction * t;
    return false;
  });
}
