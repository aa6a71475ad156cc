#pragma once

#include "foundation/qlanguage.h"
#include "foundation/qpath.h"
#include "geometry/dtexturemanager.h"
#include "runtime/rminimap.h"
#include "runtime/rphysmatmgr.h"
#include "runtime/rresourcemanager.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

class PNewtonWorld;
class QInfo;
class RAudio;
class RScene;
class RTrackBase;
class WorldScene;

// Width and height in pixels, at least 1.
struct RResolution
{
  int width = 1;
  int height = 1;
  float gamma = 1.0f;
  float aspect = 1.0f; // of a pixel
  int vsync = 0;
  int frameLock = 0;
  bool frameLockForce = false;
  int swapGroup = 0;
  int swapBarrier = 0;
};

struct RConsoleSettings
{
  int x = 0, y = 0, wid = 0, hgt = 0;
  bool paint = true, enable = true, autohide = false;
  int maxLine = 10;
  std::string host = "127.0.0.1";
  int port = 26000, portMT = 26002, portServer = 0;
  std::string logFile;
  std::string firstLine; // the language's "console.activated"
};

struct RFilterSettings
{
  int mipmap = 1, trilinear = 1, maxAnisotropy = 1;
};

// The root object of the runtime: settings, scene, current track. One instance a process, reachable by RMGR().
class RManager
{
public:
  enum Mode
  {
    SIMULATOR = 0,
    EDITOR = 1
  };
  enum Flag : uint32_t
  {
    HOOK_INCAR_AUDIO = 0x400,
    MINIMAP = 0x8000,
    CUBEMAP_MIPMAPS = 0x100000 // environment maps get smaller levels for rough surfaces
  };
  // Debug drawing, each by the key of that name below "gfx".
  enum Show : uint32_t
  {
    SHOW_SPLINE_TRIS = 0x001,
    SHOW_CAR_BBOX = 0x002,
    WIRE_PHYSICS = 0x004,
    SHOW_CAR_POINTS = 0x008,
    SHOW_MOVABLES_BBOX = 0x010,
    SHOW_AI_LINES = 0x020,
    SHOW_TIMELINES = 0x040,
    SHOW_TRIGGERLINES = 0x080,
    SHOW_TRAFFIC_LINES = 0x100,
    SHOW_AERO = 0x200,
    SHOW_MESHSPLINE = 0x400,
    SHOW_LIVE_ENVMAP = 0x800,
  };
  // A second manager is reported and stays empty.
  explicit RManager(int managerMode);
  ~RManager();
  RManager(const RManager&) = delete;
  RManager& operator=(const RManager&) = delete;

  // Builds the services from the application's settings.
  void LoadConfig();
  // The application's settings; an empty tree without an application or settings.
  const QInfo& GetInfo() const;
  int GetMode() const { return mode; }
  RScene* GetScene() { return scene.get(); } // null before LoadConfig, as the world
  WorldScene* GetWorld() { return world.get(); }
  RAudio* GetAudio() { return audio.get(); }
  PNewtonWorld* GetPhysics() { return physics.get(); }
  // Owned. Null takes the current one away.
  void SetTrack(std::unique_ptr<RTrackBase> newTrack);
  RTrackBase* GetTrack() { return track.get(); } // null: none

  DTextureManager& GetTextures() { return textures; } // of pictures that no material has
  DTexture* GetFadeTexture() const;                   // null when its picture is missing
  RResourceManager& GetResources() { return resources; }
  // Empty until the current track's road was baked into it.
  RMiniMap& GetMiniMap() { return miniMap; }

  // 1, with a report, when there is no renderer yet.
  int GetMonitors() const;
  // Where shader files are looked for: the directory, then the program's own.
  void SetShaderPaths(const std::string& directory);
  void ResetShaderPaths();
  const QPath& GetShaderPaths() const;
  // With dev.log_last or dev.strict set and problems logged: shows them and ends the program.
  void CheckProblems();
  void SetCheckProblems(std::function<void()> hook) { checkProblems = std::move(hook); }
  // From the selected language, then from English; empty when neither has it.
  std::string FindLanguageString(std::string_view key) const;
  void SetFrameSize(int width, int height); // at least 1 each
  void SetTime(int milliseconds) { time = milliseconds; }
  int GetTime() const { return time; } // of the shared clock

  RResolution resolution;
  RConsoleSettings console;
  RFilterSettings filter;
  RPhysMatMgr physMat;
  int minimap[4] = {0, 0, 0, 0}; // x, y, width, height
  uint32_t flags = 0;
  uint32_t show = 0;
  float rolloffFactor = 0;
  int minTrackLength = 500;
  bool cacheGeodes = false;
  bool noteIniFallback = false;
  std::string machineRole;
  std::string gpuShaderPath = "data/renderer/shaders";
  std::string fullscreenShaderPath = "data/renderer/fullscreen_shaders_hdr";

private:
  void LoadResolution();
  void LoadPlainSettings();
  void LoadLanguage();
  void LoadConsole();
  void CreateWorld();
  void AddCompilerOptions();
  void LoadSwitches();
  void CheckShadowSettings();
  void CheckEnvironmentMap() const;

  bool active = false; // this is the one
  int mode;
  int time = 0;
  std::unique_ptr<QInfo> dummyInfo;
  std::unique_ptr<WorldScene> world;
  std::unique_ptr<RScene> scene;
  std::unique_ptr<RAudio> audio;
  std::unique_ptr<PNewtonWorld> physics;
  std::unique_ptr<RTrackBase> track; // goes first: its nodes hang in the world
  QLanguage language;
  std::unique_ptr<QLanguage> languageFallback; // null: the selected one is English
  std::function<void()> checkProblems;
  RResourceManager resources;
  DTextureManager textures;
  int fadeTexture = 0; // a reference of textures; 0: none
  RMiniMap miniMap;
};
// Null while there is none.
RManager* RMGR();
