#include "runtime/rmanager.h"

#include "foundation/qappcore.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "geometry/dpipe.h"
#include "physics/pnewtonworld.h"
#include "runtime/raudio.h"
#include "runtime/rscene.h"
#include "runtime/rtrackbase.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace {

RManager* theManager = nullptr;

constexpr const char* ENGLISH = "data/locale/torvik_english.txt";

} // namespace

RManager* RMGR()
{
  return theManager;
}

RManager::RManager(int managerMode) : mode(managerMode)
{
  dummyInfo = std::make_unique<QInfo>("dummyInfo", QInfo::NO_OPEN_WARNING | QInfo::NO_READ);
  if (theManager) {
    QERR("RManager created more than once");
    return;
  }
  theManager = this;
  active = true;
  LoadResolution();
  LoadPlainSettings();
}

RManager::~RManager()
{
  track.reset();
  scene.reset();
  world.reset();
  audio.reset(); // its system stays: the program closes that when all is taken down
  physics.reset();
  if (!active)
    return;
  if (fadeTexture)
    textures.Release(fadeTexture);
  DGlobals().findResource = nullptr;
  theManager = nullptr;
}

const QInfo& RManager::GetInfo() const
{
  const QAppCore* app = QAppCore::Get();
  const QInfo* info = app ? app->GetInfo() : nullptr;
  return info ? *info : *dummyInfo;
}

void RManager::SetTrack(std::unique_ptr<RTrackBase> newTrack)
{
  track.reset(); // before the new one takes its place: two don't share a scene
  track = std::move(newTrack);
}

void RManager::LoadResolution()
{
  const QInfo& info = GetInfo();
  SetFrameSize(info.GetInt("resolution.width"), info.GetInt("resolution.height"));
  resolution.gamma = info.GetFloat("resolution.gamma", 1.0f);
  resolution.aspect = info.GetFloat("resolution.aspect", 1.0f);
  if (!(resolution.aspect >= 0.00001f)) {
    QWARN("resolution.aspect (pixel aspect ratio) is too small; using 1");
    resolution.aspect = 1.0f;
  }
  resolution.vsync = info.GetInt("resolution.vsync");
  resolution.frameLock = info.GetInt("resolution.frame_lock");
  resolution.frameLockForce = info.GetInt("resolution.frame_lock_force") != 0;
  resolution.swapGroup = info.GetInt("resolution.swap_group");
  resolution.swapBarrier = info.GetInt("resolution.swap_barrier");
}

void RManager::LoadPlainSettings()
{
  const QInfo& info = GetInfo();
  filter.mipmap = info.GetInt("filter.mipmap", 1);
  filter.trilinear = info.GetInt("filter.trilinear", 1);
  filter.maxAnisotropy = info.GetInt("filter.max_anisotropy", 1);
  if (filter.maxAnisotropy < 1) {
    QWARN("filter.max_anisotropy must be >=1");
    filter.maxAnisotropy = 1;
  }
  cacheGeodes = info.GetBool("dev.cache_geodes", false);
  const char* sides[] = {"minimap.x", "minimap.y", "minimap.wid", "minimap.hgt"};
  for (size_t i = 0; i < std::size(sides); ++i)
    minimap[i] = info.GetInt(sides[i]);
  if (minimap[2] != minimap[3]) {
    QWARN("Minimap width & height should be the same. Forcing anyway.");
    minimap[3] = minimap[2];
  }
  if (info.GetBool("minimap.enable", true))
    flags |= MINIMAP;
  if (info.GetBool("audio.hook_incar_to_camera", true))
    flags |= HOOK_INCAR_AUDIO;
  rolloffFactor = info.GetFloat("audio.rolloff_factor");
  noteIniFallback = info.GetBool("dev.note_ini_fallback", false);
  const float length = info.GetFloat("dev.min_track_length", 500.0f);
  minTrackLength = length > 0 ? static_cast<int>(std::min(length, 1e9f)) : 0;
}

