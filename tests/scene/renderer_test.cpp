#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "geometry/dtexture.h"
#include "scene/scenery.h"
#include "scene/worldrenderer.h"
#include "support/reportcapture.h"

#include <glm/gtc/matrix_transform.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

constexpr uint32_t BLEND = 0x0302; // GL_SRC_ALPHA

} // namespace

TEST(Gather, TakesWhatIsVisibleAndInView)
{
  SmallScene small;
  small.AddBox("ahead", {0, 0, -20});
  small.AddBox("behind", {0, 0, 20});
  small.AddBox("left", {-100, 0, -20});
  small.AddBox("edge", {-12.9f, 0, -20}); // its middle is out of view
  small.AddBox("beyond", {0, 0, -20000});
  small.AddBox("hidden", {1, 0, -20}).SetVisible(false);
  WorldGroupNode group(&small.scene, "group");
  small.scene.AddNode(&group);
  small.AddBox("grouped", {2, 0, -20}, nullptr, &group);
  small.Frame();
  EXPECT_THAT(small.Painted(), UnorderedElementsAre("ahead", "edge", "grouped"));
  group.SetVisible(false);
  small.camera.Go(DVector3(0.0f), DVector3(0.0f), 180, 0, 0);
  small.Frame();
  EXPECT_THAT(small.Painted(), ElementsAre("behind"));
}

TEST(Gather, FollowsMovedNodes)
{
  SmallScene small;
  WorldTransformationNode outer(&small.scene, "outer"), inner(&small.scene, "inner");
  small.scene.AddNode(&outer);
  small.scene.AddNode(&inner, &outer);
  small.AddBox("moved", {0, 0, 0}, nullptr, &inner);
  small.Frame();
  ASSERT_EQ(1u, small.scene.GetRenderBlocks().size()); // the camera stands in it
  EXPECT_EQ(nullptr, small.scene.GetRenderBlocks()[0].matrix);
  outer.SetMatrix(glm::translate(DMatrix4(1.0f), DVector3(0, 0, 30)));
  small.Frame();
  EXPECT_THAT(small.Painted(), ElementsAre());
  inner.SetMatrix(glm::translate(DMatrix4(1.0f), DVector3(0, 0, -50)));
  small.Frame();
  ASSERT_THAT(small.Painted(), ElementsAre("moved"));
  const RenderBlock& block = small.scene.GetRenderBlocks()[0];
  EXPECT_EQ(-20.0f, (*block.matrix)[3].z);
  EXPECT_NEAR(20.0f, block.distance, 1e-4);
}

TEST(Frame, PaintsSkyFirstAndTransparentLast)
{
  DShader sky = OneLayerShader(200);
  DShader road = OneLayerShader(300);
  DShader fence = OneLayerShader(600, BLEND);
  SmallScene small;
  small.AddBox("far fence", {0, 0, -40}, &fence);
  small.AddBox("near road", {0, 0, -10}, &road);
  small.AddBox("sky", {0, 0, -15}, &sky);
  small.AddBox("near fence", {0, 0, -12}, &fence);
  small.AddBox("far road", {0, 0, -90}, &road);
  // A node of the track that is marked as sky, its material without a shader.
  small.AddBox("marked", {0, 0, -5}).GetGeode()->GetGeob(0)->userFlags = 1;
  small.Frame();
  EXPECT_THAT(small.Painted(), ElementsAre("sky", "marked", "far road", "near road", "near fence", "far fence"));
  const RenderStats& stats = *small.scene.GetRenderer()->GetStats();
  EXPECT_EQ(4, stats.opaqueBlocks);
  EXPECT_EQ(2, stats.transparentBlocks);
  EXPECT_EQ(6 * 12, stats.Triangles());
  EXPECT_EQ(1, stats.frames);
}

TEST(Frame, PaintsNeighboursOfOneShaderInOneGo)
{
  DShader road = OneLayerShader(300);
  SmallScene small;
  WorldTransformationNode moved(&small.scene, "moved");
  moved.SetMatrix(glm::translate(DMatrix4(1.0f), DVector3(0, 0, -100)));
  small.scene.AddNode(&moved);
  for (int i = 0; i < 5; ++i)
    small.AddBox("box", {0, 0, -10.0f - static_cast<float>(i)}, &road);
  WorldRenderer& renderer = *small.scene.GetRenderer();
  const auto setUps = [&] {
    small.Frame();
    return renderer.GetStats()->shaderChanges;
  };
  EXPECT_EQ(1, setUps());
  small.AddBox("by itself", {0, 0, 0}, &road, &moved);
  EXPECT_EQ(2, setUps());
  renderer.SetFlags(renderer.GetFlags() | WorldRenderer::COLOR_BY_FLAGS);
  EXPECT_EQ(6, setUps());
  EXPECT_EQ(6, renderer.GetStats()->drawCalls);
}

