#include "track/rtrackvrml.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qinfoiterator.h"
#include "foundation/qmatch.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dworld.h"
#include "physics/pnewtonworld.h"
#include "runtime/rmanager.h"
#include "scene/worldgeodenode.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "track/rcollision.h"
#include "track/rfindfile.h"
#include "track/rinfokeys.h"
#include "track/rsurfacetree.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr uint32_t EDITING = 1; // of the geometry layer's flags
constexpr uint32_t GL_CLAMP_TO_EDGE_WRAP = 33071;

// An entry of a movable has keys of its own; these are the ones that every entry has.
bool IsCommonKey(std::string_view key)
{
  for (std::string_view common : {"file", "flags", "movable", "motion", "translate", "rotation", "lightmap"})
    if (key == common || (key.starts_with(common) && key[common.size()] == '.'))
      return true;
  return key.starts_with("lod") && key.ends_with("_z");
}

std::string LodKey(const std::string& base, int level)
{
  return base + ".lod" + std::to_string(level) + "_z";
}

// "a.b.c" gives "c".
std::string LastComponent(const std::string& path)
{
  return path.substr(path.find_last_of('.') + 1); // npos + 1 is 0
}

std::string Trimmed(const std::string& text)
{
  constexpr const char* BLANKS = " \t\n\r";
  const size_t first = text.find_first_not_of(BLANKS);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

std::vector<std::pair<std::string, std::string>> MovableKeys(const QInfo& info, const std::string& entry)
{
  std::vector<std::pair<std::string, std::string>> keys;
  QInfoIterator all(info, entry);
  qstring path;
  while (all.GetNext(path, true)) {
    const std::string key = path.Str().substr(entry.size() + 1);
    std::string value;
    if (!IsCommonKey(key) && info.GetString(path, value))
      keys.emplace_back(key, value);
  }
  return keys;
}

} // namespace

RTrackVRML::RTrackVRML(const RTrackHost& newHost) : RTrack(newHost)
{}

RTrackVRML::~RTrackVRML()
{
  if (!host.scene)
    return;
  host.scene->GetWorld()->ClearObjects();
  host.scene->GetRenderer()->SetColorGrade(nullptr);
}

bool RTrackVRML::Load()
{
  const bool loaded = RTrack::Load();
  if (!loaded)
    QERR("RTrack:Load() failed\n");
  const bool shown = loaded && LoadScenery();
  archive.reset();
  return shown;
}

bool RTrackVRML::LoadScenery()
{
  const ROpenArchive graphics(PathOf("graphics.ar"));
  if (host.physics)
    host.physics->SetSize({DVector3(-100000, -10000, -100000), DVector3(100000, 10000, 100000)});
  LoadShaders();
  LoadNodes();
  DGlobals().mapPath.Clear();
  if (!LoadSurfaceTypes())
    return false;
  marshalPosts.PostLoad(trackDir, {nodes.begin(), nodes.end()}, splines);
  ApplyVisibility();
  if (host.physics)
    BuildTrees();
  LogScript();
  return true;
}

void RTrackVRML::ApplySurfaceTypeToMaterials(const RSurfaceType& surface, const std::string& pattern)
{
  bool matched = false;
  const auto apply = [&](const auto& self, DMaterial& material) -> void {
    if (QMatch(pattern.c_str(), material.name.c_str())) {
      material.surface = &surface;
      matched = true;
    }
    for (const auto& sub : material.sub)
      self(self, *sub);
  };
  for (const auto& node : nodes)
    if (DGeode* geode = node->Geode())
      for (const auto& material : geode->material)
        apply(apply, *material);
  if (!matched)
    QLOG("No surfaces found that match pattern '%s'\n", pattern.c_str());
}

// A track brings no code into this program.
void RTrackVRML::LogScript() const
{
  if (std::string script; special && special->GetString("scripts.load", script) && !script.empty())
    QDBG("Add track script '%s' (Klefisol)\n", PathOf(script).c_str());
}

