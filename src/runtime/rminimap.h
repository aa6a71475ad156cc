#pragma once

#include "foundation/qrect.h"
#include "geometry/dvector.h"

#include <span>
#include <vector>

// The track from above, made once from the edges of its road.
class RMiniMap
{
public:
  struct Edge
  {
    DVector3 left, right;
  };
  // The lines from paintStart up to paintEnd make the road (paintEnd 0: all of them), fitted into the rectangle with
  // north up. Reported, and it stays empty, without lines or when there are fewer than are to be painted.
  void Bake(std::span<const Edge> lines, bool closed, int paintStart, int paintEnd, const QRect& rect);
  void Clear() { outline.clear(); }
  bool IsEmpty() const { return outline.empty(); }
  // The edges of the road, in pairs of points: pixels, y downwards.
  std::span<const DVector2> GetLines() const { return outline; }
  // Where a place of the world lies on it.
  DVector2 ToMap(const DVector3& position) const;

private:
  std::vector<DVector2> outline;
  DVector2 origin{0.0f}; // in the world, x and z, of the map's upper left
  DVector2 corner{0.0f}; // in pixels
  float scale = 0;       // pixels a metre
};
