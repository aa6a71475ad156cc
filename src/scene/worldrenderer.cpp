#include "scene/worldrenderer.h"

#include "foundation/qreport.h"
#include "geometry/dcubemap.h"
#include "geometry/dgeob.h"
#include "geometry/dshader.h"
#include "scene/dcamera.h"
#include "scene/renderpainter.h"
#include "scene/worldscene.h"
#include "scene/worldstate.h"

#include <chrono>
#include <cmath>

WorldRenderer::WorldRenderer(WorldScene& painted) : scene(painted), painter(std::make_unique<RenderPainter>())
{
  for (size_t i = 0; i < cubeMaps.size(); ++i) {
    cubeMaps[i] = std::make_unique<DCubeMap>();
    cubeMaps[i]->SetName(("cubeMap" + std::to_string(i)).c_str());
  }
}

WorldRenderer::~WorldRenderer() = default;

void WorldRenderer::SetCamera(DCamera& camera)
{
  camera.CalcModelViewMatrix();
  modelView = camera.GetModelView();
  projection = camera.GetProjection();
  frustum = DFrustum(projection * modelView);
}

std::span<const RenderBlock> WorldRenderer::GetBlocks() const
{
  return scene.GetRenderBlocks();
}

void WorldRenderer::Gather(DCamera& camera)
{
  scene.ClearRenderBlocks();
  SetCamera(camera);
  WorldState state(scene, frustum, camera.GetEye());
  state.Walk(scene.GetRoot());
}

void WorldRenderer::Sort()
{
  if (scene.detail < 1.0f) {
    const auto all = scene.GetRenderBlocks();
    sorter.SortBySize(all);
    const float share = scene.detail > 0 ? scene.detail : 0.0f;
    scene.SetRenderBlockCount(static_cast<int>(static_cast<float>(all.size()) * share));
  }
  const auto blocks = scene.GetRenderBlocks();
  sorter.Sort(blocks);
  if (!stats)
    return;
  for (const RenderBlock& block : blocks)
    ++(IsOpaqueShader(block.shader) ? stats->opaqueBlocks : stats->transparentBlocks);
}

void WorldRenderer::RenderFrame(DCamera& camera, const QRect& viewport)
{
  if (stats)
    stats->StartFrame();
  Gather(camera);
  Sort();
  if (pipe) {
    const float skyFar = std::max(camera.GetFar(), 100000.0f);
    const bool atOrigin = flags & CAMERA_AT_ORIGIN;
    DMatrix4 turn = modelView;
    turn[3] = DVector4(0.0f, 0.0f, 0.0f, 1.0f);
    painter->Begin(*pipe, {.modelView = atOrigin ? turn : modelView,
                           .projection = projection,
                           .skyProjection = camera.GetProjection(skyFar),
                           .atOrigin = atOrigin,
                           .origin = glm::dvec3(camera.GetEye()),
                           .viewport = viewport,
                           .sun = scene.sun,
                           .fog = flags & NO_FOG ? WorldFog{{}, 0} : scene.fog,
                           .seconds = std::chrono::duration<float>(std::chrono::steady_clock::now() - start).count()});
    pass = PASS_NORMAL;
  }
  RenderBlocks(scene.GetRenderBlocks());
  ResetState();
  if (!debugLines.empty())
    RenderVisualDebugObjects();
  scene.RunPostFrameNodes();
  if (stats)
    ++stats->frames;
}

bool WorldRenderer::IsPainted(const RenderBlock& block, bool isFirst) const
{
  if (!block.shader || !(block.shader->shaderFlags & DShader::WATER))
    return true;
  return !isFirst && !(pass == PASS_NORMAL && flags & SWAP_CULLING);
}

void WorldRenderer::RenderBlocks(std::span<const RenderBlock> list)
{
  if (!pipe) {
    QWARN("WorldRenderer:RenderBlocks(); no pipe yet");
    return;
  }
  painter->SetFlags(flags, maxLayers, pass != PASS_NORMAL || !(flags & USE_SHADERS));
  for (size_t i = 0; i < list.size();) {
    if (IsPainted(list[i], i == 0))
      i += PaintRun(list.subspan(i));
    else
      ++i;
  }
  painter->End();
  if (stats)
    painter->AddTo(*stats);
}

// Paints the first block, and those behind it that need nothing set up in between. How many that were.
size_t WorldRenderer::PaintRun(std::span<const RenderBlock> list)
{
  const RenderBlock& first = list.front();
  const bool alone = first.matrix || flags & (COLOR_BY_FLAGS | CAMERA_AT_ORIGIN);
  size_t count = 1;
  const bool tells = QReports().debugLevel >= 4;
  const char* shader = first.shader ? first.shader->name.c_str() : "<none>";
  if (tells)
    QDBG("block %s, shader %s", "DGeob", shader);
  while (!alone && count < list.size() && list[count].shader == first.shader && !list[count].matrix) {
    if (tells)
      QDBG("sameShader for next block (%d) [%s]\n", static_cast<int>(count), shader);
    ++count;
  }
  painter->PaintRun(list.first(count));
  return count;
}

void WorldRenderer::ResetState()
{
  if (pipe)
    painter->ResetState();
}

void WorldRenderer::AddVisualDebugLine(const DVector3& from, const DVector3& to, const DVector3& color)
{
  debugLines.push_back({from, to, color});
}

void WorldRenderer::RenderVisualDebugObjects()
{
  if (!visualDebug || !visualDebug->vertexProgram || !visualDebug->fragmentProgram)
    QWARN("Shader for visual debug objects not initialized");
  else if (pipe)
    painter->PaintLines(debugLines, *visualDebug);
  debugLines.clear();
}
