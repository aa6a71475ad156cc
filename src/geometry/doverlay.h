#pragma once

#include "foundation/qcolor.h"
#include "geometry/dvector.h"

#include <cstdint>
#include <span>
#include <string_view>

// How one thing of the overlay is drawn. Without lighting, culling and texturing in every case.
struct DOverlayStyle
{
  QColor color{255, 255, 255};
  float width = 1.0f; // of a line, or size of a point, in pixels
  bool depthTest = true;
  bool blend = false;        // smooth, source alpha over one minus source alpha
  float offset = 0.0f;       // polygon offset, factor and units
  bool always = false;       // of a text: shown even where a nearer one stands
  uint16_t stipple = 0xFFFF; // of lines: a bit for each pixel of the interface, the lowest first
};

// Sink for what is painted in 3D over the scenery: one implementation draws, one records for tests.
class DOverlay
{
public:
  virtual ~DOverlay() = default;
  virtual void Points(std::span<const DVector3> points, const DOverlayStyle& style) = 0;
  // Pairs of points.
  virtual void Lines(std::span<const DVector3> points, const DOverlayStyle& style) = 0;
  virtual void LineLoop(std::span<const DVector3> points, const DOverlayStyle& style) = 0;
  // Three, or four, corners each.
  virtual void Triangles(std::span<const DVector3> corners, const DOverlayStyle& style) = 0;
  virtual void Quads(std::span<const DVector3> corners, const DOverlayStyle& style) = 0;
  // At the point, unless texts of nearer points leave no room there.
  virtual void Text(const DVector3& at, std::string_view text, const DOverlayStyle& style) = 0;

  void Line(const DVector3& a, const DVector3& b, const DOverlayStyle& style)
  {
    const DVector3 points[] = {a, b};
    Lines(points, style);
  }
};
