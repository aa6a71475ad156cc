#pragma once

#include "geometry/dbox.h"

// An axis-aligned box that is asked for what it meets. Boxes that are no further apart than MARGIN do meet.
struct DAABB : DBox
{
  static constexpr float MARGIN = 1e-5f;
  // What a box around corners starts from: it meets nothing, and the first corner within 99999 of the origin moves it.
  static constexpr float FAR = 99999.0f;
  static DAABB Nothing() { return {{DVector3(FAR), DVector3(-FAR)}}; }
  // Around a box of half sides half that matrix turns and moves, its centre in the matrix's space.
  static DAABB FromOBB(const DVector3& center, const DMatrix4& matrix, const DVector3& half);
  // From one end to the other, length directions away.
  static DAABB FromSegment(const DVector3& from, const DVector3& direction, float length);

  void Expand(float margin)
  {
    min -= margin;
    max += margin;
  }
  // A coordinate that is no number is passed over.
  void Include(const DVector3& corner)
  {
    for (int axis = 0; axis < 3; ++axis) {
      min[axis] = corner[axis] < min[axis] ? corner[axis] : min[axis];
      max[axis] = corner[axis] > max[axis] ? corner[axis] : max[axis];
    }
  }
  bool Intersects(const DBox& other) const
  {
    for (int axis = 0; axis < 3; ++axis)
      if (!(other.min[axis] <= max[axis] + MARGIN && other.max[axis] >= min[axis] - MARGIN))
        return false;
    return true;
  }
  void DbgPrint(const char* name) const;
};
