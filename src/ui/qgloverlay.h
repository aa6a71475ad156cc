#pragma once

#include "geometry/doverlay.h"

class QCanvas;
class QFont;

// Draws the overlay by OpenGL's fixed functions with the matrices that are current. Without a context nothing happens.
class QGLOverlay : public DOverlay
{
public:
  // Texts are drawn on the canvas, in its font; it must outlive this.
  explicit QGLOverlay(QCanvas& target) : canvas(target) {}
  void Points(std::span<const DVector3> points, const DOverlayStyle& style) override;
  void Lines(std::span<const DVector3> points, const DOverlayStyle& style) override;
  void LineLoop(std::span<const DVector3> points, const DOverlayStyle& style) override;
  void Triangles(std::span<const DVector3> corners, const DOverlayStyle& style) override;
  void Quads(std::span<const DVector3> corners, const DOverlayStyle& style) override;
  // With its lower left corner at the point; nothing when that is behind the eye.
  void Text(const DVector3& at, std::string_view text, const DOverlayStyle& style) override;

private:
  QCanvas& canvas;
};
