#include "scene/rendersort.h"

#include "geometry/dshader.h"
#include "geometry/dtexture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <utility>

namespace {

constexpr uint32_t GL_ONE_FACTOR = 1;

template <typename T>
int Ascending(T a, T b)
{
  return a < b ? -1 : a > b;
}

// What holds goes first.
int First(bool a, bool b)
{
  return Ascending(b, a);
}

// What the order goes by. No shader goes with the plain opaque ones.
struct Terms
{
  explicit Terms(const DShader* shader) : opaque(IsOpaqueShader(shader))
  {
    if (!shader)
      return;
    sortKey = shader->sortKey;
    sortOffset = shader->sortOffset;
    fragmentProgram = shader->fragmentProgram;
    vertexProgram = shader->vertexProgram;
    if (shader->layer.empty())
      return;
    const DShaderLayer& layer = shader->layer.front();
    layerFlags = layer.flags;
    texture = layer.texture ? layer.texture->glTexture : 0;
  }
  int sortKey = 300;
  int sortOffset = 0;
  int fragmentProgram = 0;
  int vertexProgram = 0;
  bool opaque;
  uint32_t layerFlags = DShaderLayer::DEPTH_WRITE;
  uint32_t texture = 0; // OpenGL's number: 0 too for one that wasn't selected yet
};

} // namespace

bool IsOpaqueShader(const DShader* shader)
{
  return !shader || shader->layer.empty() || shader->layer.front().blendSrc == GL_ONE_FACTOR;
}

int CompareShaders(const DShader* first, const DShader* second)
{
  if (first == second)
    return 0;
  const Terms a(first);
  const Terms b(second);
  if (const int c = Ascending(a.sortKey, b.sortKey))
    return c;
  if (const int c = Ascending(a.sortOffset, b.sortOffset))
    return c;
  if (const int c = First(a.opaque, b.opaque))
    return c;
  if (const int c = First(a.layerFlags & DShaderLayer::NO_DEPTH_TEST, b.layerFlags & DShaderLayer::NO_DEPTH_TEST))
    return c;
  if (const int c = First(a.layerFlags & DShaderLayer::DEPTH_WRITE, b.layerFlags & DShaderLayer::DEPTH_WRITE);
      c && a.opaque)
    return c;
  if (const int c = Ascending(a.fragmentProgram, b.fragmentProgram))
    return c;
  if (const int c = Ascending(a.vertexProgram, b.vertexProgram))
    return c;
  return a.opaque ? Ascending(a.texture, b.texture) : 0;
}

RenderSorter::ShaderRank& RenderSorter::SlotOf(const DShader* shader)
{
  const size_t mask = table.size() - 1;
  size_t slot = (reinterpret_cast<uintptr_t>(shader) * 0x9E3779B97F4A7C15u >> 32) & mask;
  while (table[slot].rank != NO_RANK && table[slot].shader != shader)
    slot = (slot + 1) & mask;
  return table[slot];
}

void RenderSorter::RankShaders(std::span<const RenderBlock> blocks)
{
  // Half full at most: there are no more shaders than blocks.
  const size_t size = std::bit_ceil(2 * blocks.size() + 2);
  table.assign(size, {nullptr, NO_RANK});
  shaders.clear();
  for (const RenderBlock& block : blocks)
    if (ShaderRank& slot = SlotOf(block.shader); slot.rank == NO_RANK) {
      slot = {block.shader, static_cast<uint32_t>(shaders.size())};
      shaders.push_back(block.shader);
    }
  std::stable_sort(shaders.begin(), shaders.end(),
                   [](const DShader* a, const DShader* b) { return CompareShaders(a, b) < 0; });
  uint32_t rank = 0;
  for (size_t i = 0; i < shaders.size(); ++i) {
    if (i > 0 && CompareShaders(shaders[i - 1], shaders[i]) != 0)
      ++rank;
    SlotOf(shaders[i]).rank = rank;
  }
}

// Byte by byte from the lowest, each pass stable. A byte that is the same in all keys costs only its count.
void RenderSorter::SortKeys()
{
  keysBehind.resize(keys.size());
  std::array<std::array<uint32_t, 256>, sizeof(uint64_t)> counts{};
  for (const Key& k : keys)
    for (size_t byte = 0; byte < counts.size(); ++byte)
      ++counts[byte][k.key >> 8 * byte & 255];
  for (size_t byte = 0; byte < counts.size(); ++byte) {
    auto& count = counts[byte];
    if (keys.empty() || count[keys.front().key >> 8 * byte & 255] == keys.size())
      continue;
    uint32_t start = 0;
    for (uint32_t& c : count)
      start += std::exchange(c, start);
    for (const Key& k : keys)
      keysBehind[count[k.key >> 8 * byte & 255]++] = k;
    keys.swap(keysBehind);
  }
}

void RenderSorter::Permute(std::span<RenderBlock> blocks)
{
  sorted.clear();
  for (const Key& k : keys)
    sorted.push_back(blocks[k.block]);
  std::copy(sorted.begin(), sorted.end(), blocks.begin());
}

void RenderSorter::Sort(std::span<RenderBlock> blocks)
{
  RankShaders(blocks);
  keys.clear();
  for (uint32_t i = 0; i < blocks.size(); ++i) {
    const RenderBlock& block = blocks[i];
    // A distance is at least 0, so that its bits order as it does; one that isn't a number counts as far.
    const auto near = std::bit_cast<uint32_t>(block.distance >= 0 ? block.distance : FLT_MAX);
    const uint32_t order = IsOpaqueShader(block.shader) ? ~near : near;
    keys.push_back({static_cast<uint64_t>(SlotOf(block.shader).rank) << 32 | order, i});
  }
  SortKeys();
  Permute(blocks);
}

void RenderSorter::SortBySize(std::span<RenderBlock> blocks)
{
  keys.clear();
  for (uint32_t i = 0; i < blocks.size(); ++i) {
    const float size = blocks[i].screenSize;
    keys.push_back({~std::bit_cast<uint32_t>(size >= 0 ? size : 0.0f), i});
  }
  SortKeys();
  Permute(blocks);
}