// The path stays set while the nodes load: a file of the skin goes before one of the track.
void RTrackVRML::LoadShaders()
{
  DGlobal& global = DGlobals();
  std::array<char, 32> skinDir;
  std::snprintf(skinDir.data(), skinDir.size(), "skin%02d", skin);
  global.mapPath.Clear();
  global.mapPath.Add(PathOf(skinDir.data()));
  global.mapPath.Add(trackDir);
  qstring path;
  if (!global.shadersOn || !host.scene || !global.mapPath.Find("track.shd", path))
    return;
  if (skin != 0)
    QDBG("Track uses skinning; loading '%s' instead of regular %s", path.c_str(), PathOf("track.shd").c_str());
  if (RMGR())
    RMGR()->SetShaderPaths(trackDir);
  if (progressCallback)
    global.shaderProgress = [this](int done, int total, std::string_view shader) {
      progressCallback(done, total * 2, std::string(shader).c_str()); // nodes are the other half
    };
  if (RMGR())
    global.physicsMaterial = [](std::string_view material) { return RMGR()->physMat.GetMaterialID(material); };
  host.scene->GetWorld()->LoadShaders(path.Str());
  global.physicsMaterial = nullptr;
  global.shaderProgress = nullptr;
  if (RMGR())
    RMGR()->ResetShaderPaths();
}

void RTrackVRML::LoadNodes()
{
  const QInfo info(PathOf("geometry.ini"));
  NoteUnreadable(info);
  LodDistances defaults{};
  for (int i = 0; i < RTrackNode::LODS; ++i)
    defaults[static_cast<size_t>(i)] = info.GetFloat(LodKey("objects", i));
  const int total = info.CountChildren("objects") + info.CountChildren("shadows");
  DGlobals().flags |= EDITING;
  DGlobals().defaultWrap = GL_CLAMP_TO_EDGE_WRAP;
  QInfoIterator entries(info, "objects");
  qstring entry;
  for (int done = 1; entries.GetNext(entry, false); ++done) {
    const std::string key = entry.Str();
    const std::string entryName = LastComponent(key);
    auto node = ReadNode(info, key, entryName);
    if (!node)
      continue;
    if (!HasRoom())
      break;
    LodDistances lod{};
    for (int i = 0; i < RTrackNode::LODS; ++i)
      lod[static_cast<size_t>(i)] = info.GetFloat(LodKey(key, i), defaults[static_cast<size_t>(i)]);
    if (!LoadModel(*node, lod))
      continue;
    AddNode(std::move(node));
    QDBG("Object %d/%d, %s    \r", done, total, entryName.c_str());
    const std::string text =
        "Object " + std::to_string(done) + " out of " + std::to_string(total) + " [" + entryName + "]";
    if (progressCallback && !progressCallback(done + total, total * 2, text.c_str())) {
      cancelled = entries.GetNext(entry, false);
      break;
    }
  }
  AfterRead(info);
  QDBG("Load visible objects done\n");
}

std::unique_ptr<RTrackNode> RTrackVRML::ReadNode(const QInfo& info, const std::string& key,
                                                 const std::string& entryName) const
{
  auto node = std::make_unique<RTrackNode>();
  std::string modelFile;
  info.GetString(key + ".file", modelFile);
  qstring lower(Trimmed(modelFile));
  lower.ToLower();
  modelFile = lower.Str();
  if (modelFile.empty())
    return nullptr;
  if (modelFile.find(' ') != std::string::npos) {
    QWARN("Geometry.ini %s.file (%s) contains a space, not allowed! Object may not be visible.", key.c_str(),
          modelFile.c_str());
    return nullptr;
  }
  if (!RStaysInside(PathOf(modelFile)) || modelFile.front() == '/') {
    QWARN("Geometry.ini %s.file (%s) lies outside of the data directory, not allowed! Object may not be visible.",
          key.c_str(), modelFile.c_str());
    return nullptr;
  }
  node->file = modelFile;
  node->name = entryName;
  node->flags = static_cast<uint32_t>(info.GetInt(key + ".flags", RTrackNode::DEFAULT_FLAGS));
  node->lightmapResolutionX = node->lightmapResolutionY = info.GetInt(key + ".lightmap.resolution", 64);
  if (info.GetBool(key + ".lightmap.enable", false))
    node->flags |= RTrackNode::LIGHTMAP;
  node->lightmapUVIndex = info.GetInt(key + ".lightmap.uv_index", 1);
  if (info.GetBool(key + ".movable", false))
    node->flags |= RTrackNode::MOVABLE;
  node->translate = GetVector(info, key + ".translate");
  node->rotation = GetVector(info, key + ".rotation");
  if (node->flags & RTrackNode::MOVABLE) {
    node->flags &= ~uint32_t(RTrackNode::COLLIDE | RTrackNode::SURFACE);
    node->movableKeys = MovableKeys(info, key);
  }
  if (std::string motion; info.GetString(key + ".motion", motion) && !motion.empty()) {
    QDBG("Motion plugin for %s: %s\n", entryName.c_str(), motion.c_str());
    QWARN("Track object %s: can't load motion plugin '%s'", entryName.c_str(), motion.c_str());
  }
  return node;
}

