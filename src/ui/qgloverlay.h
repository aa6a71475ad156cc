#pragma once

#include "foundation/qrect.h"
#include "geometry/doverlay.h"

#include <string>
#include <vector>

class QCanvas;
class QFont;

// A text at its place on the shell.
struct QOverlayLabel
{
  QRect rect;
  float distance = 0; // from the eye
  bool always = false;
  QColor color;
  std::string text;
};
// The indices of those that are to be drawn: all that are always, and from the nearest on what doesn't cover another.
std::vector<size_t> QChooseLabels(std::span<const QOverlayLabel> labels);

// Draws the overlay by OpenGL's fixed functions with the matrices that are current. Without a context nothing happens.
class QGLOverlay : public DOverlay
{
public:
  // Texts are drawn on the canvas, in its font; it must outlive this.
  explicit QGLOverlay(QCanvas& target) : canvas(target) {}
  ~QGLOverlay() override { Flush(); }
  QGLOverlay(const QGLOverlay&) = delete;
  QGLOverlay& operator=(const QGLOverlay&) = delete;
  void Points(std::span<const DVector3> points, const DOverlayStyle& style) override;
  void Lines(std::span<const DVector3> points, const DOverlayStyle& style) override;
  void LineLoop(std::span<const DVector3> points, const DOverlayStyle& style) override;
  void Triangles(std::span<const DVector3> corners, const DOverlayStyle& style) override;
  void Quads(std::span<const DVector3> corners, const DOverlayStyle& style) override;
  // With its lower left corner at the point; nothing when that is behind the eye. It waits for Flush.
  void Text(const DVector3& at, std::string_view text, const DOverlayStyle& style) override;
  // Draws the texts that there is room for.
  void Flush();

private:
  QCanvas& canvas;
  std::vector<QOverlayLabel> labels;
};
