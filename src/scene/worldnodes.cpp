#include "scene/worldnodes.h"

#include "foundation/qreport.h"
#include "scene/worldscene.h"
#include "scene/worldstate.h"

bool WorldTransformationNode::Enter(WorldState& state)
{
  const DMatrix4* above = state.Matrix();
  if (identity && !above) {
    state.Push(nullptr);
    return false;
  }
  world = above ? *above * own : own;
  state.Push(&world);
  return false;
}

void WorldTransformationNode::Leave(WorldState& state)
{
  state.Pop();
}

bool WorldTransformationNode::GetMatrix(DMatrix4& matrix) const
{
  matrix = own;
  return true;
}

bool WorldTransformationNode::SetMatrix(const DMatrix4& matrix)
{
  own = matrix;
  identity = own == DMatrix4(1.0f);
  return true;
}

bool WorldLightNode::Enter(WorldState& state)
{
  *state.scene.ReserveRenderLight() = {this, state.Matrix()};
  return false;
}

float WorldLODNode::GetLODDistance(int i) const
{
  if (i < 0 || i >= MAX_LEVELS) {
    QWARN("WorldLODNode:GetLODDistance(%d) out of range", i);
    return 0;
  }
  return levels[static_cast<size_t>(i)].distance;
}

void WorldLODNode::SetLODDistance(int i, float newDistance)
{
  if (i < 0 || i >= MAX_LEVELS)
    return;
  levels[static_cast<size_t>(i)].distance = newDistance;
  levelCount = std::max(levelCount, i + 1);
}

void WorldLODNode::AddLevelNode(int i, WorldNode* node)
{
  if (i < 0 || i >= MAX_LEVELS)
    return;
  levels[static_cast<size_t>(i)].nodes.push_back(node);
  levelCount = std::max(levelCount, i + 1);
  if (GetScene())
    GetScene()->AddNode(node, this);
}

int WorldLODNode::LevelAt(float distanceFromCamera) const
{
  for (int i = 0; i < levelCount; ++i)
    if (const float end = levels[static_cast<size_t>(i)].distance; end <= 0 || distanceFromCamera < end)
      return i;
  return -1;
}

bool WorldLODNode::Enter(WorldState& state)
{
  distance = state.DistanceTo(center);
  if (const int level = LevelAt(distance); level >= 0)
    for (WorldNode* node : levels[static_cast<size_t>(level)].nodes)
      state.Visit(*node);
  return true; // the other levels stay unseen
}

bool WorldVarNode::SetParam(const char* param)
{
  variable = GetScene() ? GetScene()->FindVar(param) : -1;
  if (variable < 0)
    QWARN("WorldVarNode: param '%s' not found in scene", param);
  return variable >= 0;
}

bool WorldVarNode::Enter(WorldState& state)
{
  if (variable >= 0)
    value = state.scene.GetVarValue(variable);
  return false;
}
