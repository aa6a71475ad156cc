#include "scene/worldstate.h"

#include "foundation/qreport.h"
#include "geometry/dbox.h"
#include "scene/worldnode.h"

DFrustum::DFrustum(const DMatrix4& m)
{
  // Gribb and Hartmann: each plane is a row of the matrix added to, or taken from, the last.
  const DMatrix4 rows = glm::transpose(m);
  for (int i = 0; i < 3; ++i) {
    planes[static_cast<size_t>(2 * i)] = rows[3] + rows[i];
    planes[static_cast<size_t>(2 * i + 1)] = rows[3] - rows[i];
  }
}

void WorldState::Push(const DMatrix4* world)
{
  if (depth + 1 < MAX_DEPTH)
    stack[static_cast<size_t>(++depth)] = world;
  else
    ++beyond;
}

void WorldState::Pop()
{
  if (beyond > 0)
    --beyond;
  else if (depth > 0)
    --depth;
}

DVector3 WorldState::ToWorld(const DVector3& point) const
{
  return Matrix() ? DVector3(*Matrix() * DVector4(point, 1.0f)) : point;
}

bool WorldState::InView(const DVector3& center, const DVector3& half) const
{
  const DMatrix4* m = Matrix();
  if (!m)
    return frustum.Touches(center, half);
  // The box around the turned box.
  const glm::mat3 turn(*m);
  const glm::mat3 reach(glm::abs(turn[0]), glm::abs(turn[1]), glm::abs(turn[2]));
  return frustum.Touches(ToWorld(center), reach * half);
}

void WorldState::Visit(WorldNode& node)
{
  if ((node.flags & (WorldNode::VISIBLE | WorldNode::DELETED)) != WorldNode::VISIBLE) {
    if (node.flags & WorldNode::DELETED)
      QCrash("Deleted WorldNode used!");
    return;
  }
  if (const DBox* box = node.GetBox()) {
    const DVector3 center = box->Center();
    if (!InView(center, box->max - center)) {
      node.Leave(*this);
      return;
    }
    node.distance = DistanceTo(center);
  }
  if (!node.Enter(*this))
    Walk(node.GetChild());
  node.Leave(*this);
}

void WorldState::Walk(WorldNode* first)
{
  for (WorldNode* node = first; node; node = node->GetNext()) {
    __builtin_prefetch(node->GetNext());
    Visit(*node);
  }
}
