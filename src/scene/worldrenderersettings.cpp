#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "foundation/qsystemnode.h"
#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "geometry/dshader.h"
#include "scene/dcamera.h"
#include "scene/worldrenderer.h"

#include <epoxy/gl.h>
#include <glm/gtc/matrix_transform.hpp>

#include <cstring>

void WorldRenderer::LoadSettings(const QInfo& info, std::string_view key)
{
  const std::string base(key);
  LoadViewSettings(info, base);
  LoadPaintSettings(info, base);
  SetFlag(ALWAYS_ON, true);
  LoadProgramSettings(info, base);
  const char* vendor = DGlobals().hasContext ? reinterpret_cast<const char*>(glGetString(GL_VENDOR)) : nullptr;
  if (vendor && std::strstr(vendor, "ATI")) {
    qinfo("WorldRenderer: you have an ATI graphics card (%s). Working around some long-term bugs.", vendor);
    SetFlag(WORKAROUNDS, true);
  }
}

void WorldRenderer::LoadViewSettings(const QInfo& info, const std::string& key)
{
  width = info.GetInt("resolution.width");
  height = info.GetInt("resolution.height");
  SetCameraAtOrigin(info.GetBool(key + ".camera_at_origin", false));
  monitors = std::max(info.GetInt("resolution.monitors", 1), 1);
  const std::string method = key + ".surround.method";
  surroundMethod = info.GetInt(method);
  if (surroundMethod == 0 && monitors > 1)
    QERR("%s=0 (SINGLE) isn't implemented fully yet (and monitors is %d); fades and such may not work correctly.",
         method.c_str(), monitors);
  surroundAngleFactor = info.GetFloat(key + ".surround.angle_factor", 1.0f);
  if (info.GetBool(key + ".stereo.oculus_rift.enable", false)) {
    stereoMode = 1;
    return;
  }
  stereoMode = 0;
  if (info.GetBool(key + ".stereo.only_left_eye", false))
    stereoMode = 2;
  if (info.GetBool(key + ".stereo.only_right_eye", false))
    stereoMode = 3;
}

void WorldRenderer::LoadPaintSettings(const QInfo& info, const std::string& key)
{
  SetFlag(PAINT_WIREFRAME, info.GetBool(key + ".paint.wireframe", false));
  SetFlag(PAINT_NORMALS, info.GetBool(key + ".paint.normals", false));
  SetFlag(PAINT_TRIANGLES, info.GetBool(key + ".paint.triangles", true));
  SetFlag(ARRAY_ELEMENTS, info.GetBool(key + ".use_array_elements", false));
  if (info.GetInt(key + ".single_pass") != 0)
    SetFlag(SINGLE_PASS, true);
  SetFlag(NO_FOG, info.GetInt(key + ".fog") == 0);
  SetFlag(USE_ENVMAPS, info.GetInt(key + ".use_envmaps", 1) != 0);
  const bool wantsBuffers = info.GetInt(key + ".use_vbo") != 0 && DGlobals().hasContext;
  const bool hasBuffers = wantsBuffers && epoxy_has_gl_extension("GL_ARB_vertex_buffer_object");
  if (wantsBuffers && !hasBuffers)
    QERR("use_vbo=1 but ARB_vertex_buffer_object extension is not present; not using VBO");
  SetFlag(USE_VBO, hasBuffers);
  SetFlag(PROJECTED_LIGHTS, info.GetBool(key + ".projected_lights", true));
  if (const std::string name = key + ".stencil_shadows"; info.GetInt(name) != 0)
    QWARN("%s is 1, but stencil shadows are not supported anymore.", name.c_str());
  SetFlag(SIMPLE_STENCIL, info.GetInt(key + ".stencil_shadows.simple") != 0);
  SetFlag(BLOOM, info.GetBool(key + ".bloom.enable", false));
  if (flags & BLOOM && DGlobals().hasContext) {
    QWARN("BloomSetup; FBO can't be created; turning off bloom");
    SetFlag(BLOOM, false);
  }
  bloomWidth = info.GetInt(key + ".bloom.width", 512);
  bloomHeight = info.GetInt(key + ".bloom.height", 512);
  if (const std::string name = key + ".motion_blur.enable"; info.GetBool(name, false))
    QWARN("%s=1, but motion blur isn't painted; it is off", name.c_str());
  if (const std::string name = key + ".depth_of_field"; info.GetBool(name, false))
    QERR("%s=1, but this is not yet supported", name.c_str());
  SetFlag(WORKAROUNDS, info.GetBool(key + ".ati", false));
}

