#pragma once

#include <array>

// The unevenness of a ground: a sum of octaves of gradient noise (K. Perlin, "Improving noise", 2002, in two
// dimensions). The same numbers on every machine.
class RRoadNoise
{
public:
  static constexpr int MAX_OCTAVES = 4;
  struct Octave
  {
    float frequency = 1; // waves a metre
    float amplitude = 1;
    float threshold = 0; // noise that is smaller than this is none
  };
  // Of one octave unless told otherwise.
  std::array<Octave, MAX_OCTAVES> octaves{};
  int octaveCount = 1;

  float Get(float x, float z) const;
};
