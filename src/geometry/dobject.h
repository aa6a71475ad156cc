#pragma once

#include "geometry/dvector.h"

#include <cstdint>

// A placed, paintable thing.
class DObject
{
public:
  enum Flag : uint32_t
  {
    HIDDEN = 0x01,
    NO_TRANSFORMATION = 0x02,
    KEEP_CONTEXT = 0x04
  };
  struct Transformation
  {
    DVector3 translation{0.0f};
    DVector3 rotation{0.0f}; // about x, y, z in degrees
    DVector3 scale{1.0f};
  };
  virtual ~DObject() = default;
  virtual void Paint() {}
  // Paint under the object's own matrix, unless the flags say otherwise.
  void PaintTransformed();
  // Translation, then turns about x, y and z, then scale.
  DMatrix4 Matrix() const;

  Transformation transformation;
  uint32_t flags = 0;
};
