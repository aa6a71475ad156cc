#pragma once

#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <string>

class DGeode;
class WorldGeodeNode;
class WorldTransformationNode;

// A piece of scenery: one model file, as "geometry.ini" names it.
class RTrackNode
{
public:
  static constexpr int LODS = 10;
  enum Flag : uint32_t
  {
    SKY = 1,
    COLLIDE = 2,
    SURFACE = 4,
    RELATIVE_POS = 8,
    INVISIBLE = 16,
    LIGHTMAP = 32,
    RECEIVE_SHADOW = 256,
    RECEIVE_LIGHT = 512,
    MOVABLE = 1024,
    HIDE_WHEN_DARK = 2048,
    HIDE_WHEN_LIGHT = 4096
  };
  static constexpr uint32_t DEFAULT_FLAGS = COLLIDE | SURFACE;

  RTrackNode();
  ~RTrackNode();
  RTrackNode(const RTrackNode&) = delete;
  RTrackNode& operator=(const RTrackNode&) = delete;

  uint32_t flags = DEFAULT_FLAGS;
  std::string file; // relative to the track's directory, lower case
  std::string name; // of the entry
  WorldGeodeNode* sceneNode = nullptr;
  WorldTransformationNode* transformNode = nullptr; // over sceneNode; null unless RELATIVE_POS
  DGeode* geode = nullptr;                          // of level 0
  DVector3 translate{0.0f};                         // this and rotation: read, not applied
  DVector3 rotation{0.0f};
  std::array<float, LODS> lod{}; // distances
  int lightmapUVIndex = 1;
  int lightmapResolutionX = 64;
  int lightmapResolutionY = 64;
  DVector3 center{0.0f}; // bounding sphere
  float radius = 0;

  // From the model's box.
  void CalcBounds();
  // The word for one bit, "F_???" for another value.
  static const char* FlagName(uint32_t flag);
};
