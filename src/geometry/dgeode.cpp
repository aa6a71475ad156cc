#include "geometry/dgeode.h"

#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dpicktree.h"
#include "geometry/dshader.h"

#include <algorithm>

DGeode::DGeode(std::string_view modelName) : name(modelName)
{
  lod[0] = this;
}

DGeode::~DGeode()
{
  if (geodeFlags & LODS_NOT_OWNED)
    return;
  for (size_t i = 1; i < lod.size(); ++i)
    std::unique_ptr<DGeode>(lod[i]).reset();
}

DGeob* DGeode::GetGeob(int i) const
{
  return i >= 0 && i < GetNoofGeobs() ? geob[static_cast<size_t>(i)].get() : nullptr;
}

DMaterial* DGeode::GetMaterial(int i) const
{
  return i >= 0 && i < GetNoofMaterials() ? material[static_cast<size_t>(i)].get() : nullptr;
}

DGeob* DGeode::AddGeob()
{
  if (GetNoofGeobs() >= MAX_GEOBS) {
    QWARN("DGeode:AddGeob(); max (%d) reached (geode %s)", MAX_GEOBS, name.c_str());
    return nullptr;
  }
  return geob.emplace_back(std::make_unique<DGeob>(this)).get();
}

DMaterial* DGeode::AddMaterial()
{
  if (GetNoofMaterials() >= MAX_MATERIALS) {
    QWARN("DGeode:AddMaterial(); max (%d) reached (geode %s)", MAX_MATERIALS, name.c_str());
    return nullptr;
  }
  return material.emplace_back(std::make_unique<DMaterial>()).get();
}

DMaterial* DGeode::FindMaterial(std::string_view materialName) const
{
  for (const auto& m : material)
    if (m->name == materialName)
      return m.get();
  return nullptr;
}

int DGeode::FindMaterialIndex(std::string_view materialName) const
{
  for (size_t i = 0; i < material.size(); ++i)
    if (material[i]->name == materialName)
      return static_cast<int>(i);
  return 0;
}

void DGeode::SetMapPath(const char* path)
{
  mapPath = path ? path : "";
}

std::string DGeode::FindMapFile(std::string_view fileName) const
{
  const std::string file(fileName);
  if (!mapPath.empty() && QFileExists(mapPath + "/" + file))
    return mapPath + "/" + file;
  if (QFileExists("images/" + file))
    return "images/" + file;
  return file;
}

DBox DGeode::GetBoundingBox()
{
  DBox box{DVector3(FAR), DVector3(-FAR)};
  for (const auto& g : geob)
    box.Merge(g->GetBoundingBox());
  center = box.Center();
  return box;
}

void DGeode::ScaleVertices(float x, float y, float z)
{
  for (const auto& g : geob)
    g->ScaleVertices(x, y, z);
  for (size_t i = 1; i < lod.size(); ++i)
    if (lod[i] && lod[i] != this)
      lod[i]->ScaleVertices(x, y, z);
}

void DGeode::Translate(float x, float y, float z)
{
  for (const auto& g : geob)
    g->Translate(x, y, z);
  for (size_t i = 1; i < lod.size() && lod[i]; ++i)
    if (lod[i] != this)
      lod[i]->Translate(x, y, z);
}

void DGeode::RethinkNormals()
{
  for (const auto& g : geob)
    g->RethinkNormals();
}

void DGeode::RotateNormals(const glm::mat3& m)
{
  for (const auto& g : geob)
    g->RotateNormals(m);
}

bool DGeode::Validate() const
{
  return std::all_of(geob.begin(), geob.end(), [](const auto& g) { return g->Validate(); });
}

void DGeode::EnableVBO()
{
  for (DGeode* level : lod)
    if (level)
      for (const auto& g : level->geob)
        g->EnableVBO();
}

void DGeode::DisableVBO()
{
  for (DGeode* level : lod)
    if (level)
      for (const auto& g : level->geob)
        g->DisableVBO();
}

void DGeode::Paint()
{
  for (const auto& g : geob)
    g->Paint();
  for (const auto& g : geob) {
    g->flags |= DGeob::TRANSPARENT_PASS;
    g->Paint();
    g->flags &= ~static_cast<uint32_t>(DGeob::TRANSPARENT_PASS);
  }
}

void DGeode::Clear()
{
  pickTree.reset();
  geob.clear();
  material.clear();
}

bool DGeode::NeedsTangents() const
{
  const auto needs = [](const auto& self, const DMaterial& m) -> bool {
    return (m.shader && m.shader->NeedsTangents()) ||
           std::any_of(m.sub.begin(), m.sub.end(), [&](const auto& s) { return self(self, *s); });
  };
  return std::any_of(material.begin(), material.end(), [&](const auto& m) { return needs(needs, *m); });
}

bool d3GeodeLoadLOD(const std::string& fileName, std::span<const float> distances, float farDistance,
                    std::vector<std::unique_ptr<DGeode>>& models, bool wantLods, const char* mapPath)
{
  models.clear();
  const std::string base = fileName.substr(0, std::min(fileName.find_last_of('.'), fileName.size()));
  const int levels = wantLods ? DGeode::MAX_LODS : 1;
  for (int i = 0; i < levels; ++i) {
    const std::string file = i == 0 ? fileName : base + "_lod" + std::to_string(i) + ".dof";
    if (i > 0 && !QFileExists(file))
      break;
    auto model = std::make_unique<DGeode>(file);
    model->SetMapPath(mapPath);
    if (!model->ImportDOF(file)) {
      if (i > 0)
        break;
      QWARN("Can't import DOF '%s'", file.c_str());
      QWARN("Highest LOD failed to load; skipping model (%s)", file.c_str());
      return false;
    }
    const float factor = DGlobals().lodFactor;
    const float distance = static_cast<size_t>(i) < distances.size() ? distances[static_cast<size_t>(i)] : 0.0f;
    model->lodIndex = i;
    model->lodNear = factor * distance;
    model->lodFar = factor * farDistance;
    if (!models.empty())
      models.back()->lodFar = model->lodNear;
    models.push_back(std::move(model));
  }
  DGeode& first = *models.front();
  first.geodeFlags |= DGeode::LODS_NOT_OWNED; // the caller owns them all
  for (size_t i = 0; i < models.size(); ++i) {
    models[i]->GetBoundingBox();
    models[i]->center = first.center;
    first.lod[i] = models[i].get();
  }
  return true;
}
