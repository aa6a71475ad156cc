#pragma once

#include "geometry/dpipe.h"

#include <array>
#include <cstdint>

class DGeob;
struct DShaderLayer;

// Puts the layers of a shader on the texture units of the fixed pipeline: picture, environment, generated and scaled
// coordinates. Units that the next shader doesn't use are switched off.
class RenderLayers
{
public:
  void Begin(DPipe& statePipe);
  // How many of a shader's layers from the first on go into one draw: those behind it that do no more than darken or
  // tint what the first shows, which a texture unit does in the same way as blending.
  int GroupOf(const DShaderLayer* layers, int count) const;
  // False, reported, for a coordinate generator that there isn't; the layer isn't to be painted then.
  [[nodiscard]] bool Setup(int unit, const DShaderLayer& layer);
  void SetupNone() { UseUnits(0); } // plain colour
  // After the layers of a draw: the units behind are off.
  void UseUnits(int count);
  // The coordinates of the geob on each unit in use: the second channel is for the layers behind the first, where there
  // is one.
  void SetCoordinates(const DGeob& geob);
  void End();

private:
  void SetupGenerators(const DShaderLayer& layer);
  void SetupScale(int unit, const DShaderLayer& layer);

  DPipe* pipe = nullptr;
  int units = 1; // that may be used
  int used = 0;
  std::array<bool, DPipe::MAX_UNITS> scaled{};
  std::array<bool, DPipe::MAX_UNITS> generates{};
};
