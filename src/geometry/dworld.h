#pragma once

#include "foundation/qobject.h"
#include "foundation/qtable.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class DGeob;
class DGeode;
class DShader;

// One geob of the static scenery.
struct DWorldObject
{
  DGeob* geob; // neither is owned, and both are to outlive the object
  DGeode* geode;
  uint32_t flags = 0x10000;
  int shader = -1; // index in the world's list; -1: none
  int sortKey = 0;
};

// The static scenery, flattened for rendering, and the shaders in use.
class DWorld : public QObject
{
public:
  static constexpr int MAX_OBJECTS = 10000;
  static constexpr int MAX_SHADERS = 10000;
  static constexpr int MAX_SHADOW_VOLUMES = 1000;
  static constexpr const char* SHADER_DIRECTORY = "data/renderer/shaders";

  DWorld();
  ~DWorld() override;
  const char* GetClassName() const override { return "DWorld"; }

  // An object for each geob. The first one, null without geobs or when the table is full (reported).
  DWorldObject* Add(DGeode* geode);
  void Remove(const DGeode* geode);
  void ClearObjects();
  void Clear(); // objects and shaders
  const DTable<DWorldObject, MAX_OBJECTS>& Objects() const { return objects; }
  // A shape that throws a shadow; it must outlive its place here. False when the list is full (reported).
  bool AddShadowVolume(DGeob* shadowVolume);

  // Reads the shaders of a file into the list; one that is there under the same key is reset and read again, so that
  // materials stay linked. False when the file can't be read.
  bool LoadShaders(const std::string& fileName, std::string_view prefix = {});
  DShader* FindShader(std::string_view key) const; // exact; null when absent
  int ShaderCount() const { return static_cast<int>(shaders.size()); }
  DShader* GetShader(int i) const; // null out of range
  DShader* GetDefaultShader();     // made when first asked for
  bool CreateDefaultShader();      // false when it is there already (reported)
  void SetSearchPrefix(std::string_view p) { searchPrefix = p; }

private:
  DShader* AddShader(const std::string& key); // null when the list is full (reported)

  DTable<DWorldObject, MAX_OBJECTS> objects;
  DTable<DGeob*, MAX_SHADOW_VOLUMES> shadowVolumes;
  std::vector<std::unique_ptr<DShader>> shaders;
  std::unordered_map<std::string, DShader*> byKey;
  std::unique_ptr<DShader> defaultShader;
  std::string searchPrefix;
};

// "skin0/data/tracks/lakeside/wall": under which the shader of a material is found. fileName is that of the model or
// of the shader file; a last directory "skin..." of a shader file is left out.
std::string DShaderKeyPath(std::string_view fileName);
