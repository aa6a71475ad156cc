#include "track/rtrackshapes.h"

#include <array>
#include <cmath>
#include <numbers>

void RPaintFence(DOverlay& overlay, const DVector3& from, const DVector3& to, const DOverlayStyle& style)
{
  constexpr DVector3 UP{0, 1, 0};
  const DVector3 points[] = {from, from + UP, to, to + UP, from + UP, to + UP};
  overlay.Lines(points, style);
}

void RPaintCircle(DOverlay& overlay, const DVector3& center, float radius, const DOverlayStyle& style)
{
  constexpr int POINTS = 31;
  constexpr float STEP = 12 * std::numbers::pi_v<float> / 180;
  std::array<DVector3, POINTS> points;
  for (int i = 0; i < POINTS; ++i) {
    const float angle = static_cast<float>(i) * STEP;
    points[static_cast<size_t>(i)] = center + radius * DVector3(std::sin(angle), 0, std::cos(angle));
  }
  overlay.LineLoop(points, style);
}

void RPaintCube(DOverlay& overlay, const DVector3& center, float half)
{
  // A side's middle lies at its normal times half; the other direction of the side is up.
  static const struct
  {
    DVector3 normal;
    QColor color;
  } sides[] = {
      {{0, 0, -1}, {255, 128, 255}},
      {{-1, 0, 0}, {255, 51, 255}},
      {{1, 0, 0}, {255, 26, 255}},
      {{0, 0, 1}, {255, 102, 255}},
  };
  const DVector3 up(0, half, 0);
  for (const auto& side : sides) {
    const DVector3 middle = center + side.normal * half;
    const DVector3 across = DVector3(side.normal.z, 0, -side.normal.x) * half;
    const DVector3 corners[] = {middle - across - up, middle + across - up, middle + across + up, middle - across + up};
    DOverlayStyle style;
    style.color = side.color;
    overlay.Quads(corners, style);
  }
}