bool RTrackVRML::LoadModel(RTrackNode& node, const LodDistances& lod) const
{
  const std::string path = PathOf(node.file);
  node.sceneNode = std::make_unique<WorldGeodeNode>(host.scene, node.name.c_str());
  if (!node.sceneNode->Load(path, lod.data(), false)) {
    if (node.flags & RTrackNode::MOVABLE)
      QWARN("Can't load %s into scene graph", path.c_str());
    else
      QWARN("RTrack: can't load %s into scene graph", path.c_str());
    return false;
  }
  node.ApplyFlags();
  // That it is sky stands in the flags of its geobs.
  if (node.flags & RTrackNode::SKY)
    WorldScene::ClearFlagsTree(node.sceneNode.get(), WorldNode::SKY);
  if (node.flags & RTrackNode::RELATIVE_POS) {
    node.transformNode = std::make_unique<WorldTransformationNode>(host.scene, "tf_track");
    node.transformNode->flags |= 1;
    if (host.scene)
      host.scene->AddNode(node.transformNode.get());
  }
  if (host.scene)
    host.scene->AddNode(node.sceneNode.get(), node.transformNode.get());
  if (host.scene && !(node.flags & RTrackNode::MOVABLE))
    host.scene->GetWorld()->Add(node.Geode());
  node.CalcBounds();
  return true;
}

bool RTrackVRML::CollisionOBB()
{
  qlog(QLOG_FATAL, "RTrackVRML::CollisionOBB", "RTrackVRML:CollisionOBB() is OBSOLETE; use AABBTree");
  return false;
}

bool RTrackVRML::HasRoom() const
{
  if (nodes.Count() < MAX_NODES)
    return true;
  QWARN("RTrackVRML:AddNodes(); out of nodes");
  return false;
}

bool RTrackVRML::AddNode(std::unique_ptr<RTrackNode> node)
{
  return HasRoom() && nodes.Add(std::move(node));
}

bool RTrackVRML::RemoveNode(int i)
{
  if (const auto* node = nodes.At(i); node && (*node)->Geode()) {
    if (collision)
      collision->Polys().ForgetModel(*(*node)->Geode());
    if (surfaceTree)
      surfaceTree->ForgetModel(*(*node)->Geode());
  }
  if (const auto* node = nodes.At(i)) {
    marshalPosts.Forget(node->get());
    if (host.scene)
      host.scene->GetWorld()->Remove((*node)->Geode());
  }
  return nodes.Remove(i);
}

RTrackNode* RTrackVRML::FindNode(const std::string& geodeName) const
{
  for (const auto& node : nodes)
    if (const DGeode* geode = node->Geode(); geode && geode->name == geodeName)
      return node.get();
  return nullptr;
}

void RTrackVRML::ApplyVisibility()
{
  const bool night = skyModel.night > 0;
  for (const auto& node : nodes) {
    if (node->flags & RTrackNode::HIDE_WHEN_DARK)
      node->SetVisible(!night);
    if (node->flags & RTrackNode::HIDE_WHEN_LIGHT)
      node->SetVisible(night);
    if (node->flags & RTrackNode::INVISIBLE)
      node->SetVisible(false);
  }
}