TEST(Frame, PaintsWhatTheFlagsAskFor)
{
  const struct
  {
    uint32_t flags;
    int draws;
  } cases[] = {{WorldRenderer::PAINT_TRIANGLES, 1},
               {WorldRenderer::PAINT_TRIANGLES | WorldRenderer::PAINT_WIREFRAME, 2},
               {WorldRenderer::PAINT_WIREFRAME, 1},
               {WorldRenderer::PAINT_NORMALS, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.flags);
    SmallScene small;
    small.AddBox("box", {0, 0, -10});
    small.scene.GetRenderer()->SetFlags(c.flags);
    small.Frame();
    EXPECT_EQ(c.draws, small.scene.GetRenderer()->GetStats()->drawCalls);
  }
}

TEST(Frame, SharesTheShaderOfMaterialsThatLookTheSame)
{
  SmallScene small;
  WorldGeodeNode& a = small.AddBox("a", {0, 0, -10});
  WorldGeodeNode& b = small.AddBox("b", {0, 0, -12});
  const auto shaders = [&] {
    small.Frame();
    return std::pair(small.scene.GetRenderBlocks()[0].shader, small.scene.GetRenderBlocks()[1].shader);
  };
  const auto [apart, other] = shaders(); // each loaded a stub picture of its own
  EXPECT_NE(apart, other);
  b.GetGeode()->GetMaterial(0)->texture = a.GetGeode()->GetMaterial(0)->texture;
  b.Relink();
  const auto [first, second] = shaders();
  EXPECT_EQ(first, second);
}

TEST(Frame, KeepsTheMatricesForPicking)
{
  SmallScene small;
  small.scene.SetFrameport(0, &small.director, {0, 0, 1000, 500});
  small.camera.Go({10, 20, 30}, DVector3(0.0f), 45, -10, 0);
  small.camera.SetFOV(60);
  small.Frame();
  const WorldRenderer& renderer = *small.scene.GetRenderer();
  EXPECT_EQ(small.camera.GetModelView(), renderer.GetModelViewMatrix());
  EXPECT_NEAR(2.0f, renderer.GetProjectionMatrix()[1][1] / renderer.GetProjectionMatrix()[0][0], 1e-5);
}

TEST(Blocks, TheLastOneIsHandedOutAgain)
{
  ReportCapture reports;
  WorldScene scene;
  const RenderBlock* last = nullptr;
  for (int i = 0; i < WorldScene::MAX_BLOCKS; ++i)
    last = scene.ReserveRenderBlock();
  EXPECT_EQ(0, reports.Problems());
  EXPECT_EQ(last, scene.ReserveRenderBlock());
  EXPECT_TRUE(reports.Contains("WorldScene:ReserveRenderBlock(); out of render blocks (max=5000)"));
  EXPECT_EQ(static_cast<size_t>(WorldScene::MAX_BLOCKS), scene.GetRenderBlocks().size());
}

TEST(Frame, ReportsWhatItLacks)
{
  ReportCapture reports;
  WorldScene scene;
  scene.Paint();
  scene.GetRenderer()->RenderBlocks({});
  DDirector noCamera;
  scene.SetFrameport(0, nullptr, {});
  scene.SetFrameport(1, &noCamera, {});
  scene.Paint();
  EXPECT_EQ(1, reports.Count("WorldRenderer:RenderBlocks(); no pipe yet"));
  for (const std::string function : {"UpdateCameraManager", "RenderCameraManager"})
    for (const std::string& text : {"WorldScene::" + function + "(); no frameports defined",
                                    "WorldScene:" + function + ": frameport 0 has no director",
                                    "WorldScene:" + function + ": frameport 1's director has no cam selected"})
      EXPECT_EQ(1, reports.Count(text)) << text;
}

TEST(RendererSettings, BecomeFlags)
{
  const uint32_t asNew = 690;
  WorldScene scene;
  WorldRenderer& renderer = *scene.GetRenderer();
  EXPECT_EQ(asNew, renderer.GetFlags());
  const struct
  {
    const char* text;
    uint32_t flags;
  } cases[] = {
      {"", 0xE4B2}, // no buffers without a context, no fog, what is always on, projected lights
      {"renderer\n{\npaint\n{\nwireframe=1\nnormals=1\ntriangles=0\n}\nfog=1\nuse_envmaps=0\n}\n", 0xE03C},
      {"renderer\n{\nsingle_pass=1\nprojected_lights=0\ncamera_at_origin=1\nati=1\nbloom\n{\nenable=1\n}\n}\n",
       0x11B4B3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    QInfo info("settings", QInfo::NO_READ);
    info.ReadFromText(c.text);
    renderer.SetFlags(asNew);
    scene.LoadSettings(info, "renderer");
    EXPECT_EQ(c.flags, renderer.GetFlags());
  }
  ReportCapture reports;
  QInfo info("settings", QInfo::NO_READ);
  info.ReadFromText("resolution\n{\nmonitors=3\n}\nrenderer\n{\nstencil_shadows=1\ndepth_of_field=1\n}\n");
  scene.LoadSettings(info, "renderer");
  EXPECT_EQ(3, renderer.GetMonitors());
  for (const char* text : {"renderer.surround.method=0 (SINGLE) isn't implemented fully yet (and monitors is 3)",
                           "renderer.stencil_shadows is 1, but stencil shadows are not supported anymore.",
                           "renderer.depth_of_field=1, but this is not yet supported"})
    EXPECT_EQ(1, reports.Count(text)) << text;
}
