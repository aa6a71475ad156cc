#include "track/rroadnoise.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace {

// 0 to 255 in an order that doesn't repeat itself, twice: shuffled by a fixed sequence.
std::array<uint8_t, 512> MakePermutation()
{
  std::array<uint8_t, 512> p{};
  std::iota(p.begin(), p.begin() + 256, uint8_t{0});
  uint32_t random = 1;
  for (size_t i = 255; i > 0; --i) {
    random = random * 1664525 + 1013904223;
    std::swap(p[i], p[(random >> 16) % (i + 1)]);
  }
  std::copy_n(p.begin(), 256, p.begin() + 256);
  return p;
}

float Fade(float t)
{
  return t * t * t * (t * (t * 6 - 15) + 10);
}

// The dot product with one of eight directions.
float Gradient(uint8_t hash, float x, float z)
{
  const float u = hash & 4 ? z : x;
  const float v = hash & 4 ? x : z;
  return (hash & 1 ? -u : u) + (hash & 2 ? -v : v) * 0.5f;
}

float Noise(float x, float z)
{
  static const std::array<uint8_t, 512> p = MakePermutation();
  const float cellX = std::floor(x), cellZ = std::floor(z);
  // The pattern repeats every 256 cells; far out, where cells can't be told apart, there is none.
  if (!(std::abs(cellX) < 1e9f && std::abs(cellZ) < 1e9f))
    return 0;
  const auto i = static_cast<size_t>(static_cast<int64_t>(cellX) & 255);
  const auto k = static_cast<size_t>(static_cast<int64_t>(cellZ) & 255);
  const float dx = x - cellX, dz = z - cellZ;
  const size_t a = p[i] + k, b = p[i + 1] + k;
  const float near = std::lerp(Gradient(p[a], dx, dz), Gradient(p[b], dx - 1, dz), Fade(dx));
  const float far = std::lerp(Gradient(p[a + 1], dx, dz - 1), Gradient(p[b + 1], dx - 1, dz - 1), Fade(dx));
  return std::lerp(near, far, Fade(dz));
}

} // namespace

float RRoadNoise::Get(float x, float z) const
{
  float sum = 0;
  for (int i = 0; i < std::min(octaveCount, MAX_OCTAVES); ++i) {
    const Octave& octave = octaves[static_cast<size_t>(i)];
    const float noise = Noise(x * octave.frequency, z * octave.frequency);
    if (std::abs(noise) >= octave.threshold)
      sum += noise * octave.amplitude;
  }
  return sum;
}
