#include "scene/worldscene.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "foundation/qsystemnode.h"
#include "geometry/dglobal.h"
#include "geometry/dworld.h"
#include "scene/ddirector.h"
#include "scene/worldrenderer.h"
#include "scene/worldshaders.h"

WorldScene::WorldScene(const QClock& clock) :
    root(this, "root"), world(std::make_unique<DWorld>()), shaders(std::make_unique<WorldShaders>()),
    renderer(std::make_unique<WorldRenderer>(*this)), fps(DFPS::AVERAGE_INTERVALS, clock)
{
  blocks.resize(MAX_BLOCKS);
  lights.reserve(MAX_LIGHTS); // so that a frame allocates nothing
  if (!DGlobals().world)
    DGlobals().world = world.get();
}

WorldScene::~WorldScene()
{
  DestroyTree();
  names.Clear();
  if (DGlobals().world == world.get())
    DGlobals().world = nullptr;
}

void WorldScene::AddNode(WorldNode* node, WorldNode* parent)
{
  WorldNode* above = parent ? parent : &root;
  if ((node->flags | above->flags) & WorldNode::DELETED)
    QCrash("Deleted WorldNode used!");
  for (const WorldNode* up = above; up; up = up->parent)
    if (up == node)
      return; // below itself
  node->Unlink();
  if (node->scene != this)
    Adopt(*node);
  node->parent = above;
  node->next = above->child;
  if (node->next)
    node->next->prev = node;
  above->child = node;
  names.Add(*node);
}

// The node and what hangs below it change over from another scene, or from none.
void WorldScene::Adopt(WorldNode& node)
{
  if (node.parent && node.scene)
    node.scene->names.Remove(node);
  node.scene = this;
  if (node.parent)
    names.Add(node);
  for (WorldNode* below = node.child; below; below = below->next)
    if (below->scene != this)
      Adopt(*below);
}

namespace {

int CountBelow(const WorldNode* first)
{
  int count = 0;
  for (const WorldNode* node = first; node; node = node->GetNext())
    count += 1 + CountBelow(node->GetChild());
  return count;
}

void PrintBelow(const WorldNode* first, const std::string& indent)
{
  for (const WorldNode* node = first; node; node = node->GetNext()) {
    QDBG("%s- %s (%s) (visible %d)\n", indent.c_str(), node->GetName().c_str(), node->GetClassName(),
         node->IsVisible() ? 1 : 0);
    PrintBelow(node->GetChild(), indent + "| ");
  }
}

void UpdateBelow(WorldNode* first, float seconds)
{
  for (WorldNode* node = first; node; node = node->GetNext()) {
    node->Update(seconds);
    UpdateBelow(node->GetChild(), seconds);
  }
}

} // namespace

WorldNode* WorldScene::FindNode(std::string_view name) const
{
  return names.Find(name, root);
}

int WorldScene::CountNodes() const
{
  return CountBelow(root.GetChild());
}

void WorldScene::DestroyTree()
{
  if (!root.GetChild())
    return;
  QWARN("WorldScene:DestroyTree(); nodes still present in the tree!");
  DbgPrint("DestroyTree");
  while (WorldNode* node = root.GetChild()) {
    while (node->GetChild())
      node = node->GetChild();
    node->Unlink();
    node->scene = nullptr;
    node->sceneGone = true;
  }
}

void WorldScene::ClearFlagsTree(WorldNode* node, uint32_t mask)
{
  node->flags &= ~mask;
  for (WorldNode* below = node->GetChild(); below; below = below->GetNext())
    ClearFlagsTree(below, mask);
}

void WorldScene::DbgPrint(const char* text) const
{
  QDBG("WorldScene (%s)\n", text);
  QDBG("-------------------------\n");
  PrintBelow(root.GetChild(), {});
}

int WorldScene::AddVar(std::string_view name, int type)
{
  if (vars.size() >= MAX_VARS) {
    QWARN("WorldScene:AddVar(%.*s); out of var space", static_cast<int>(name.size()), name.data());
    return -1;
  }
  vars.push_back({std::string(name), type});
  return static_cast<int>(vars.size()) - 1;
}

int WorldScene::FindVar(std::string_view name) const
{
  for (size_t i = 0; i < vars.size(); ++i)
    if (vars[i].name == name)
      return static_cast<int>(i);
  return -1;
}

const WorldScene::Var* WorldScene::FindVarOf(int i, const char* function) const
{
  const int count = static_cast<int>(vars.size());
  if (i >= 0 && i < count)
    return &vars[static_cast<size_t>(i)];
  QWARN("WorldScene:%s(index %d) out of range (%d vars defined)", function, i, count);
  return nullptr;
}

int WorldScene::GetVarInt(int i) const
{
  const Var* var = FindVarOf(i, "GetVarInt");
  if (!var)
    return 0;
  if (var->type == VAR_INT)
    return var->i;
  QWARN("WorldScene:GetVarInt: var '%s' is not an int", var->name.c_str());
  return 0;
}

float WorldScene::GetVarFloat(int i) const
{
  const Var* var = FindVarOf(i, "GetVarFloat");
  if (!var)
    return 0;
  if (var->type == VAR_FLOAT)
    return var->f;
  QWARN("WorldScene:GetVarFloat: var '%s' is not an float", var->name.c_str());
  return 0;
}

void WorldScene::SetVarInt(int i, int value)
{
  if (FindVarOf(i, "SetVarInt"))
    vars[static_cast<size_t>(i)].i = value;
}

void WorldScene::SetVarFloat(int i, float value)
{
  if (FindVarOf(i, "SetVarInt"))
    vars[static_cast<size_t>(i)].f = value;
}

