#pragma once

#include "geometry/dvector.h"
#include "runtime/raudio.h"

#include <cstdint>
#include <memory>
#include <string>

// A point on the way that cars drive, with the room to its sides.
struct RWayPoint
{
  enum Flag : uint32_t
  {
    SELECTED = 1
  };
  uint32_t flags = 0;
  DVector3 pos{0.0f};
  DVector3 posDir{0.0f};
  DVector3 left{0.0f};
  DVector3 right{0.0f};
  float lon = 0;
};

// A sound that stands beside the road and is heard inside its radius.
struct RTrackAudio
{
  enum Flag : uint32_t
  {
    SELECTED = 1,
    PLAYING = 2
  };
  std::string name;   // the leaf of the sample's path
  std::string sample; // as the author gave it: written back unchanged
  std::string path;   // where it was found
  float radius = 1;   // metres
  DVector3 pos{0.0f};
  uint32_t flags = 0;
  std::unique_ptr<RAudioProducer> producer; // null: silent

  // Without audio, or with a path that leads elsewhere (reported), the source stays silent.
  void SetSample(const std::string& given, const std::string& trackDir, RAudio* audio = nullptr);
  // What the source does for a listener there: it is started inside the radius for the first time, and fades to
  // nothing at the radius; it isn't stopped. Gives the volume, 0 to 1.
  float Hear(const DVector3& listener);
};
