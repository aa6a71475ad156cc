#pragma once

#include "scene/worldnodes.h"

// What only a running simulation shows. Here they keep their place in the tree and paint nothing.

class WorldSinglePolyNode : public WorldGraphicsNode
{
public:
  WorldSinglePolyNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "singlepoly") {}
  const char* GetClassName() const override { return "singlepoly"; }
};

class WorldBillBoardNode : public WorldGraphicsNode
{
public:
  WorldBillBoardNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "billboard") {}
  const char* GetClassName() const override { return "billboard"; }
};

class WorldFlareNode : public WorldGraphicsNode
{
public:
  WorldFlareNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "flare") {}
  const char* GetClassName() const override { return "flare"; }
};

class WorldSkidmarkNode : public WorldGraphicsNode
{
public:
  WorldSkidmarkNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "skidmark") {}
  const char* GetClassName() const override { return "skidmark"; }
};

class WorldRainNode : public WorldGraphicsNode
{
public:
  WorldRainNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "rain") {}
  const char* GetClassName() const override { return "rain"; }
};

class WorldProjectedShadowNode : public WorldGraphicsNode
{
public:
  WorldProjectedShadowNode(WorldScene* owner, const char* nodeName) :
      WorldGraphicsNode(owner, nodeName, "projectedshadow")
  {}
  const char* GetClassName() const override { return "projectedshadow"; }
};

class WorldParticleEmitter : public WorldGraphicsNode
{
public:
  WorldParticleEmitter(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "particleemitter")
  {}
  const char* GetClassName() const override { return "particleemitter"; }
};
