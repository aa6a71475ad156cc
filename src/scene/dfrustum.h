#pragma once

#include "geometry/dbox.h"
#include "geometry/dvector.h"

#include <array>

// The six planes of a view.
class DFrustum
{
public:
  DFrustum() = default;
  // Of projection times model-view: planes in world space.
  explicit DFrustum(const DMatrix4& m);
  // False only when the box lies wholly outside one plane. A box with NaN counts as inside.
  bool Touches(const DVector3& center, const DVector3& half) const
  {
    for (const DVector4& p : planes) {
      const float reach = half.x * glm::abs(p.x) + half.y * glm::abs(p.y) + half.z * glm::abs(p.z);
      if (p.x * center.x + p.y * center.y + p.z * center.z + p.w < -reach)
        return false;
    }
    return true;
  }

private:
  std::array<DVector4, 6> planes{};
};
