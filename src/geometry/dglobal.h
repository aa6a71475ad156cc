#pragma once

#include "foundation/qpath.h"
#include "geometry/dprogramcompiler.h"
#include "geometry/dtexturepool.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class DShader;
class DWorld;

// What the geometry library shares: settings, the texture pool, and what it asks of those who stand above it.
struct DGlobal
{
  uint32_t flags = 0;               // bit 0: keep what helps a program to edit the scenery
  std::vector<std::string> strings; // shared by track loads; nothing reads it yet
  // Set by the window layer while a context is current. No OpenGL call is made without it.
  bool hasContext = false;
  uint32_t context = 0;          // counts the contexts, so that a texture knows its own
  bool softwareRenderer = false; // the context draws without graphics hardware

  // Textures.
  DTexturePool texturePool;
  QPath mapPath; // directories in which pictures are looked for

  bool poolOn = false;
  bool texturesOn = true;     // off: each picture is a plain stub, and no file is opened
  bool ddsOn = false;         // the context takes block-compressed pictures
  bool compressionOn = false; // pictures may be compressed on upload
  bool srgbTextures = false;  // the renderer converts back what pictures of mode "srgb" are read as
  bool linear = true;         // off while a layer of mode "srgb" loads
  int maxTextureWidth = 16384;
  int maxTextureHeight = 16384;
  int textureDivider = 1;
  int maxAnisotropy = 1;         // samples along the steeper axis of a slanted surface
  uint32_t defaultWrap = 0x2901; // GL_REPEAT
  DTexturePtr environmentMap;
  float environmentAngle = 0; // degrees

  // Shaders and programs.
  bool shadersOn = true;
  bool programsOn = false;
  bool requirePrograms = false;
  DProgramCompiler programCompiler; // empty: no program can be compiled
  bool verbose = false;
  int skinNumber = 0;
  int shaderSortBase = 0;
  QPath programPath;                // directories in which program files are looked for
  std::string shaderPrefix;         // in front of a model's path when its materials look for shaders
  DWorld* world = nullptr;          // whose shaders materials are linked to; not owned
  DShader* defaultShader = nullptr; // what a material without a shader gets; null: none

  float lodFactor = 1.0f;
  bool alphaWarned = false;      // of colours that a file made invisible: said once a run
  bool centeredVertices = false; // buffer objects hold vertices around the middle of their box

  // Hooks; each may be empty.
  // True when the key names a resource; shader stays null when that isn't a material.
  std::function<bool(std::string_view key, DShader*& shader)> findResource;
  std::function<int(std::string_view name)> physicsMaterial;
  // The scene's texture behind a name such as "$mirror"; null: can't be had.
  std::function<DTexturePtr(std::string_view name)> sceneTexture;
  std::function<void(int done, int total, std::string_view name)> shaderProgress;
};

// The one record of the process.
DGlobal& DGlobals();
void DResetGlobals(); // as at the start; for tests
