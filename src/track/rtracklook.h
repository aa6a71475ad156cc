#pragma once

#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

// How a track looks and what weather it has: plain values that a renderer takes when there is one.

struct RSkyModel
{
  float rayleigh = 0.0024f;
  float mie = 0.00013f;
  float sunIntensity = 1;
  float exposure = 1;
  float exposureFactor = 1;
  float extinctionFactor = 1;
  float night = 0; // above 0 in the dark
};

struct RFog
{
  enum Mode
  {
    EXPONENTIAL,
    EXPONENTIAL_SQUARED,
    LINEAR
  };
  float density = 0.001f;
  float start = 10; // metres
  float end = 100;
  DVector4 color{0, 0, 0, 1};
  int mode = EXPONENTIAL;
};

struct RWeather
{
  std::string rainCurve; // path of the curve file; empty without one
  float thunder = 0;
  float clouds = 1;
  float cloudHeight = 20000; // metres
  float sunny = 1;
  std::array<float, 2> cloudSpeed{};
};

struct RSun
{
  static constexpr DVector3 DEFAULT_POSITION{1000, 450, 400};
  bool enabled = true;
  bool placed = false; // by the track's author
  DVector3 position = DEFAULT_POSITION;
  DVector3 basePosition = DEFAULT_POSITION;
  float intensity = 1;
  float azimuthOffset = 0;
  int year = 2008, month = 7, day = 20;
  float latitude = 52, longitude = 5, timezone = 1;
  bool hasColors = false; // the three below came from the track
  DVector4 ambient{0.0f};
  DVector4 diffuse{0.0f};
  DVector4 specular{0.0f};
  float whiteout = 0;
  int hours = -1; // of the day; -1: not set
  int minutes = -1;

  void SetTime(std::string_view text); // "HHMM"; anything else changes nothing
};

// A file of the track that belongs to others: where it is, and whether it is there.
struct RTrackFile
{
  std::string path;
  bool present = false;
};
