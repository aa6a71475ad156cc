#pragma once

#include "geometry/dvector.h"

class PNewtonBody;

// Where a ray met a body.
struct PRayHit
{
  const PNewtonBody* body = nullptr;
  DVector3 position{0.0f};
  DVector3 normal{0, 1, 0}; // against the ray
  int material = -1;        // of the face; -1 on a body that has no faces
};
