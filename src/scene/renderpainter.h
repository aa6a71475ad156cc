#pragma once

#include "foundation/qrect.h"
#include "geometry/dvector.h"
#include "scene/renderblock.h"
#include "scene/worldlight.h"

#include <cstdint>
#include <span>

class DGeob;
class DPipe;
class DShader;
struct DShaderLayer;

// What one frame is painted with.
struct RenderView
{
  DMatrix4 modelView{1.0f};
  DMatrix4 projection{1.0f};
  DMatrix4 skyProjection{1.0f}; // the same with a farther far plane
  QRect viewport;               // y from the bottom
  WorldSun sun;
  WorldFog fog; // density 0: none
};

// The one place where the scene calls OpenGL: paints runs of blocks with the fixed pipeline. Without a context it
// counts, and the state cache remembers, but nothing is called.
class RenderPainter
{
public:
  void Begin(DPipe& statePipe, const RenderView& frameView);
  // As of the renderer, before blocks are painted.
  void SetFlags(uint32_t rendererFlags, int layers);
  // Blocks of one shader. More than one only when none has a matrix and none is coloured by its flags.
  void PaintRun(std::span<const RenderBlock> run);
  void End();
  void ResetState();
  // What was painted since the last call.
  void AddTo(RenderStats& stats);

private:
  void SetupLights();
  void LightByFlags(const DGeob& geob) const;
  void SetupShader(const DShader* shader, const DGeob& geob);
  void SetupLayer(const DShaderLayer& layer, bool first, bool sky);
  void SetupMaterial(const DShaderLayer& layer) const;
  void SetupTextureMatrix(const DShaderLayer& layer);
  void SetProjection(bool sky);
  void SetupGeob(DGeob& geob, bool lit);
  void Draw(const RenderBlock& block);
  void DrawIndices(const RenderBlock& block) const;
  void PaintWireframe(std::span<const RenderBlock> run);
  void PaintNormals(const DGeob& geob);
  int LayersOf(const DShader* shader) const;

  RenderView view;
  DPipe* pipe = nullptr;
  bool gl = false; // a context is there
  uint32_t flags = 0;
  int maxLayers = 100;
  bool skyProjectionSet = false;
  bool textureScaled = false;
  RenderStats counted;
};