// Programs cost a renderer without hardware more than they show.
void WorldRenderer::LoadProgramSettings(const QInfo& info, const std::string& key)
{
  DGlobal& global = DGlobals();
  const bool wanted = info.GetInt(key + ".gpu_programs", global.softwareRenderer ? 0 : 1) != 0;
  global.programsOn = wanted && global.hasContext && global.programCompiler.compile;
  global.requirePrograms = info.GetInt(key + ".require_programs") != 0;
  visualDebug = std::make_unique<DShader>();
  visualDebug->name = "VisualDebugObjects";
  if (!global.programsOn)
    return;
  DGPUShaderManager& programs = DTheGPUShaders();
  if (!programs.IsInitialized())
    programs.Init();
  emptyVertexProgram = programs.MakeObject(DProgramStage::VERTEX, shaderPath + "/empty_v.cg");
  emptyFragmentProgram = programs.MakeObject(DProgramStage::FRAGMENT, shaderPath + "/empty_f.cg");
  emptyNoTexFragmentProgram = programs.MakeObject(DProgramStage::FRAGMENT, shaderPath + "/empty_notex_f.cg");
  visualDebug->vertexFile = shaderPath + "/visual_debug_objects_v.cg";
  visualDebug->fragmentFile = shaderPath + "/visual_debug_objects_f.cg";
  visualDebug->LoadPrograms();
}

bool WorldRenderer::ExposeSystem(QSystemNode& parent)
{
  if (system) {
    QERR("ExposeSystem duplicate call");
    return false;
  }
  system = parent.AddChild("renderer");
  system->Publish("eye_distance", "m", eyeDistance);
  system->Publish("focus_distance", "m", focusDistance);
  system->Publish("stereo_depth", "m", stereoDepth);
  system->Publish("surround_angle_factor", "x", surroundAngleFactor);
  system->Publish("concurrent_lights", "1..7", concurrentLights);
  system->Publish("current_eye", "0/1", currentEye);
  for (size_t i = 0; i < genericSignal.size(); ++i)
    system->Publish("generic_signal" + std::to_string(i), "", genericSignal[i]);
  return true;
}

void WorldRenderer::SetPipe(DPipe* statePipe)
{
  pipe = statePipe;
  SetFlag(SINGLE_PASS, false);
  if (!pipe || !DGlobals().hasContext)
    return;
  bool lacks = false;
  const auto check = [&lacks](bool there, const char* report) {
    if (!there)
      QERR("%s", report);
    lacks = lacks || !there;
  };
  int units = 0;
  glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
  check(epoxy_has_gl_extension("GL_ARB_texture_env_combine"), "WorldRenderer: no ARB_texture_env_combine extension");
  check(epoxy_has_gl_extension("GL_ARB_texture_env_dot3"), "WorldRenderer: no ARB_texture_env_dot3 extension");
  check(units > 1, "WorldRenderer: just 1 texture unit");
  if (lacks) {
    QERR("WorldRenderer: reverting back to single pass (no multitexture)");
    SetFlag(SINGLE_PASS, true);
  }
}

void WorldRenderer::CreateStats()
{
  if (!stats)
    stats = std::make_unique<RenderStats>();
}

void WorldRenderer::SetCameraAtOrigin(bool on)
{
  SetFlag(CAMERA_AT_ORIGIN, on);
  DGlobals().centeredVertices = on; // of what goes into buffer objects from now on
}

void WorldRenderer::GetMonitorViewport(int index, int rect[4]) const
{
  const int wid = width / monitors;
  rect[0] = wid * (index + monitors / 2);
  rect[1] = 0;
  rect[2] = wid;
  rect[3] = height;
}

DMatrix4 WorldRenderer::GetSurroundMatrix(int index, const DCamera& camera, float angleFactor) const
{
  if (index == 0)
    return DMatrix4(1.0f);
  const float degrees = static_cast<float>(index) * camera.GetFOV() * surroundAngleFactor * angleFactor;
  return glm::rotate(DMatrix4(1.0f), degrees / 57.29578f, DVector3(0, 1, 0));
}
