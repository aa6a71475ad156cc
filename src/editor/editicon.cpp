#include "editor/editicon.h"

#include <cmath>

namespace {

constexpr uint32_t Pixel(uint32_t r, uint32_t g, uint32_t b)
{
  return 0xFF000000u | b << 16 | g << 8 | r;
}

constexpr uint32_t SKY = Pixel(110, 170, 221);
constexpr uint32_t GRASS = Pixel(70, 130, 60);
constexpr uint32_t ASPHALT = Pixel(70, 74, 80);
constexpr uint32_t EDGE = Pixel(240, 240, 240);
constexpr int HORIZON = 11;

uint32_t ColorAt(int x, int y)
{
  if (y < HORIZON)
    return SKY;
  const float depth = static_cast<float>(y - HORIZON + 1) / static_cast<float>(EDIT_ICON_SIZE - HORIZON);
  const float side = std::abs(static_cast<float>(x) - (EDIT_ICON_SIZE - 1) * 0.5f);
  const float halfRoad = 1 + 12 * depth;
  if (side > halfRoad)
    return GRASS;
  const bool dash = side < 0.4f + depth && (EDIT_ICON_SIZE - y) / 3 % 2 == 1;
  return dash || side > halfRoad - 0.6f - depth ? EDGE : ASPHALT;
}

} // namespace

std::array<uint32_t, EDIT_ICON_SIZE * EDIT_ICON_SIZE> EditIcon()
{
  std::array<uint32_t, EDIT_ICON_SIZE * EDIT_ICON_SIZE> pixels{};
  for (int i = 0; i < EDIT_ICON_SIZE * EDIT_ICON_SIZE; ++i)
    pixels[static_cast<size_t>(i)] = ColorAt(i % EDIT_ICON_SIZE, i / EDIT_ICON_SIZE);
  return pixels;
}
