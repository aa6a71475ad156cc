#include "geometry/dtexture.h"
#include "scene/rendersort.h"
#include "scene/scenery.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

constexpr uint32_t BLEND = 0x0302; // GL_SRC_ALPHA: transparent

std::vector<float> SortedDistances(DShader* shader, std::vector<float> distances)
{
  std::vector<RenderBlock> blocks(distances.size());
  for (size_t i = 0; i < blocks.size(); ++i) {
    blocks[i].shader = shader;
    blocks[i].distance = distances[i];
  }
  RenderSorter().Sort(blocks);
  for (size_t i = 0; i < blocks.size(); ++i)
    distances[i] = blocks[i].distance;
  return distances;
}

} // namespace

TEST(RenderSort, ShadersGoByTheirTermsInOrder)
{
  // Each row goes before all rows below it.
  std::vector<DShader> rows;
  rows.push_back(OneLayerShader(200, BLEND));
  rows.push_back(OneLayerShader(300, BLEND));
  rows.back().sortOffset = -1;
  rows.push_back(OneLayerShader(300, 1, DShaderLayer::NO_DEPTH_TEST | 0x20000));
  rows.push_back(OneLayerShader(300, 1, DShaderLayer::DEPTH_WRITE | 0x20000));
  rows.push_back(OneLayerShader(300, 1, DShaderLayer::DEPTH_WRITE));
  rows.push_back(OneLayerShader(300, 1, DShaderLayer::DEPTH_WRITE));
  rows.back().fragmentProgram = 1;
  rows.back().vertexProgram = 7;
  rows.push_back(OneLayerShader(300, 1, DShaderLayer::DEPTH_WRITE));
  rows.back().fragmentProgram = 2;
  rows.back().vertexProgram = 3;
  rows.push_back(OneLayerShader(300, 1, DShaderLayer::DEPTH_WRITE));
  rows.back().fragmentProgram = 2;
  rows.back().vertexProgram = 4;
  rows.push_back(OneLayerShader(300, 1, 0));
  rows.push_back(OneLayerShader(300, BLEND, DShaderLayer::NO_DEPTH_TEST));
  rows.push_back(OneLayerShader(300, BLEND));
  rows.push_back(OneLayerShader(301));
  for (const size_t textured : {3u, 4u}) {
    rows[textured].layer[0].texture = std::make_unique<DTexture>();
    rows[textured].layer[0].texture->glTexture = static_cast<uint32_t>(textured);
  }
  for (size_t a = 0; a < rows.size(); ++a)
    for (size_t b = 0; b < rows.size(); ++b) {
      SCOPED_TRACE(testing::Message() << a << " and " << b);
      const int order = CompareShaders(&rows[a], &rows[b]);
      EXPECT_EQ(a < b ? -1 : a > b ? 1 : 0, order);
    }
  for (const size_t textured : {3u, 4u})
    rows[textured].layer[0].texture->glTexture = 0; // it isn't OpenGL's to delete
}

TEST(RenderSort, OpaqueFromFarToNearTransparentFromNearToFar)
{
  DShader opaque = OneLayerShader(300);
  DShader transparent = OneLayerShader(600, BLEND);
  const std::vector<float> distances = {5, 0, 900, 0.25f, 17, 5};
  EXPECT_EQ((std::vector<float>{900, 17, 5, 5, 0.25f, 0}), SortedDistances(&opaque, distances));
  EXPECT_EQ((std::vector<float>{0, 0.25f, 5, 5, 17, 900}), SortedDistances(&transparent, distances));
  EXPECT_EQ((std::vector<float>{9, 1}), SortedDistances(nullptr, {1, 9}));
  // A broken model must not break the frame.
  const auto odd = SortedDistances(&opaque, {1, std::numeric_limits<float>::quiet_NaN(), 3});
  EXPECT_TRUE(std::isnan(odd[0]));
  EXPECT_TRUE(SortedDistances(&opaque, {}).empty());
}

TEST(RenderSort, AgreesWithAPlainSort)
{
  std::mt19937 random(1);
  std::vector<DShader> shaders;
  for (int i = 0; i < 40; ++i)
    shaders.push_back(OneLayerShader(static_cast<int>(random() % 5) * 100, random() % 2 ? 1 : BLEND,
                                     static_cast<uint32_t>(random() & 0x90)));
  std::vector<RenderBlock> blocks(2000);
  for (size_t i = 0; i < blocks.size(); ++i) {
    blocks[i].shader = random() % 50 == 0 ? nullptr : &shaders[random() % shaders.size()];
    blocks[i].distance = static_cast<float>(random() % 500);
    blocks[i].firstIndex = static_cast<int>(i); // to tell equals apart
  }
  std::vector<RenderBlock> expected = blocks;
  std::stable_sort(expected.begin(), expected.end(), [](const RenderBlock& a, const RenderBlock& b) {
    if (const int order = CompareShaders(a.shader, b.shader))
      return order < 0;
    return IsOpaqueShader(a.shader) ? a.distance > b.distance : a.distance < b.distance;
  });
  RenderSorter sorter;
  for (int again = 0; again < 2; ++again) {
    sorter.Sort(blocks);
    for (size_t i = 0; again == 0 && i < blocks.size(); ++i)
      ASSERT_EQ(expected[i].firstIndex, blocks[i].firstIndex) << i;
  }
}
