#include "runtime/rmodel.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"
#include "scene/worldnodes.h"
#include "scene/worldscene.h"

#include <glm/gtc/matrix_transform.hpp>

#include <vector>

namespace {

constexpr const char* AXES[] = {".x", ".y", ".z"};

} // namespace

RModel::RModel(WorldScene& shownIn, std::string_view modelName, Places lookedFor) :
    scene(shownIn), objectName(modelName), places(std::move(lookedFor))
{}

RModel::~RModel() = default;

bool RModel::ReadKeys(const QInfo& info, const std::string& key)
{
  file.clear();
  info.GetString(key + ".file", file);
  if (file.empty())
    return false;
  for (size_t i = 0; i < lod.size(); ++i)
    lod[i] = info.GetFloat(key + ".lod" + std::to_string(i) + "_z");
  for (int i = 0; i < 3; ++i) {
    const std::string path = key + ".scale" + AXES[i];
    scale[i] = info.GetFloat(path, 1.0f);
    if (scale[i] == 0)
      QWARN("%s is 0; scaling with zero means making the object invisible.", path.c_str());
    offset[i] = info.GetFloat(key + ".offset" + AXES[i]);
  }
  const bool hasCar = !places.carDirectory.empty();
  if (info.FindNode(key + ".from") && !hasCar)
    QWARN("RModel: 'from' specified without car present");
  if (info.FindNode(key + ".to") && !hasCar)
    QWARN("RModel: 'to' specified without car present");
  alignAxis = info.GetInt(key + ".align_axis");
  fit = info.GetBool(key + ".fit", false);
  uniformScale = info.GetFloat(key + ".scale", 1.0f);
  return true;
}

// A name out of the settings leads below the data root or not at all.
bool RModel::LoadFile()
{
  const std::string inside = d3InsideName(file);
  std::vector<std::string> candidates;
  if (!places.carDirectory.empty()) {
    candidates.push_back(places.carDirectory + "/" + inside);
  } else {
    candidates.push_back(places.trackDirectory + "/" + inside);
    candidates.push_back("data/models/" + inside);
    candidates.push_back(places.trackDirectory + "/dofs/" + inside);
    candidates.push_back(inside);
  }
  for (const std::string& path : candidates)
    if (QFileExists(path))
      return node->Load(path, lod.data(), false);
  return false;
}

bool RModel::Load(const QInfo& info, std::string_view base, std::string_view name)
{
  if (!ReadKeys(info, std::string(base) + "." + std::string(name)))
    return false;
  node.reset();
  tform.reset();
  node = std::make_unique<WorldGeodeNode>(&scene, objectName.c_str());
  if (!LoadFile()) {
    QWARN("RModel:Load(); can't load '%s'", file.c_str());
    node.reset();
    return false;
  }
  const DVector3 size = scale * uniformScale;
  if (size == DVector3(1.0f) && offset == DVector3(0.0f)) {
    scene.AddNode(node.get());
    return true;
  }
  tform = std::make_unique<WorldTransformationNode>(&scene, "tform");
  tform->SetMatrix(glm::scale(glm::translate(DMatrix4(1.0f), offset), size));
  scene.AddNode(tform.get());
  scene.AddNode(node.get(), tform.get());
  return true;
}

void RModel::Save(QInfo& info, std::string_view base, std::string_view name) const
{
  if (!node) {
    QWARN("RModel:Save() called without Load() first");
    return;
  }
  const std::string key = std::string(base) + "." + std::string(name);
  info.SetString(key + ".file", file);
  for (size_t i = 0; i < lod.size(); ++i)
    if (lod[i] != 0)
      info.SetFloat(key + ".lod" + std::to_string(i) + "_z", lod[i]);
  for (int i = 0; i < 3; ++i) {
    if (scale != DVector3(1.0f))
      info.SetFloat(key + ".scale" + AXES[i], scale[i]);
    if (offset != DVector3(0.0f))
      info.SetFloat(key + ".offset" + AXES[i], offset[i]);
  }
}
