#pragma once

#include "foundation/qrect.h"

#include <cstdint>

// A rectangle that was laid out for a screen of 1920 x 1080, on a screen of another size. Each number is truncated.
constexpr QRect QScaleRect(const QRect& reference, int screenWid, int screenHgt)
{
  const auto scaled = [](int value, int screen, int from) {
    return static_cast<int>(static_cast<int64_t>(value) * screen / from);
  };
  return {scaled(reference.x, screenWid, 1920), scaled(reference.y, screenHgt, 1080),
          scaled(reference.wid, screenWid, 1920), scaled(reference.hgt, screenHgt, 1080)};
}
