#include "app/demo/writer.h"

#include "app/demo/exports.h"
#include "app/demo/furniture.h"
#include "app/demo/scan.h"
#include "app/demo/terrain.h"
#include "app/demo/textures.h"
#include "app/demo/trees.h"
#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "foundation/qtga.h"
#include "geometry/dgeode.h"
#include "geometry/dtexture.h"

#include <filesystem>

namespace {

std::string TextureOf(std::string_view material)
{
  return std::string(material) + ".tga";
}

// One geob for each mesh, each with a material of its own mesh's name.
void FillGeode(const DemoModel& model, DGeode& geode)
{
  for (const DemoMesh& mesh : model.meshes) {
    if (mesh.indices.empty())
      continue;
    DMaterial* material = geode.AddMaterial();
    DGeob* geob = geode.AddGeob();
    material->name = mesh.material;
    material->className = "Standard";
    material->ambient = material->diffuse = DVector4(0.8f, 0.8f, 0.8f, 1.0f);
    auto texture = std::make_unique<DTexture>();
    texture->SetName(TextureOf(mesh.material).c_str());
    material->texture.push_back(std::move(texture));
    geob->materialRef = geode.GetNoofMaterials() - 1;
    for (const DemoVertex& v : mesh.vertices) {
      geob->vertex.push_back(v.position);
      geob->normal.push_back(v.normal);
      geob->texCoord[0].push_back(v.uv);
      geob->vertexColor.push_back(v.color);
    }
    for (const uint16_t i : mesh.indices)
      geob->index.push_back(i);
    DBurst burst;
    burst.count = 3 * geob->IndexCount();
    geob->AddBurst(burst);
  }
}

std::string ModelBytes(const DemoModel& model)
{
  DGeode geode;
  FillGeode(model, geode);
  const auto bytes = geode.ExportDOFBytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

DemoScenery DemoBuildScenery(const DemoCourse& course)
{
  DemoScenery scenery;
  DemoStrip strip(course);
  const DemoTerrain terrain(course, strip);
  DemoAddSky(scenery, course);
  strip.Emit(scenery);
  terrain.Emit(scenery);
  DemoAddFurniture(scenery, course, strip, terrain);
  DemoAddTrees(scenery, course, strip, terrain);
  return scenery;
}

std::vector<DemoFile> DemoTrackFiles(const DemoCourse& course, const DemoScenery& scenery)
{
  std::vector<DemoFile> files;
  for (const DemoNode& node : scenery.nodes)
    for (size_t level = 0; level < node.levels.size(); ++level)
      files.push_back({level == 0 ? node.name + ".dof" : node.name + "_lod" + std::to_string(level) + ".dof",
                       ModelBytes(node.levels[level])});
  for (const DemoPicture& picture : DemoPictures())
    files.push_back({picture.file, QWriteTGA(*picture.paint(), QBitMap::TGA)});
  files.push_back({"crowd.wav", DemoCrowdWave()});
  files.push_back({"water.wav", DemoWaterWave()});
  files.push_back({"track.rld", DemoRoadScan(scenery)});
  files.push_back({"track.shd", DemoShaderFile()});
  files.push_back({"geometry.ini", DemoGeometryIni(scenery)});
  files.push_back({"traffic.ini", DemoTrafficIni(course)});
  files.push_back({"spline.ini", DemoSplineIni(course)});
  files.push_back({"special.ini", DemoSpecialIni(course)});
  files.push_back({"track.ini", DemoTrackIni(course)}); // last: with it the track exists
  return files;
}

namespace {

// With what the files' names need below it. Said when it can't be.
bool MakeDirectories(const std::string& directory, const std::vector<DemoFile>& files)
{
  for (const DemoFile& file : files) {
    const auto wanted = std::filesystem::path(directory + "/" + file.name).parent_path();
    std::error_code error;
    std::filesystem::create_directories(wanted, error);
    if (error) {
      QERR("DemoWriteTrack(); can't make directory '%s'", wanted.c_str());
      return false;
    }
  }
  return true;
}

} // namespace

bool DemoWriteTrack(const std::string& root, const DemoCourse& course, const DemoScenery& scenery, bool exports)
{
  const std::string directory = root + "/data/tracks/" + course.name;
  std::vector<DemoFile> files = exports ? DemoExportFiles(scenery) : std::vector<DemoFile>();
  for (DemoFile& file : DemoTrackFiles(course, scenery))
    files.push_back(std::move(file));
  if (!MakeDirectories(directory, files))
    return false;
  QFileSet set;
  for (const DemoFile& file : files)
    if (!set.Add(directory + "/" + file.name, file.content)) {
      QERR("DemoWriteTrack(); can't write '%s/%s'", directory.c_str(), file.name.c_str());
      return false;
    }
  if (!set.Commit()) {
    QERR("DemoWriteTrack(); can't write the files of '%s'", directory.c_str());
    return false;
  }
  std::error_code error;
  std::filesystem::remove(directory + "/cache/trackcollision.bin", error); // of the models that stood here before
  return true;
}
