#pragma once

#include "foundation/qcolor.h"
#include "geometry/dtextureptr.h"
#include "geometry/dvector.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class DGeode;
class DShader;
class DofReader;
struct RSurfaceType;
class DofWriter;

struct DMaterialLayer
{
  static constexpr int SPHERE_MAPPED = 1;
  DTexturePtr texture;
  int mode = 0;
  float blend = 1.0f;
};

// How a surface looks when no shader says it better.
class DMaterial
{
public:
  static constexpr int MAX_TEXTURES = 10;
  static constexpr int MAX_LAYERS = 10;
  static constexpr int MAX_SUBMATERIALS = 1000;
  enum Flag : uint32_t
  {
    KEEP_TEXTURE_ENABLE = 0x01,
    KEEP_MATERIAL = 0x02,
    KEEP_BLENDING = 0x04,
    FLAT_COLOR = 0x08, // color, no texture
    TRANSPARENT = 0x10,
  };

  DMaterial();
  ~DMaterial();
  DMaterial(const DMaterial&) = delete;
  DMaterial& operator=(const DMaterial&) = delete;

  std::string name;
  std::string className;
  std::string bitmapName;       // the path in the file it was imported from
  std::string firstTextureName; // when a shader was found, the name that the file gave; nothing is loaded then
  uint32_t flags = 0;
  uint32_t creationFlags = 0;
  QColor color{255, 255, 255};
  DVector4 ambient{0.2f, 0.2f, 0.2f, 0.2f};
  DVector4 diffuse{0.8f, 0.8f, 0.8f, 1.0f};
  DVector4 specular{0.0f, 0.0f, 0.0f, 1.0f};
  DVector4 emission{0.0f, 0.0f, 0.0f, 1.0f};
  float shininess = 0;
  float transparency = 0;
  int32_t blendMode = 0; // 1: source alpha, one minus source alpha, no depth writes
  float uOffset = 0;
  float vOffset = 0;
  float uTiling = 1;
  float vTiling = 1;
  float angle = 0;
  float blur = 0;
  float blurOffset = 0;
  std::vector<DTexturePtr> texture; // shared with the texture pool and other materials
  std::vector<DMaterialLayer> layer;
  std::vector<std::unique_ptr<DMaterial>> sub;
  DShader* shader = nullptr;             // not owned
  const RSurfaceType* surface = nullptr; // how it is driven on, as the track says; not owned

  int TextureCount() const { return static_cast<int>(texture.size()); }
  int LayerCount() const { return static_cast<int>(layer.size()); }
  int SubCount() const { return static_cast<int>(sub.size()); }
  DMaterial* AddSubMaterial(); // null, with a report, at MAX_SUBMATERIALS
  // False at MAX_LAYERS (reported).
  bool AddLayer(DMaterialLayer l);
  // Loads the picture as the next texture. A file that isn't there gives a stub, never nothing: the texture carries
  // the file's base name in each case. geode stands in messages; quiet leaves those out. False at MAX_TEXTURES.
  bool AddBitMap(const std::string& fileName, bool silent = false, const DGeode* geode = nullptr, bool quiet = false);
  // A small red-chequered picture "q_generated". False at MAX_TEXTURES.
  bool AddGeneratedTexture();
  DTexture* GetTexture(int i) const; // null out of range (reported)
  void SetAmbient(float r, float g, float b, float a) { ambient = {r, g, b, a}; }
  void SetDiffuse(float r, float g, float b, float a) { diffuse = {r, g, b, a}; }
  void SetSpecular(float r, float g, float b, float a) { specular = {r, g, b, a}; }
  void SetEmission(float r, float g, float b, float a) { emission = {r, g, b, a}; }
  void SetShininess(float s) { shininess = s; }
  bool IsTransparent() const { return flags & TRANSPARENT; }
  void SetTransparent() { flags |= TRANSPARENT; }
  void ClearTransparent() { flags &= ~static_cast<uint32_t>(TRANSPARENT); }
  bool IsEnvironmentMapped() const;
  // False: nothing is to be painted for this layer.
  bool PrepareToPaint(int layerIndex);
  void FinishPaint(int layerIndex);
  // A texture of its own, or else of its shader's first layer; null without one.
  const DTexture* FirstTexture() const;
  // The material as an entry of a shader file; a comment without FirstTexture. owner finds the picture that was named
  // and not loaded, and may be null.
  std::string ShaderEntry(const DGeode* owner = nullptr) const;

  // A MAT0 chunk of a model file; one that ends early gives what was read. owner finds textures and may be null.
  void ImportDOF(DofReader& in, const DGeode* owner, int depth = 0);
  void ExportDOF(DofWriter& out) const;

private:
  void ImportColors(DofReader& in);
  void ImportTextures(DofReader& in, const DGeode* owner);
  void ImportSubMaterials(DofReader& in, const DGeode* owner, int depth);
  void FindShader(const std::string& fileName);
};

// What a material name and a shader name meet on: letters and digits lower-cased, blank and _ as _, the rest dropped,
// all from the first dot on cut.
std::string DMaterialNameFilter(std::string_view name);