float WorldScene::GetVarValue(int i) const
{
  if (i < 0 || i >= static_cast<int>(vars.size()))
    return 0;
  const Var& var = vars[static_cast<size_t>(i)];
  return var.type == VAR_INT ? static_cast<float>(var.i) : var.f;
}

void WorldScene::LoadSettings(const QInfo& info, std::string_view key)
{
  const std::string base(key);
  edgeBlend = info.GetFloat(base + ".edge_blend");
  if (info.GetBool(base + ".auto_exposure.enable", false))
    flags |= AUTO_EXPOSURE;
  else
    flags &= ~static_cast<uint32_t>(AUTO_EXPOSURE);
  renderer->LoadSettings(info, "renderer"); // wherever the scene's own stand
  shadowMapping = info.GetInt(base + ".shadowmapping.enable");
}

bool WorldScene::ExposeSystem(QSystemNode& parent)
{
  if (system) {
    QERR("ExposeSystem duplicate call");
    return false;
  }
  system = parent.AddChild("scenegraph");
  return renderer->ExposeSystem(*system);
}

void WorldScene::SetSize(int width, int height)
{
  viewWidth = std::max(width, 1);
  viewHeight = std::max(height, 1);
}

void WorldScene::SetFrameport(int i, DDirector* director, const QRect& rect)
{
  if (i < 0)
    return;
  if (i >= GetNoofFrameports())
    frameports.resize(static_cast<size_t>(i) + 1);
  frameports[static_cast<size_t>(i)] = {director, rect};
}

DDirector* WorldScene::GetDirector(int i) const
{
  return i >= 0 && i < GetNoofFrameports() ? frameports[static_cast<size_t>(i)].director : nullptr;
}

DCamera* WorldScene::CameraOf(size_t frameport, const char* function) const
{
  const DDirector* director = frameports[frameport].director;
  if (!director) {
    QWARN("WorldScene:%s: frameport %d has no director", function, static_cast<int>(frameport));
    return nullptr;
  }
  if (!director->GetCurrentCamera())
    QWARN("WorldScene:%s: frameport %d's director has no cam selected", function, static_cast<int>(frameport));
  return director->GetCurrentCamera();
}

void WorldScene::UpdateCameraManager()
{
  if (frameports.empty())
    QWARN("WorldScene::UpdateCameraManager(); no frameports defined");
  for (size_t i = 0; i < frameports.size(); ++i)
    if (DCamera* camera = CameraOf(i, "UpdateCameraManager"))
      camera->Update();
}

void WorldScene::RenderCameraManager()
{
  if (frameports.empty())
    QWARN("WorldScene::RenderCameraManager(); no frameports defined");
  for (size_t i = 0; i < frameports.size(); ++i) {
    if (DCamera* camera = CameraOf(i, "RenderCameraManager")) {
      const QRect& rect = frameports[i].rect;
      camera->SetAspect(static_cast<float>(std::max(rect.wid, 1)) / static_cast<float>(std::max(rect.hgt, 1)));
      camera->SetClip(nearPlane, farPlane);
      renderer->RenderFrame(*camera, rect);
    }
  }
}

void WorldScene::Paint()
{
  UpdateCameraManager();
  RenderCameraManager();
  fps.FrameDone();
}

void WorldScene::Update(float seconds)
{
  for (const Frameport& port : frameports)
    if (port.director)
      port.director->Step(seconds);
  UpdateBelow(root.GetChild(), seconds);
}

RenderBlock* WorldScene::ReserveRenderBlock()
{
  if (blockCount >= MAX_BLOCKS)
    QWARN("WorldScene:ReserveRenderBlock(); out of render blocks (max=%d)", MAX_BLOCKS);
  else
    ++blockCount;
  RenderBlock& block = blocks[static_cast<size_t>(blockCount - 1)];
  block = {};
  return &block;
}

RenderLight* WorldScene::ReserveRenderLight()
{
  if (lights.size() < MAX_LIGHTS)
    return &lights.emplace_back();
  QWARN("WorldScene:ReserveRenderLight(); out of render lights (max=%d)", MAX_LIGHTS);
  return &(lights.back() = {});
}

void WorldScene::ClearRenderBlocks()
{
  blockCount = 0;
  lights.clear();
}

bool WorldScene::GatherPostFrame(WorldNode& node)
{
  if (node.flags & WorldNode::POST_FRAME) {
    if (postFrame.size() >= MAX_POST_FRAME) {
      QWARN("WorldScene:FindPostFrameNodes(); too many nodes found, max=%d\n", MAX_POST_FRAME);
      return false;
    }
    postFrame.push_back({&node, false});
  }
  for (WorldNode* below = node.GetChild(); below; below = below->GetNext())
    if (!GatherPostFrame(*below))
      return false;
  if (node.flags & WorldNode::POST_FRAME && node.GetChild()) {
    if (postFrame.size() >= MAX_POST_FRAME) {
      QWARN("WorldScene:FindPostFrameNodes(); too many nodes found, max=%d ('leave')\n", MAX_POST_FRAME);
      return false;
    }
    postFrame.push_back({&node, true});
  }
  return true;
}

std::span<const WorldScene::PostFrameEntry> WorldScene::FindPostFrameNodes()
{
  postFrame.clear();
  GatherPostFrame(root);
  return postFrame;
}

void WorldScene::RunPostFrameNodes()
{
  for (const PostFrameEntry& entry : FindPostFrameNodes())
    if (!entry.leave)
      entry.node->Render();
}

std::shared_ptr<DShader> WorldScene::ShaderOfMaterial(const DMaterial* material, bool sky)
{
  return shaders->Find(material, sky);
}