void RManager::SetFrameSize(int width, int height)
{
  resolution.width = std::max(width, 1);
  resolution.height = std::max(height, 1);
}

void RManager::LoadConfig()
{
  if (!active)
    return;
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  GetInfo().GetString("machine.role", machineRole);
  fadeTexture = textures.Load("data/images/fadeout.tga");
  LoadLanguage();
  LoadConsole();
  DGlobals().findResource = [this](std::string_view key, DShader*& shader) {
    const int ref = resources.Find(key);
    if (resources.GetType(ref) == RResourceManager::TYPE_MATERIAL)
      shader = resources.GetMaterial(ref);
    return ref != 0;
  };
  CreateWorld();
  LoadSwitches();
  CheckShadowSettings();
  CheckEnvironmentMap();
  audio = std::make_unique<RAudio>(GetInfo());
}

DTexture* RManager::GetFadeTexture() const
{
  return fadeTexture ? textures.GetTexture(fadeTexture) : nullptr;
}

void RManager::LoadLanguage()
{
  std::string file;
  GetInfo().GetString("ini.locale", file, "torvik_english.txt");
  const std::string path = "data/locale/" + file;
  language.Load(path);
  languageFallback.reset();
  if (path != ENGLISH)
    languageFallback = std::make_unique<QLanguage>(ENGLISH);
}

std::string RManager::FindLanguageString(std::string_view key) const
{
  return language.Has(key) || !languageFallback ? language.GetString(key) : languageFallback->GetString(key);
}

void RManager::LoadConsole()
{
  const QInfo& info = GetInfo();
  console.x = info.GetInt("console.x");
  console.y = info.GetInt("console.y");
  console.wid = info.GetInt("console.wid");
  console.hgt = info.GetInt("console.hgt");
  console.paint = info.GetInt("console.paint", 1) != 0;
  console.enable = info.GetInt("console.enable", 1) != 0;
  info.GetString("console.host", console.host, "127.0.0.1");
  console.port = info.GetInt("console.port", 26000);
  console.portMT = info.GetInt("console.port_mt", 26002);
  console.portServer = info.GetInt("console.port_server");
  info.GetString("console.logfile", console.logFile);
  console.autohide = info.GetInt("console.autohide") != 0;
  console.maxLine = info.GetInt("console.maxline", 10);
  console.firstLine = FindLanguageString("console.activated");
}

void RManager::CreateWorld()
{
  // A frame that takes a renderer without hardware 40 ms takes it 8 s with anisotropic filtering.
  DGlobals().maxAnisotropy = DGlobals().softwareRenderer ? 1 : filter.maxAnisotropy;
  world = std::make_unique<WorldScene>();
  if (!physics) // there is one a process
    physics = std::make_unique<PNewtonWorld>();
  WorldRenderer* renderer = world->GetRenderer();
  renderer->SetFullscreenShaderPath(fullscreenShaderPath);
  renderer->SetShaderPath(gpuShaderPath);
  world->LoadSettings(GetInfo(), "renderer");
  if (mode == EDITOR && renderer->GetFlags() & WorldRenderer::CAMERA_AT_ORIGIN) {
    qinfo("Renderer has camera_at_origin=1, turning off silently for Pavex");
    renderer->SetCameraAtOrigin(false);
  }
  AddCompilerOptions();
  renderer->SetPipe(&DThePipe());
  scene = std::make_unique<RScene>(*world);
}

