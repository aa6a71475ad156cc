#pragma once

#include "geometry/daabbtree.h"
#include "runtime/rtrackbase.h"

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

class DAabbTreeHd;
class DGeode;
class DMaterial;
class DShader;
class RSplineRep;
struct RSurfaceType;

// What a tree of the track knows of one of its triangles.
struct RPolyInfo
{
  static constexpr int NONE = -1;
  const DMaterial* material = nullptr; // null on a triangle of the road splines, and after its model was forgotten
  const RSurfaceType* surface = nullptr;
  int vertexColour = NONE; // of the tree's colours
  int splineTri = NONE;    // of the splines' triangles
};

// A triangle of the scenery on its way into a tree.
struct RSceneryTriangle
{
  std::array<DVector3, 3> corner;
  const std::array<DVector3, 3>* colour; // null without vertex colours
  const DMaterial* material;
  const DShader* shader; // of the material, never null
};

// Hands on each triangle of the model that can be touched: none of a geob whose material has no shader (logged) or the
// sky's, none with two corners in one place, none with a bad index.
void RForEachTriangle(const DGeode& geode, const std::function<void(const RSceneryTriangle&)>& take);

// Triangles of the scenery, and of the road splines, with what the track knows of them.
class RPolyTree
{
public:
  // With the surface that the material has now.
  void AddTriangle(const RSceneryTriangle& triangle);
  void AddSplines(const RSplineRep& splines);
  // Nothing is added from here on. The tree is built when it is asked for first: opening a track doesn't wait for it.
  void Finish() { isFilled = true; }
  // Before the model goes: the triangles stay, their material is no longer told.
  void ForgetModel(const DGeode& geode);

  // Threads may ask at once.
  const DAABBTree& Tree() const
  {
    if (isFilled)
      std::call_once(isBuilt, [this] { tree.Finish(); });
    return tree;
  }
  const RPolyInfo& Info(const DAABBPolyInfo& poly) const { return info[static_cast<size_t>(poly.user)]; }
  // Null without vertex colours.
  const std::array<DVector3, 3>* Colours(const RPolyInfo& of) const
  {
    return of.vertexColour < 0 ? nullptr : &colours[static_cast<size_t>(of.vertexColour)];
  }

private:
  mutable DAABBTree tree;
  mutable std::once_flag isBuilt;
  bool isFilled = false;
  DArray<RPolyInfo> info; // by the polys' user numbers
  std::vector<std::array<DVector3, 3>> colours;
};

// The ground below a point. The road splines give the smooth height, the scenery the material, whichever is found
// first.
class RSurfaceQuery
{
public:
  // All must outlive the query. The lidar tree may be null.
  RSurfaceQuery(const RPolyTree& searched, const RSplineRep& road, const DAabbTreeHd* lidarTree,
                const RSurfaceType* firstSurface) :
      polys(searched),
      splines(road), lidar(lidarTree), otherwise(firstSurface)
  {}
  // The result's polygon, when it holds one, is tried first.
  void Run(const DVector3& position, const DVector3& direction, RSurfaceInfo& result) const;
  // Where the ray meets a triangle of the scenery whose surface is water; false leaves the point as it was.
  bool FindWater(const DVector3& position, const DVector3& direction, DVector3& point) const;

private:
  struct State;
  bool Test(State& state, const DAABBPolyInfo& poly) const;
  bool HitMesh(State& state, const DAABBPolyInfo& poly, const RPolyInfo& of, float t) const;
  bool HitSpline(State& state, int tri, float t, float a, float b) const;
  void Refine(State& state, int line, float& s, float& along, bool isFirst, bool& goOn) const;
  void AskLidar(State& state) const;

  const RPolyTree& polys;
  const RSplineRep& splines;
  const DAabbTreeHd* lidar;
  const RSurfaceType* otherwise;
};
