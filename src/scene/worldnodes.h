#pragma once

#include "scene/worldnode.h"

#include <array>
#include <functional>

// Base of what is drawn.
class WorldGraphicsNode : public WorldNode
{
public:
  WorldGraphicsNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "graphics") {}
  const char* GetClassName() const override { return "graphics"; }

protected:
  using WorldNode::WorldNode;
};

class WorldGroupNode : public WorldNode
{
public:
  WorldGroupNode(WorldScene* owner, const char* nodeName) : WorldNode(owner, nodeName, "group") {}
  const char* GetClassName() const override { return "group"; }
};

// Moves what lies below it.
class WorldTransformationNode : public WorldNode
{
public:
  WorldTransformationNode(WorldScene* owner, const char* nodeName) : WorldNode(owner, nodeName, "transformation") {}
  const char* GetClassName() const override { return "transformation"; }
  bool Enter(WorldState& state) override;
  void Leave(WorldState& state) override;
  bool GetMatrix(DMatrix4& matrix) const override;
  bool SetMatrix(const DMatrix4& matrix) override;
  const DMatrix4& Matrix() const { return own; }

private:
  DMatrix4 own{1.0f};
  DMatrix4 world{1.0f}; // of the last walk; blocks of the frame point here
  bool identity = true;
};

// Shows one of up to ten lists of children, by the distance from the camera to the centre.
// Level i is shown up to its distance; the first level whose distance isn't reached is taken. A level with distance 0
// has no far end, and beyond the last distance nothing is shown.
class WorldLODNode : public WorldNode
{
public:
  static constexpr int MAX_LEVELS = 10;
  WorldLODNode(WorldScene* owner, const char* nodeName) : WorldNode(owner, nodeName, "lod") {}
  const char* GetClassName() const override { return "lod"; }
  bool Enter(WorldState& state) override;

  // An index out of range is reported and gives 0.
  float GetLODDistance(int i) const;
  void SetLODDistance(int i, float distance);
  // The node hangs below this one and is walked when its level is shown.
  void AddLevelNode(int i, WorldNode* node);
  void SetCenter(const DVector3& c) { center = c; }
  // -1: none.
  int LevelAt(float distanceFromCamera) const;

private:
  struct Level
  {
    float distance = 0;
    std::vector<WorldNode*> nodes; // not owned; they live as long as this node
  };
  std::array<Level, MAX_LEVELS> levels;
  int levelCount = 0; // one past the highest level with nodes or a distance
  DVector3 center{0.0f};
};

// Paints the background, before all else.
class WorldBackgroundNode : public WorldGraphicsNode
{
public:
  WorldBackgroundNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "background") {}
  const char* GetClassName() const override { return "background"; }
};

// Painted last.
class WorldForegroundNode : public WorldGraphicsNode
{
public:
  WorldForegroundNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "foreground") {}
  const char* GetClassName() const override { return "foreground"; }
};

class WorldLightNode : public WorldNode
{
public:
  WorldLightNode(WorldScene* owner, const char* nodeName) : WorldNode(owner, nodeName, "light") {}
  const char* GetClassName() const override { return "light"; }
  bool Enter(WorldState& state) override; // reserves a light of the frame
};

// Calls its owner in Render.
class WorldCallbackNode : public WorldGraphicsNode
{
public:
  WorldCallbackNode(WorldScene* owner, const char* nodeName, std::function<void()> function) :
      WorldGraphicsNode(owner, nodeName, "callback"), callback(std::move(function))
  {}
  const char* GetClassName() const override { return "callback"; }
  void Render() override
  {
    if (callback)
      callback();
  }

private:
  std::function<void()> callback;
};

// Takes the value of a variable of the scene.
class WorldVarNode : public WorldNode
{
public:
  WorldVarNode(WorldScene* owner, const char* nodeName) : WorldNode(owner, nodeName, "var") {}
  const char* GetClassName() const override { return "var"; }
  // False when the scene has no such variable (reported).
  bool SetParam(const char* param);
  bool Enter(WorldState& state) override;
  float GetValue() const { return value; }

private:
  int variable = -1;
  float value = 0;
};
