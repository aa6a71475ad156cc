#pragma once

#include "geometry/dvector.h"

#include <memory>
#include <string>

// A line across the road that cars cross, with the upright plane through it.
struct RTimeLine
{
  struct Plane
  {
    DVector3 normal{0.0f};
    float distance = 0; // a point p is in front when dot(normal, p) + distance >= 0
  };
  RTimeLine() = default;
  RTimeLine(const DVector3& newFrom, const DVector3& newTo) { SetPoints(newFrom, newTo); }

  // The one way to move a line: plane and length follow.
  void SetPoints(const DVector3& newFrom, const DVector3& newTo);
  // True when the way from a to b passes the plane and both ends are near the line: no farther from either of its
  // points than it is long.
  bool IsCrossed(const DVector3& a, const DVector3& b) const;

  DVector3 from{0.0f};
  DVector3 to{0.0f};
  Plane plane;
  float lengthSq = 0;
  std::string name;
};

// A line that runs a command when it is crossed.
struct RTriggerLine : RTimeLine
{
  int index = 0; // given at creation: the place in the track's table
  std::string command;
};
