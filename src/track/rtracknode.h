#pragma once

#include "geometry/dvector.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
  std::string file;                                       // relative to the track's directory, lower case
  std::string name;                                       // of the entry
  std::unique_ptr<WorldTransformationNode> transformNode; // over sceneNode; null unless RELATIVE_POS
  std::unique_ptr<WorldGeodeNode> sceneNode;              // never null in a track's table
  DVector3 translate{0.0f};                               // this and rotation: read, not applied
  DVector3 rotation{0.0f};
  int lightmapUVIndex = 1;
  int lightmapResolutionX = 64;
  int lightmapResolutionY = 64;
  DVector3 center{0.0f}; // bounding sphere
  float radius = 0;
  // What the entry of a movable holds besides: keys below the entry, and values, in the file's order.
  std::vector<std::pair<std::string, std::string>> movableKeys;

  DGeode* Geode() const;              // the model of level 0; null without one
  float LodDistance(int level) const; // 0 without one
  void SetVisible(bool on);
  // What the model keeps of all flags, after a load.
  void ApplyFlags();
  // Into the geobs of all levels, so that a hit on a polygon knows its node's flags.
  void CopyFlagsToGeobs();
  // RECEIVE_SHADOW or RECEIVE_LIGHT, into the bursts of level 0.
  void CopyFlagToBursts(Flag flag);
  // From the model's box.
  void CalcBounds();
  // The word for one bit, "F_???" for another value.
  static const char* FlagName(uint32_t flag);
};
