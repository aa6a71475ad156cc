#pragma once

#include "geometry/dvector.h"
#include "scene/dfrustum.h"

#include <array>

class WorldNode;
class WorldScene;

// What a walk over the tree carries: where it looks from, what it sees, and the matrices on the way down.
class WorldState
{
public:
  static constexpr int MAX_DEPTH = 32; // of matrices; what lies deeper keeps the matrix above
  WorldState(WorldScene& walked, const DFrustum& view, const DVector3& eyePosition) :
      scene(walked), frustum(view), eye(eyePosition)
  {}
  // Visits a node and the siblings behind it.
  void Walk(WorldNode* first);
  void Visit(WorldNode& node);

  // Null: world space. The matrix must hold until the frame is painted.
  const DMatrix4* Matrix() const { return stack[static_cast<size_t>(depth)]; }
  void Push(const DMatrix4* world);
  void Pop();
  int Depth() const { return depth + beyond; }
  DVector3 ToWorld(const DVector3& point) const;
  float DistanceTo(const DVector3& point) const { return glm::length(ToWorld(point) - eye); }
  bool InView(const DVector3& center, const DVector3& half) const; // in the current matrix's space

  WorldScene& scene;

private:
  const DFrustum& frustum;
  DVector3 eye;
  int depth = 0;
  int beyond = 0; // pushes that found the stack full
  std::array<const DMatrix4*, MAX_DEPTH> stack{};
};
