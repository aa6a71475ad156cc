#pragma once

#include "foundation/qrect.h"
#include "geometry/dtextureptr.h"
#include "geometry/dvector.h"
#include "scene/dfrustum.h"
#include "scene/renderblock.h"
#include "scene/rendersort.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class DCamera;
class DCubeMap;
class DGeob;
class DPipe;
class DShader;
class QInfo;
class QSystemNode;
class RenderPainter;
class WorldScene;

// Paints one frame of a scene: gathers what is in view into a flat list, sorts it and paints it in one loop.
// Without an OpenGL context all but the drawing happens.
class WorldRenderer
{
public:
  enum Flag : uint32_t
  {
    SINGLE_PASS = 0x1, // each layer by itself
    PAINT_TRIANGLES = 0x2,
    PAINT_NORMALS = 0x4,
    PAINT_WIREFRAME = 0x8,
    MOTION_PASS = 0x10,
    USE_SHADERS = 0x20, // and all layers
    ARRAY_ELEMENTS = 0x40,
    USE_ENVMAPS = 0x80,
    SIMPLE_STENCIL = 0x100,
    USE_VBO = 0x200,
    NO_FOG = 0x400,
    WORKAROUNDS = 0x1000,
    ALWAYS_ON = 0x2000 | 0x8000,
    PROJECTED_LIGHTS = 0x4000,
    BLOOM = 0x10000,
    COLOR_BY_FLAGS = 0x40000, // light by the geob's flags: collide red, surface green, both yellow, none grey
    SWAP_CULLING = 0x80000,
    CAMERA_AT_ORIGIN = 0x100000,
  };
  enum Pass
  {
    PASS_NORMAL = 0,
    PASS_LIGHT = 3,
    PASS_MOTION = 4
  };

  explicit WorldRenderer(WorldScene& painted);
  ~WorldRenderer();
  WorldRenderer(const WorldRenderer&) = delete;
  WorldRenderer& operator=(const WorldRenderer&) = delete;

  // Reads "resolution.*" and the keys below the given one. Reports what isn't supported.
  void LoadSettings(const QInfo& info, std::string_view key);
  // The state cache that painting goes through. With a context, what it lacks is reported and worked around.
  void SetPipe(DPipe* statePipe);
  // Makes the node "renderer" below the parent, which must outlive the renderer's use. False the second time
  // (reported).
  bool ExposeSystem(QSystemNode& parent);
  void CreateStats();
  // Null before CreateStats.
  RenderStats* GetStats() { return stats.get(); }
  uint32_t GetFlags() const { return flags; }
  void SetFlags(uint32_t newFlags) { flags = newFlags; }
  void SetSurroundMethod(int method) { surroundMethod = method; }
  int GetSurroundMethod() const { return surroundMethod; }
  void SetCameraAtOrigin(bool on);
  int GetMonitors() const { return monitors; }
  // x, y, width and height of one of several monitors that share the window; index 0 is the middle one.
  void GetMonitorViewport(int index, int rect[4]) const;
  DMatrix4 GetSurroundMatrix(int index, const DCamera& camera, float angleFactor) const;
  void SetShaderPath(std::string_view path) { shaderPath = path; }
  void SetFullscreenShaderPath(std::string_view path) { fullscreenShaderPath = path; }
  const std::string& GetShaderPath() const { return shaderPath; }
  // The table of colours that the finished picture is graded by; null: none.
  void SetColorGrade(DTexturePtr table) { colorGrade = std::move(table); }
  const DTexturePtr& GetColorGrade() const { return colorGrade; }

  // Takes the camera's matrices for the frame.
  void SetCamera(DCamera& camera);
  // The whole frame of one camera into a rectangle of the window, y from the bottom.
  void RenderFrame(DCamera& camera, const QRect& viewport);
  // Reports and does nothing without a pipe.
  void RenderBlocks(std::span<const RenderBlock> list);
  // A plain state for the code that follows.
  void ResetState();
  // A line that is painted over the next frame.
  void AddVisualDebugLine(const DVector3& from, const DVector3& to, const DVector3& color);
  // Paints what was added since the last frame. That needs programs; without them this is reported.
  void RenderVisualDebugObjects();

  // Of the last frame, for picking; computed with or without a context.
  const DMatrix4& GetModelViewMatrix() const { return modelView; }
  const DMatrix4& GetProjectionMatrix() const { return projection; }
  // The blocks of the last frame in painting order.
  std::span<const RenderBlock> GetBlocks() const;

  int width = 0, height = 0;
  int maxLayers = 100;                                                   // of a shader that are painted
  float eyeDistance = 0.06f, focusDistance = 150.0f, stereoDepth = 1.0f; // metres
  int stereoMode = 0;
  float surroundAngleFactor = 1.0f;
  int currentEye = 0;
  int concurrentLights = 7;
  std::array<float, 10> genericSignal{}; // for trying things out in programs and tools
  int bloomWidth = 512, bloomHeight = 512;
  // Surroundings for shaders that mirror them; nothing paints into them yet.
  std::array<std::unique_ptr<DCubeMap>, 10> cubeMaps;

private:
  void SetFlag(uint32_t mask, bool on) { flags = on ? flags | mask : flags & ~mask; }
  void LoadViewSettings(const QInfo& info, const std::string& key);
  void LoadPaintSettings(const QInfo& info, const std::string& key);
  void LoadProgramSettings(const QInfo& info, const std::string& key);
  void Gather(DCamera& camera);
  void Sort();
  bool IsPainted(const RenderBlock& block, bool isFirst) const;
  size_t PaintRun(std::span<const RenderBlock> list);

  WorldScene& scene;
  DPipe* pipe = nullptr;
  std::unique_ptr<RenderPainter> painter;
  std::unique_ptr<RenderStats> stats;
  RenderSorter sorter;
  DFrustum frustum;
  DMatrix4 modelView{1.0f};
  DMatrix4 projection{1.0f};
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  uint32_t flags = 690;
  int pass = PASS_NORMAL;
  int surroundMethod = 0;
  int monitors = 1;
  std::string fullscreenShaderPath = "data/renderer/fullscreen_shaders";
  std::string shaderPath;
  int emptyVertexProgram = 0, emptyFragmentProgram = 0, emptyNoTexFragmentProgram = 0; // 0: none
  std::unique_ptr<DShader> visualDebug;
  DTexturePtr colorGrade;
  std::vector<RenderLine> debugLines;
  QSystemNode* system = nullptr;
};
