#pragma once

#include "geometry/dgpulink.h"
#include "geometry/dvector.h"

#include <cstdint>
#include <utility>

class DGeob;
class DPipe;
class DShader;
struct DShaderLayer;
struct RenderView;

// Runs the programs of shaders and fills their parameters. What no program takes is left to the fixed pipeline.
class RenderPrograms
{
public:
  void Begin(DPipe& statePipe, const RenderView& frameView);
  // How many layers, from the first on, the shader's programs take in one draw; the programs are in use then. 0: these
  // are the fixed pipeline's, and it is in use.
  int Use(const DShader* shader, const DShaderLayer* layers, int count);
  void Release(); // the fixed pipeline is in use

  // Of the programs in use; nothing without.
  void SetShader(const DShader& shader, const DShaderLayer& layer, float fogDensity);
  void SetMatrices(const DMatrix4& model, const DMatrix4& projection);
  // Off: the colours of the vertices have their light in them.
  void SetLight(bool on, const DVector3& ambient, const DVector3& sun);
  void SetTangents(const DGeob& geob);

private:
  void Bind(std::pair<int, int> wanted);
  void SetFrame();

  DPipe* pipe = nullptr;
  const RenderView* view = nullptr;
  uint64_t frame = 0;
  DGPULink* link = nullptr;   // in use; null: the fixed pipeline is
  std::pair<int, int> used{}; // vertex and fragment program of the link
  int layersTaken = 1;
  bool tangents = false; // their array is on
};
