#pragma once

#include "geometry/dvector.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// A place in plan: x is the world's x, y the world's z, in metres.
using DemoPlan = glm::dvec2;

constexpr double DEMO_PI = 3.14159265358979323846;

inline DVector3 DemoAt(const DemoPlan& p, double y)
{
  return {static_cast<float>(p.x), static_cast<float>(y), static_cast<float>(p.y)};
}

// 0 at from, 1 at to, with level ends; from may lie above to.
inline double DemoSmooth(double from, double to, double v)
{
  const double t = std::clamp((v - from) / (to - from), 0.0, 1.0);
  return t * t * (3.0 - 2.0 * t);
}

inline double DemoMix(double a, double b, double t)
{
  return a + (b - a) * t;
}

// Chance without a state: the same numbers give the same answer, on every machine.
inline uint32_t DemoHash(int64_t a, int64_t b, uint32_t salt = 0)
{
  uint64_t h = static_cast<uint64_t>(a) * 0x9E3779B97F4A7C15u + static_cast<uint64_t>(b) * 0xC2B2AE3D27D4EB4Fu + salt;
  h ^= h >> 31;
  h *= 0xD6E8FEB86659FD93u;
  h ^= h >> 29;
  h *= 0xD6E8FEB86659FD93u;
  return static_cast<uint32_t>(h >> 32);
}

// 0 to 1.
inline double DemoRandom(int64_t a, int64_t b, uint32_t salt = 0)
{
  return DemoHash(a, b, salt) / 4294967295.0;
}

// Smooth noise over a lattice of one unit, 0 to 1. A period above 0 makes it repeat after that many units.
inline double DemoNoise(double x, double y, uint32_t salt = 0, int period = 0)
{
  const double fx = std::floor(x), fy = std::floor(y);
  const auto corner = [&](int dx, int dy) {
    auto ix = static_cast<int64_t>(fx) + dx, iy = static_cast<int64_t>(fy) + dy;
    if (period > 0) {
      ix = (ix % period + period) % period;
      iy = (iy % period + period) % period;
    }
    return DemoRandom(ix, iy, salt);
  };
  const double tx = DemoSmooth(0, 1, x - fx), ty = DemoSmooth(0, 1, y - fy);
  return DemoMix(DemoMix(corner(0, 0), corner(1, 0), tx), DemoMix(corner(0, 1), corner(1, 1), tx), ty);
}

// Octaves of noise, each twice as fine and half as strong, 0 to 1.
inline double DemoFractal(double x, double y, int octaves, uint32_t salt = 0, int period = 0)
{
  double sum = 0, weight = 0, strength = 1;
  for (int i = 0; i < octaves; ++i) {
    sum += strength * DemoNoise(x, y, salt + static_cast<uint32_t>(i), period);
    weight += strength;
    strength *= 0.5;
    x *= 2;
    y *= 2;
    period *= 2;
  }
  return sum / weight;
}
