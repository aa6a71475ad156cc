#pragma once

#include "foundation/qrect.h"
#include "foundation/qtable.h"
#include "geometry/dvector.h"
#include "scene/dcamera.h"
#include "scene/dfps.h"
#include "scene/renderblock.h"
#include "scene/worldlight.h"
#include "scene/worldnameindex.h"
#include "scene/worldnodes.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class DDirector;
class DMaterial;
class DShader;
class DWorld;
class QInfo;
class QSystemNode;
class WorldRenderer;
class WorldShaders;

// What the renderer draws: a tree of nodes, the static scenery, and the views on them.
// It visits its nodes and cameras; they are to go before it does.
class WorldScene
{
public:
  static constexpr int MAX_BLOCKS = 5000;
  static constexpr int MAX_LIGHTS = 500;
  static constexpr int MAX_VARS = 10;
  static constexpr int MAX_POST_FRAME = 1000;
  enum Flag : uint32_t
  {
    AUTO_EXPOSURE = 0x02
  };
  enum VarType
  {
    VAR_FLOAT = 0,
    VAR_INT = 1
  };

  explicit WorldScene(const QClock& clock = QSystemClock());
  ~WorldScene();
  WorldScene(const WorldScene&) = delete;
  WorldScene& operator=(const WorldScene&) = delete;

  // To the head of the parent's children, or of the tree's without a parent. Hangs a node over when it is in a tree.
  void AddNode(WorldNode* node, WorldNode* parent = nullptr);
  // Exact; of several the one that was added last. Null when absent.
  WorldNode* FindNode(std::string_view name) const;
  int CountNodes() const; // the root not counted
  // Expects an empty tree; what is left is reported, printed and taken out, leaves first.
  void DestroyTree();
  // On the node and all below it.
  static void ClearFlagsTree(WorldNode* node, uint32_t mask);
  void DbgPrint(const char* text) const;
  WorldNode* GetRoot() { return &root; }

  // The index, or -1 when there is no room (reported).
  int AddVar(std::string_view name, int type);
  int FindVar(std::string_view name) const; // -1 when absent
  // A bad index or type is reported; then they give 0 and change nothing.
  int GetVarInt(int i) const;
  float GetVarFloat(int i) const;
  void SetVarInt(int i, int value);
  void SetVarFloat(int i, float value);
  float GetVarValue(int i) const; // whatever its type; 0 out of range

  void LoadSettings(const QInfo& info, std::string_view key);
  // Makes the node "scenegraph" below the parent, which must outlive the scene. False the second time (reported).
  bool ExposeSystem(QSystemNode& parent);
  QSystemNode* GetSystem() const { return system; } // null before ExposeSystem
  void SetSize(int width, int height);
  int GetWidth() const { return viewWidth; }
  int GetHeight() const { return viewHeight; }

  // A part of the window that shows what a director chose. y counts from the bottom.
  void SetFrameport(int i, DDirector* director, const QRect& rect);
  DDirector* GetDirector(int i) const; // null when there is none
  int GetNoofFrameports() const { return static_cast<int>(frameports.size()); }
  void ClearFrameports() { frameports.clear(); }

  // One frame of each frameport. Buffers are swapped by whoever owns the window, once all is on them.
  void Paint();
  void Update(float seconds); // steps the directors and updates all nodes
  void UpdateCameraManager();
  void RenderCameraManager();

  // A cleared entry of the frame's list. When there is none left this is reported, and the last one is handed back.
  RenderBlock* ReserveRenderBlock();
  // The lights that a frame's walk met. The same holds for them.
  RenderLight* ReserveRenderLight();
  std::span<const RenderLight> GetRenderLights() const { return lights; }
  void ClearRenderBlocks(); // and the lights
  std::span<RenderBlock> GetRenderBlocks() { return {blocks.data(), static_cast<size_t>(blockCount)}; }
  void SetRenderBlockCount(int count) { blockCount = count; } // less than now
  struct PostFrameEntry
  {
    WorldNode* node;
    bool leave; // on the way back from its children
  };
  std::span<const PostFrameEntry> FindPostFrameNodes();
  void RunPostFrameNodes();

  // The shader that stands in for a material without one; shared by materials that look the same.
  std::shared_ptr<DShader> ShaderOfMaterial(const DMaterial* material, bool sky);

  DWorld* GetWorld() { return world.get(); }
  WorldRenderer* GetRenderer() { return renderer.get(); }
  DFPS* GetFPS() { return &fps; }

  uint32_t flags = 0;
  WorldSun sun;
  WorldFog fog;
  DVector3 background{0.56f, 0.69f, 0.84f};
  float detail = 1.0f; // below 1: only this share of the blocks is painted
  float edgeBlend = 0;
  int shadowMapping = 0;
  float nearPlane = 0.2f, farPlane = 10000.0f;

private:
  struct Var
  {
    std::string name;
    int type = VAR_FLOAT;
    float f = 0;
    int i = 0;
  };
  struct Frameport
  {
    DDirector* director = nullptr;
    QRect rect;
  };
  friend class WorldNode;
  void Adopt(WorldNode& node);
  bool GatherPostFrame(WorldNode& node);
  const Var* FindVarOf(int i, const char* function) const;
  DCamera* CameraOf(size_t frameport, const char* function) const;

  WorldNameIndex names; // goes after the root
  WorldGroupNode root;
  std::unique_ptr<DWorld> world;
  std::unique_ptr<WorldShaders> shaders;
  std::unique_ptr<WorldRenderer> renderer;
  DFPS fps;
  int viewWidth = 800;
  int viewHeight = 600;
  std::vector<Var> vars;
  std::vector<Frameport> frameports;
  std::vector<RenderBlock> blocks; // MAX_BLOCKS, the first blockCount in use
  int blockCount = 0;
  std::vector<RenderLight> lights; // at most MAX_LIGHTS
  std::vector<PostFrameEntry> postFrame;
  QSystemNode* system = nullptr;
};
