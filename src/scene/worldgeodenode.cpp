#include "scene/worldgeodenode.h"

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodebuilder.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "scene/worldstate.h"

#include <algorithm>
#include <array>
#include <span>

WorldGeobNode::WorldGeobNode(WorldScene* owner, const char* nodeName, DGeob* pieceOfGeometry) :
    WorldGraphicsNode(owner, nodeName, "geob"), geob(pieceOfGeometry)
{
  Relink();
}

WorldGeobNode::~WorldGeobNode() = default;

const DBox* WorldGeobNode::GetBox()
{
  return &geob->GetBoundingBox();
}

bool WorldGeobNode::IsSky() const
{
  constexpr uint32_t NODE_IS_SKY = 0x1; // what a track calls "Sky"
  return geob->userFlags & NODE_IS_SKY || flags & SKY;
}

void WorldGeobNode::Relink()
{
  parts.clear();
  unpaintable = 0;
  linkedAsSky = IsSky();
  const DMaterial* last = nullptr;
  for (int i = 0; i < geob->Bursts(); ++i) {
    const auto indices = geob->PaintedIndices(i);
    const int vperP = geob->burst[static_cast<size_t>(i)].vperP;
    if (vperP != 3 && vperP != 4)
      ++unpaintable;
    if (indices.empty())
      continue;
    const bool quads = vperP == 4;
    const int first = static_cast<int>(indices.data() - geob->index.data());
    const int count = static_cast<int>(indices.size());
    DMaterial* material = geob->GetMaterial(geob->burst[static_cast<size_t>(i)].mtlID);
    if (!parts.empty() && material == last && quads == parts.back().quads &&
        first == parts.back().firstIndex + parts.back().indexCount) {
      parts.back().indexCount += count;
      continue;
    }
    last = material;
    Part& part = parts.emplace_back(Part{first, count, quads, material ? material->shader : nullptr, nullptr});
    const bool drawable = part.shader && part.shader->LayerCount() > 0;
    if (!drawable && GetScene()) {
      part.made = GetScene()->ShaderOfMaterial(material, linkedAsSky);
      part.shader = part.made.get();
    }
  }
}

bool WorldGeobNode::Enter(WorldState& state)
{
  if (linkedAsSky != IsSky())
    Relink();
  for (int i = 0; i < unpaintable; ++i)
    QWARN("DGeob; draw poly NYI\n");
  for (const Part& part : parts) {
    RenderBlock* block = state.scene.ReserveRenderBlock();
    block->shader = part.shader;
    block->geob = geob;
    block->matrix = state.Matrix();
    block->firstIndex = part.firstIndex;
    block->indexCount = part.indexCount;
    block->quads = part.quads;
    block->distance = distance;
    block->screenSize = geob->radius / std::max(distance, 0.001f);
  }
  return false;
}

WorldGeodeNode::WorldGeodeNode(WorldScene* owner, const char* nodeName) : WorldGraphicsNode(owner, nodeName, "geode")
{}

WorldGeodeNode::~WorldGeodeNode()
{
  Clear();
}

void WorldGeodeNode::Clear()
{
  geobNodes.clear();
  lod.reset();
  if (!(geodeNodeFlags & OWNS_GEODE))
    for (auto& geode : geodes)
      static_cast<void>(geode.release());
  geodes.clear();
}

DGeode* WorldGeodeNode::GetGeode(int level) const
{
  return level >= 0 && level < GeodeCount() ? geodes[static_cast<size_t>(level)].get() : nullptr;
}

void WorldGeodeNode::Relink()
{
  for (const auto& node : geobNodes)
    node->Relink();
}

void WorldGeodeNode::AddGeobNodes(DGeode& geode, std::string_view path, int level)
{
  // Each new node goes to the head of its list: from the last to the first, they stand in the model's order.
  for (int i = geode.GetNoofGeobs() - 1; i >= 0; --i) {
    const std::string leaf = std::string(path) + "/geob" + std::to_string(i);
    auto node = std::make_unique<WorldGeobNode>(GetScene(), leaf.c_str(), geode.GetGeob(i));
    if (level >= 0)
      lod->AddLevelNode(level, node.get());
    else if (GetScene())
      GetScene()->AddNode(node.get(), this);
    geobNodes.push_back(std::move(node));
  }
}

void WorldGeodeNode::SetGeode(std::unique_ptr<DGeode> model, std::string_view path)
{
  Clear();
  if (!model)
    return;
  geodes.push_back(std::move(model));
  AddGeobNodes(*geodes.front(), path, -1);
}

void WorldGeodeNode::LinkLevels(std::string_view path, const float* lodDistances)
{
  const std::string text(path);
  lod = std::make_unique<WorldLODNode>(GetScene(), "lod");
  if (GetScene())
    GetScene()->AddNode(lod.get(), this);
  lod->SetCenter(geodes.front()->center);
  for (int i = 0; i < WorldLODNode::MAX_LEVELS; ++i) {
    const float end = lodDistances[i];
    if (end != 0)
      lod->SetLODDistance(i, end);
    if (DGeode* geode = GetGeode(i))
      AddGeobNodes(*geode, path, i);
    else if (i == 0)
      QERR("No LOD0 model found for '%s'", text.c_str());
    else if (end > 0)
      QWARN("No LOD level %d model found for '%s', even though an LOD distance of %.1f was specified. "
            "This may cause invisible models",
            i, text.c_str(), static_cast<double>(end));
  }
}

bool WorldGeodeNode::Load(std::string_view path, const float* lodDistances, bool makeStub)
{
  Clear();
  const std::string file(path);
  const bool wantLods = lodDistances && lodDistances[0] > 0;
  constexpr std::array<float, DGeode::MAX_LODS> none{};
  const std::span<const float> distances(lodDistances ? lodDistances : none.data(), none.size());
  std::vector<std::unique_ptr<DGeode>> models;
  if (!d3GeodeLoadLOD(file, distances, DGeode::FAR, models, wantLods) || models.empty()) {
    QERR("WorldGeodeNode:Load(%s) can't import DOF", file.c_str());
    if (!makeStub)
      return false;
    SetGeode(WorldMakeStub(), path);
    return GetGeode() != nullptr;
  }
  geodes = std::move(models);
  for (const auto& geode : geodes) {
    geode->geodeFlags |= DGeode::LODS_NOT_OWNED;
    if (GetScene() && GetScene()->GetRenderer()->GetFlags() & WorldRenderer::USE_VBO)
      geode->EnableVBO();
  }
  if (wantLods)
    LinkLevels(path, lodDistances);
  else
    AddGeobNodes(*geodes.front(), path, -1);
  return true;
}

std::unique_ptr<DGeode> WorldMakeStub()
{
  DGeodeBuilder builder;
  DGeodeBuilder::Geob* cube = builder.MakeGeob();
  for (int side = 0; cube && side < 6; ++side) {
    const int axis = side / 2;
    DVector3 out(0.0f), u(0.0f);
    out[axis] = side % 2 ? -0.5f : 0.5f;
    u[(axis + 1) % 3] = 0.5f;
    const DVector3 v = 2.0f * glm::cross(out, u);
    cube->AddTriangle(out - u - v, out + u - v, out + u + v);
    cube->AddTriangle(out - u - v, out + u + v, out - u + v);
  }
  if (!cube)
    QERR("WorldGeodeNode:MakeStub(); no geode created");
  return cube ? builder.Build("mystub.dof", "mytexture.tga") : nullptr;
}
