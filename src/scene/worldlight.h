#pragma once

#include "geometry/dvector.h"

class WorldLightNode;

// Light of the sun and the sky. Colours are red, green, blue from 0 to 1.
struct WorldSun
{
  DVector3 position{1000.0f, 450.0f, 400.0f}; // its direction counts, seen from the origin
  DVector3 ambient{0.46f, 0.49f, 0.55f};
  DVector3 diffuse{0.78f, 0.74f, 0.66f};
};

// A light of the scenery, as one frame sees it.
struct RenderLight
{
  const WorldLightNode* node = nullptr;
  const DMatrix4* matrix = nullptr; // null: the node is in world space
};

struct WorldFog
{
  DVector3 color{0.66f, 0.74f, 0.82f};
  float density = 0.0004f;
};
