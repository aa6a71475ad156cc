#include "scene/scenery.h"

#include "geometry/dgeode.h"
#include "geometry/dpipe.h"
#include "scene/worldrenderer.h"

std::unique_ptr<DGeode> BoxGeode(const DVector3& middle, float side, DShader* shader)
{
  std::unique_ptr<DGeode> geode = WorldMakeStub();
  geode->GetMaterial(0)->shader = shader;
  geode->ScaleVertices(side, side, side);
  geode->Translate(middle.x, middle.y, middle.z);
  geode->GetGeob(0)->flags &= ~static_cast<uint32_t>(DGeob::BOX_VALID);
  geode->GetBoundingBox();
  return geode;
}

DShader OneLayerShader(int sortKey, uint32_t blendSrc, uint32_t layerFlags)
{
  DShader shader;
  shader.sortKey = sortKey;
  shader.layer.emplace_back();
  shader.layer.front().blendSrc = blendSrc;
  shader.layer.front().flags = layerFlags;
  return shader;
}

SmallScene::SmallScene()
{
  rail.AddCamera(&camera);
  director.AddRail(&rail);
  director.SetRail(0, 0);
  scene.SetFrameport(0, &director, {0, 0, 800, 600});
  scene.GetRenderer()->SetPipe(&DThePipe());
  scene.GetRenderer()->CreateStats();
}

WorldGeodeNode& SmallScene::AddBox(const std::string& name, const DVector3& middle, DShader* shader, WorldNode* parent)
{
  WorldGeodeNode& node = *boxes.emplace_back(std::make_unique<WorldGeodeNode>(&scene, name.c_str()));
  node.SetGeode(BoxGeode(middle, 1.0f, shader), name);
  node.GetGeode()->name = name;
  scene.AddNode(&node, parent);
  return node;
}

void SmallScene::Frame()
{
  scene.Paint();
}

std::vector<std::string> SmallScene::Painted()
{
  std::vector<std::string> names;
  for (const RenderBlock& block : scene.GetRenderer()->GetBlocks())
    names.push_back(block.geob->geode->name);
  return names;
}
