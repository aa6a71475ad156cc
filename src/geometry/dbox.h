#pragma once

#include "geometry/dvector.h"

// Axis-aligned box: min x, y, z, then max x, y, z.
struct DBox
{
  DVector3 min{0.0f};
  DVector3 max{0.0f};

  DVector3 Center() const { return (min + max) * 0.5f; }
  // Half the diagonal.
  float Radius() const { return glm::length(max - min) * 0.5f; }
  void Merge(const DBox& other)
  {
    min = glm::min(min, other.min);
    max = glm::max(max, other.max);
  }
};