// For the programs that are compiled from now on.
void RManager::AddCompilerOptions()
{
  DGPUShaderManager& programs = DTheGPUShaders();
  const QInfo& info = GetInfo();
  const WorldRenderer& renderer = *world->GetRenderer();
  const bool workarounds = renderer.GetFlags() & WorldRenderer::WORKAROUNDS;
  programs.ClearCompilerOptions();
  const auto add = [&programs](bool wanted, const char* option) {
    if (wanted)
      programs.AddCompilerOption(option);
  };
  add(mode == EDITOR, "-DIS_PAVEX");
  add(world->shadowMapping != 0, "-DCSM");
  add(workarounds, "-DATI");
  add(info.GetBool("renderer.shadowmapping.blur", false), "-DCSM_BLUR");
  add(info.GetBool("dev.fast_cg_shaders", false), "-DFAST");
  add(renderer.GetSurroundMethod() == 1, "-DSURROUND_METHOD_SPLIT");
  add(info.GetBool("damage.texture_damage.vertex_damage", false), "-DTEXDMG_CHANGE_VERTS");
  const bool mipmaps = info.GetBool("envmap.generate_mipmaps", true);
  if (mipmaps && workarounds)
    QERR("envmap.generate_mipmaps is 1 but ATI drivers don't support texCUBElod for mipmapped envmaps in Cg");
  else if (mipmaps)
    flags |= CUBEMAP_MIPMAPS;
  add(mipmaps && !workarounds, "-DUSE_CUBEMAP_MIPMAPS");
  for (const char* option : {"-O3", "-nofastmath", "-bestprecision"})
    add(true, option);
}

void RManager::LoadSwitches()
{
  static constexpr struct
  {
    const char* key;
    uint32_t bit;
  } switches[] = {
      {"gfx.show_spline_tris", SHOW_SPLINE_TRIS},
      {"gfx.show_car_bbox", SHOW_CAR_BBOX},
      {"gfx.wire_physics", WIRE_PHYSICS},
      {"gfx.show_car_points", SHOW_CAR_POINTS},
      {"gfx.show_movables_bbox", SHOW_MOVABLES_BBOX},
      {"gfx.show_ai_lines", SHOW_AI_LINES},
      {"gfx.show_timelines", SHOW_TIMELINES},
      {"gfx.show_triggerlines", SHOW_TRIGGERLINES},
      {"gfx.show_traffic_lines", SHOW_TRAFFIC_LINES},
      {"gfx.show_aero", SHOW_AERO},
      {"gfx.show_meshspline", SHOW_MESHSPLINE},
      {"gfx.show_live_envmap", SHOW_LIVE_ENVMAP},
  };
  show = 0;
  for (const auto& s : switches)
    if (GetInfo().GetBool(s.key, false))
      show |= s.bit;
}

void RManager::CheckShadowSettings()
{
  const QInfo& info = GetInfo();
  if (!info.GetBool("shadow.project_shadows", false))
    return;
  if (info.GetInt("renderer.stencil_shadows") != 0) {
    QWARN("torvik.ini:shadow.project_shadows=1 is incompatible with rendered.stencil_shadows=1");
    QWARN("Stencil shadow take preference, project_shadows is turned OFF");
  }
  if (info.GetInt("renderer.shadowmapping.enable") != 0) {
    QWARN("torvik.ini:renderer.shadowmapping.enable is not 0 but shadow.project_shadows=1");
    QWARN("That would give double shadows; ignoring shadow.project_shadows (set it to 0)");
  }
}

void RManager::CheckEnvironmentMap() const
{
  const int bits = GetInfo().GetInt("envmap.live_track.bits", 8);
  if (bits != 8 && bits != 16)
    QWARN("envmap.live_track.bits=%d; unsupported (only 8 or 16 allowed)", bits);
}

int RManager::GetMonitors() const
{
  if (world)
    return world->GetRenderer()->GetMonitors();
  QWARN("No scene graph or renderer yet");
  return 1;
}

void RManager::SetShaderPaths(const std::string& directory)
{
  ResetShaderPaths();
  DGlobals().programPath.Add(directory);
  DGlobals().programPath.Add(gpuShaderPath);
}

void RManager::ResetShaderPaths()
{
  DGlobals().programPath.Clear();
}

const QPath& RManager::GetShaderPaths() const
{
  return DGlobals().programPath;
}

void RManager::CheckProblems()
{
  if (checkProblems)
    checkProblems();
}
