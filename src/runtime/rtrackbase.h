#pragma once

#include "geometry/dvector.h"

#include <cstdint>
#include <string>

class DMaterial;
struct RSurfaceType;

// What a surface query found below a point.
struct RSurfaceInfo
{
  enum Flag : uint32_t
  {
    ON_SPLINE = 1,
    HIT = 2,
    ON_LIDAR = 4,
    ON_MESH = 8
  };
  uint32_t time = 0; // milliseconds
  uint32_t flags = 0;
  DVector3 position{0.0f};
  DVector3 normal{0.0f, 1.0f, 0.0f};
  DVector3 tangent{0.0f};
  float roadNoise = 0;
  const DMaterial* material = nullptr;
  const RSurfaceType* surface = nullptr;
  int polygon = -1; // of the scenery that was met last; the next search tries it first
  int line = 0;     // of the road splines
  float u = 0;      // along the ray
  float s = 0;      // across the road, 0 at its left edge, 1 at its right
  float along = 0;  // between the line and the next, 0 to 1
  float grip = 1;
};

// The current track as the layers below it know it.
class RTrackBase
{
public:
  virtual ~RTrackBase() = default;
  // "data/tracks/<name>".
  virtual const std::string& Directory() const = 0;
  // What lies on the ray from position along direction.
  virtual void GetSurfaceInfo(const DVector3& position, const DVector3& direction, RSurfaceInfo& result) = 0;
  // Where the first car stands on the grid: the origin on a track without a grid.
  virtual DVector3 FirstGridPlace() const = 0;
};
