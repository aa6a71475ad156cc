#pragma once

#include "scene/worldnodes.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class DGeob;
class DGeode;
class DShader;
struct RenderBlock;

// One geob. In view, it reserves a render block for each material that its bursts name: mostly one.
class WorldGeobNode : public WorldGraphicsNode
{
public:
  // The geob must outlive the node.
  WorldGeobNode(WorldScene* owner, const char* nodeName, DGeob* pieceOfGeometry);
  ~WorldGeobNode() override;
  const char* GetClassName() const override { return "geob"; }
  bool Enter(WorldState& state) override;
  const DBox* GetBox() override;
  DGeob* GetGeob() const { return geob; }
  // Looks up the shaders of the geob's materials again, after materials changed.
  void Relink();

private:
  // Consecutive bursts of one material, triangles or quads.
  struct Part
  {
    int firstIndex;
    int indexCount;
    bool quads;
    DShader* shader; // the material's, or made; may be null
    std::shared_ptr<DShader> made;
  };
  bool IsSky() const;

  DGeob* geob;
  bool linkedAsSky = false;
  std::vector<Part> parts;
  int unpaintable = 0; // bursts of neither triangles nor quads; each frame says so
};

// One model with its coarser levels.
class WorldGeodeNode : public WorldGraphicsNode
{
public:
  enum GeodeNodeFlag : uint32_t
  {
    OWNS_GEODE = 0x01 // cleared: whoever cleared it destroys the models, after the node
  };
  WorldGeodeNode(WorldScene* owner, const char* nodeName);
  ~WorldGeodeNode() override;
  const char* GetClassName() const override { return "geode"; }

  // Reads a model file. lodDistances: ten distances up to which each level is shown, or null; when the first is above
  // 0 the coarser levels "_lod1" to "_lod9" are read too. A file that can't be read is reported, and gives a visible
  // cube with makeStub, else false.
  [[nodiscard]] bool Load(std::string_view path, const float* lodDistances, bool makeStub);
  // Shows a model that was made elsewhere, without levels. The geobs' nodes are named "<path>/geob<n>".
  void SetGeode(std::unique_ptr<DGeode> model, std::string_view path);
  // The model of level 0; null before a load.
  DGeode* GetGeode() const { return geodes.empty() ? nullptr : geodes.front().get(); }
  // Level 0 to 9; null when there is none.
  DGeode* GetGeode(int level) const;
  int GeodeCount() const { return static_cast<int>(geodes.size()); }
  WorldLODNode* GetLOD() const { return lod.get(); } // null without levels
  // After the materials of the model changed.
  void Relink();

  uint32_t geodeNodeFlags = OWNS_GEODE;
  int id = 0;

private:
  void Clear();
  void AddGeobNodes(DGeode& geode, std::string_view path, int level);
  void LinkLevels(std::string_view path, const float* lodDistances);

  std::vector<std::unique_ptr<DGeode>> geodes; // by level
  std::vector<std::unique_ptr<WorldGeobNode>> geobNodes;
  std::unique_ptr<WorldLODNode> lod;
};

// A cube of side 1 around the origin with the texture "mytexture.tga", named "mystub.dof".
std::unique_ptr<DGeode> WorldMakeStub();
