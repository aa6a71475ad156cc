#pragma once

#include "scene/renderblock.h"

#include <cstdint>
#include <span>
#include <vector>

// Opaque: the first layer's source factor is one. So is what has no layer.
bool IsOpaqueShader(const DShader* shader);
// Below 0: the first is painted before the second. 0: the shaders say nothing about the order.
int CompareShaders(const DShader* first, const DShader* second);

// Puts a frame's blocks into painting order: by shader, then opaque ones from far to near and transparent ones from
// near to far. Equal blocks keep the order in which they were reserved. The work arrays are kept, so that a frame
// allocates nothing.
class RenderSorter
{
public:
  void Sort(std::span<RenderBlock> blocks);
  // The largest on screen first, for the choice of what is left out.
  void SortBySize(std::span<RenderBlock> blocks);

private:
  static constexpr uint32_t NO_RANK = UINT32_MAX;
  struct ShaderRank
  {
    const DShader* shader;
    uint32_t rank;
  };
  struct Key
  {
    uint64_t key;
    uint32_t block;
  };
  void RankShaders(std::span<const RenderBlock> blocks);
  ShaderRank& SlotOf(const DShader* shader); // its own, or the free one for it
  void SortKeys();
  void Permute(std::span<RenderBlock> blocks);

  std::vector<const DShader*> shaders; // distinct, in painting order
  std::vector<ShaderRank> table;       // open addressing
  std::vector<Key> keys, keysBehind;
  std::vector<RenderBlock> sorted;
};
