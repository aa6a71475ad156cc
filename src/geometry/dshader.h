#pragma once

#include "geometry/dtextureptr.h"
#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class DMaterial;
class QFile;

// One pass of a shader: a texture and the state to draw it with. Factors, functions, filters and wraps are OpenGL's
// numbers.
struct DShaderLayer
{
  enum Flag : uint32_t
  {
    MIPMAP = 0x1,
    COMPRESSION = 0x4,
    ALPHA_TEST = 0x8,
    DEPTH_WRITE = 0x10,
    NO_DEPTH_TEST = 0x80,
    ALPHA_TO_COVERAGE = 0x100,
    BLENDING = 0x10000,
    CACHEABLE = 0x80000,
  };
  uint32_t flags = 0x20051;
  uint32_t blendSrc = 1;       // GL_ONE
  uint32_t blendDst = 0;       // GL_ZERO
  uint32_t depthFunc = 0x0203; // GL_LEQUAL
  uint32_t alphaFunc = 0x0207; // GL_ALWAYS
  float alphaRef = 0;          // 0 to 1
  uint32_t texEnv = 0x1E01;    // GL_REPLACE
  std::array<uint32_t, 4> texGen{};
  int shininess = 0;
  DVector4 ambient{1.0f};
  DVector4 diffuse{1.0f};
  DVector4 specular{1.0f};
  DVector4 emission{0.0f, 0.0f, 0.0f, 1.0f};
  float reflect = 0;
  float mipmapBias = 0;
  std::array<float, 4> texScale{1, 1, 1, 1};
  uint32_t magFilter = 0x2600; // GL_NEAREST
  uint32_t minFilter = 0x2600;
  uint32_t wrapS = 0x2901; // GL_REPEAT
  uint32_t wrapT = 0x2901;
  uint32_t wrapR = 0x2901;
  uint32_t wrapQ = 0x2901;
  float minLod = 0;
  float maxLod = 1000;
  float lodBias = 0;
  DTexturePtr texture;
  std::string mapName; // as in the file
  std::string mode = "srgb";
};

// How the materials of one name are drawn.
class DShader
{
public:
  static constexpr int MAX_LAYERS = 6;
  enum Flag : uint32_t
  {
    CULL_BACK = 0x1,
    CULL_FRONT = 0x2,
    FOG = 0x8,
    SKY = 0x10,
    MOTION_BLUR = 0x100,
    TANGENTS = 0x200,
    HAS_ADJACENCY = 0x400,
    CAST_SHADOW = 0x800,
    WATER = 0x1000,
    NO_ATLAS = 0x2000,
    FROM_FILE = 0x80000000,
  };

  std::string name = "<shader>";   // the key under which it is found
  std::vector<DShaderLayer> layer; // at most MAX_LAYERS
  uint32_t shaderFlags = 0x109;
  int sortKey = 0;
  int sortOffset = 0;
  float bounceAmount = 1.0f;
  float bounceAlpha = 1.0f;
  float fresnelBias = 0.15f;
  float fresnelPower = 2.0f;
  float fresnelScale = 0.85f;
  std::string vertexFile; // program files; empty: none
  std::string fragmentFile;
  std::string geometryFile;
  std::string vertexProjFile;
  std::string fragmentProjFile;
  int vertexProgram = 0; // references into the table of programs; 0: none
  int fragmentProgram = 0;
  int geometryProgram = 0;
  int vertexProjProgram = 0;
  int fragmentProjProgram = 0;
  float scale = 1.0f;
  int materialId = 0; // of the physics

  int LayerCount() const { return static_cast<int>(layer.size()); }
  // Its fragment program is the one that shows a layer's picture, a layer a draw.
  bool IsStandard() const;
  bool NeedsTangents() const { return shaderFlags & TANGENTS; }
  bool IsSky() const { return shaderFlags & SKY; }
  // The first layer blends.
  bool IsBlending() const { return !layer.empty() && (layer.front().flags & DShaderLayer::BLENDING) != 0; }
  void Reset(); // all as new but the name
  // Compiles the program files, when programs are on. One that can't be is reported, and its reference stays 0.
  void LoadPrograms();
  // As text of a shader file; without the opening and closing lines for bodyOnly, which is bit 0 of Write's flags.
  std::string Text(bool bodyOnly = false) const;
  [[nodiscard]] bool Write(QFile& file, int flags = 0) const;
  // One layer with the material's texture and colours. Reports and leaves the shader empty without a texture.
  void CreateFromMaterial(const DMaterial& material);
};
