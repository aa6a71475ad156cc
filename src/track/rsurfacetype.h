#pragma once

#include "geometry/dvector.h"
#include "runtime/raudio.h"
#include "track/rroadnoise.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class QInfo;

// How a material of the scenery behaves under a tyre: a section of "surfaces" in special.ini.
struct RSurfaceType
{
  enum Flag : uint8_t
  {
    NO_SKID_SOUND = 1,
    NO_SKID_MARKS = 2,
    FORBIDDEN = 8
  };
  static constexpr uint8_t WATER = 4; // of the types
  uint8_t type = 0;                   // index of SurfaceTypeName
  uint8_t subtype = 0;
  uint8_t flags = 0;
  uint8_t index = 0; // in the track's table
  float gripFactor = 1;
  float rollingResistanceFactor = 1;
  float gripDeclineDriveline = 0;
  float viscosity = 0;
  float roadNoise = 0; // metres, what the noise is multiplied by
  RRoadNoise noise;
  float steerNoise = 0;
  DVector3 dustColor{1.0f};
  std::unique_ptr<RAudioProducer> sound; // of tyres on it, at volume 0 till they are; null without one
  std::string name;
  std::string pattern; // of the materials that it holds for

  // The height that the ground's unevenness adds at a place, in metres.
  float NoiseAt(float x, float z) const;
  // key: of the section, "surfaces.surf0". False when the type has no such name (reported); the rest is read.
  bool Load(const QInfo& info, const std::string& key, bool useRoadNoise);
  // Of the section's "audio", after Load. What isn't found is reported and stays silent.
  void LoadSound(const QInfo& info, const std::string& key, const std::string& trackDir, RAudio& audio);
  // "unknownsurf" out of range (reported).
  static const char* SurfaceTypeName(int type);
};
