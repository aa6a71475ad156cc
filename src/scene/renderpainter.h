#pragma once

#include "foundation/qrect.h"
#include "geometry/dvector.h"
#include "scene/renderblock.h"
#include "scene/renderlayers.h"
#include "scene/renderprograms.h"
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
  // Where the camera stands when modelView only turns: each block is then moved by the difference, worked out in
  // double precision.
  bool atOrigin = false;
  glm::dvec3 origin{0.0};
  QRect viewport; // y from the bottom
  WorldSun sun;
  WorldFog fog;      // density 0: none
  float seconds = 0; // since the renderer was made
};

// The one place where the scene calls OpenGL: paints runs of blocks with the fixed pipeline. Without a context it
// counts, and the state cache remembers, but nothing is called.
class RenderPainter
{
public:
  void Begin(DPipe& statePipe, const RenderView& frameView);
  // As of the renderer, before blocks are painted. plain: one layer without its picture.
  void SetFlags(uint32_t rendererFlags, int layers, bool plain);
  // Blocks of one shader. More than one only when none has a matrix and none is coloured by its flags.
  void PaintRun(std::span<const RenderBlock> run);
  void End();
  // In world space, by the shader's programs alone.
  void PaintLines(std::span<const RenderLine> lines, const DShader& shader);
  void ResetState();
  // What was painted since the last call.
  void AddTo(RenderStats& stats);

private:
  void SetupLights();
  void SetSun(const DGeob* coloring);
  DMatrix4 BlockMatrix(const RenderBlock& block) const;
  void SetupShader(const DShader* shader, const DGeob& geob);
  void PaintLayers(std::span<const RenderBlock> run);
  bool SetupUnits(const DShaderLayer* layers, int count);
  float FogDensity(const DShader* shader, bool sky) const;
  void SetupLayer(const DShaderLayer& layer, bool first, bool sky);
  void SetupMaterial(const DShaderLayer& layer) const;
  void SetProjection(bool sky);
  void SetupGeob(const DGeob& geob, bool lit);
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
  bool plainPaint = false; // no pictures, one layer
  bool skyProjectionSet = false;
  DVector3 ambient{0.0f}, sun{0.0f}; // the light as it is set
  DMatrix4 model{1.0f};              // of the run
  RenderLayers units;
  RenderPrograms programs;
  RenderStats counted;
};
