#include "tools/qconvertmodel.h"

#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "foundation/qstring.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"
#include "geometry/dglobal.h"
#include "geometry/dworld.h"
#include "scene/worldgeodenode.h"
#include "scene/worldscene.h"
#include "track/rtracknode.h"
#include "track/rtrackvrml.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

constexpr size_t EXTENSION = 4; // ".ase"

std::string LowerCase(const std::string& text)
{
  qstring lower(text);
  lower.ToLower();
  return lower.Str();
}

std::string WithoutExtension(const std::string& name)
{
  return name.substr(0, name.size() - std::min(EXTENSION, name.size()));
}

// The directory stays as it is: another one may bear its name in lower case. An old model whose name has capitals is
// the same model and gets this name.
bool WriteModel(const DGeode& geode, const std::string& directory, const std::string& lowerName)
{
  const std::string path = directory + "/" + lowerName;
  const std::string target = QWriteTarget(path);
  if (!geode.ExportDOF(path))
    return false;
  const size_t leaf = target.find_last_of('/') + 1; // npos + 1 is 0
  if (target.substr(leaf) == lowerName || LowerCase(target.substr(leaf)) != lowerName)
    return true;
  return std::rename(target.c_str(), (target.substr(0, leaf) + lowerName).c_str()) == 0;
}

// While it lives pictures are looked for in the directory, too.
class MapDirectory
{
public:
  explicit MapDirectory(const std::string& directory)
  {
    DGlobals().mapPath.Clear();
    DGlobals().mapPath.Add(directory);
  }
  ~MapDirectory() { DGlobals().mapPath.Clear(); }
  MapDirectory(const MapDirectory&) = delete;
  MapDirectory& operator=(const MapDirectory&) = delete;
};

// While it lives a material finds a shader of its own or none: without one it keeps its textures.
class WithoutDefaultShader
{
public:
  WithoutDefaultShader() : kept(std::exchange(DGlobals().defaultShader, nullptr)) {}
  ~WithoutDefaultShader() { DGlobals().defaultShader = kept; }
  WithoutDefaultShader(const WithoutDefaultShader&) = delete;
  WithoutDefaultShader& operator=(const WithoutDefaultShader&) = delete;

private:
  DShader* kept;
};

bool ReadModel(DGeode& geode, const std::string& fileName, const std::string& directory,
               const std::string& mapDirectory)
{
  const WithoutDefaultShader shadersOfTheirOwn;
  geode.SetMapPath(mapDirectory.c_str());
  if (geode.ImportDOF(directory + "/" + fileName))
    return true;
  QWARN("Can't read model '%s/%s'", directory.c_str(), fileName.c_str());
  return false;
}

} // namespace

bool ConvertModel(const std::string& fileName, const std::string& directory, const std::string& mapDirectory,
                  QModelType type, bool optimize)
{
  QDBG("ConvertModel(geoName=%s), mapDir='%s'\n", fileName.c_str(), mapDirectory.c_str());
  const MapDirectory maps(mapDirectory);
  DGeode geode;
  geode.SetMapPath(mapDirectory.c_str());
  const std::string source = directory + "/" + fileName;
  DArray<int32_t> faceIndex;
  if (!(type == MODEL_ASE ? geode.ImportASE(faceIndex, source) : geode.ImportVRML(source))) {
    QWARN("ConvertModel(%s) failed", fileName.c_str());
    return false;
  }
  if (optimize) {
    DGeodeMergeVertices(geode);
    DGeodePackIndices(geode);
    DGeodeOptimizeBursts(geode);
  }
  const bool written = WriteModel(geode, mapDirectory, WithoutExtension(LowerCase(fileName)) + ".dof");
  DGlobals().texturePool.Empty();
  return written;
}

bool ModelAddLighting(const std::string& fileName, const std::string& directory, const std::string& mapDirectory)
{
  QDBG("ProcessModel(%s), mapDir='%s'\n", fileName.c_str(), mapDirectory.c_str());
  DGeode geode;
  if (!ReadModel(geode, fileName, directory, mapDirectory))
    return false;
  DGeodeAddLighting(geode);
  DGeodeMergeVertices(geode);
  DGeodePackIndices(geode);
  DGeodeOptimizeBursts(geode);
  return WriteModel(geode, directory, LowerCase(fileName));
}

bool ModelOptimize(const std::string& fileName, const std::string& directory, const std::string& mapDirectory)
{
  QDBG("ModelOptimize(%s), mapDir='%s'\n", fileName.c_str(), mapDirectory.c_str());
  DGeode geode;
  if (!ReadModel(geode, fileName, directory, mapDirectory))
    return false;
  DGeodeSetLitMaterials(geode);
  DGeodeOptimize(geode);
  return WriteModel(geode, directory, LowerCase(fileName));
}

bool AddModel(RTrackVRML& track, const std::string& fileName, const std::string& directory,
              const std::string& mapDirectory)
{
  QDBG("AddModel(%s,%s)\n", fileName.c_str(), directory.c_str());
  QDBG("AddModel mapDir='%s'\n", mapDirectory.c_str());
  const std::string path = directory + "/" + fileName;
  WorldScene* scene = track.GetScene();
  auto node = std::make_unique<RTrackNode>();
  node->sceneNode = std::make_unique<WorldGeodeNode>(scene, path.c_str());
  if (!node->sceneNode->Load(path, nullptr, false)) {
    QWARN("ImportDOFs: can't load %s into scene graph", path.c_str());
    return false;
  }
  DGeode& geode = *node->Geode();
  geode.SetMapPath(mapDirectory.c_str());
  geode.lod[0] = &geode;
  node->name = WithoutExtension(LowerCase(fileName));
  std::ranges::replace(node->name, '.', '_');
  node->file = fileName;
  node->ApplyFlags();
  node->CalcBounds();
  RTrackNode& added = *node;
  if (!track.AddNode(std::move(node)))
    return false;
  if (scene) {
    scene->AddNode(added.sceneNode.get());
    scene->GetWorld()->Add(added.Geode());
  }
  QDBG("AddModel() RET\n");
  return true;
}
