// Opening a track of 2,000 models with 1.5 M triangles and 300 pictures of 1024x1024, beside reading those files and
// decoding those pictures with nothing else done; and saving one of 10,000 nodes. The files are in the page cache, the
// collision cache is valid. Wall time; CPU time stands beside it.
#include "foundation/qimage.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "physics/pnewtonworld.h"
#include "scene/worldscene.h"
#include "support/tempdir.h"
#include "track/rsurfacetree.h"
#include "track/rtrackcam.h"
#include "track/rtrackvrml.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int MODELS = 2000;
constexpr int PICTURES = 300;
constexpr int COLUMNS = 25, ROWS = 15; // of a model: 750 triangles
constexpr int PICTURE_SIZE = 1024;

// A data root with a track, in which the process works from the first row to the last.
class Root
{
public:
  Root() : inside(root.Path())
  {
    QReports().quiet = true;
    QReports().tap = [](auto, auto, auto) { return true; };
  }
  void Write(const std::string& track, const std::string& leaf, std::string_view content) const
  {
    root.Write("data/tracks/" + track + "/" + leaf, content);
  }
  std::string Directory(const std::string& track) const { return root.Path("data/tracks/" + track); }

private:
  TempDir root;
  InDirectory inside;
};

std::string Bytes(const DGeode& geode)
{
  const DArray<std::byte> bytes = geode.ExportDOFBytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A tile of ground.
std::string Model(int number)
{
  DGeode geode("tile");
  geode.AddMaterial()->name = "mat" + std::to_string(number % PICTURES);
  DGeob& g = *geode.AddGeob();
  const float fromX = static_cast<float>(number % 45 * COLUMNS);
  const float fromZ = static_cast<float>(number / 45 * ROWS);
  for (int z = 0; z <= ROWS; ++z)
    for (int x = 0; x <= COLUMNS; ++x) {
      g.vertex.push_back(
          {fromX + static_cast<float>(x), static_cast<float>(x * z % 7) * 0.1f, fromZ + static_cast<float>(z)});
      g.normal.push_back({0, 1, 0});
      g.texCoord[0].push_back({static_cast<float>(x) * 0.1f, static_cast<float>(z) * 0.1f});
    }
  for (int z = 0; z < ROWS; ++z)
    for (int x = 0; x < COLUMNS; ++x) {
      const int at = z * (COLUMNS + 1) + x;
      for (const int corner : {at, at + COLUMNS + 1, at + 1, at + 1, at + COLUMNS + 1, at + COLUMNS + 2})
        g.index.push_back(static_cast<uint16_t>(corner));
    }
  g.burst.push_back({.start = 0, .count = static_cast<int>(g.index.size()), .mtlID = 0});
  return Bytes(geode);
}

std::string Picture()
{
  QBitMap picture(32, PICTURE_SIZE, PICTURE_SIZE);
  for (int i = 0; i < picture.GetMemSize(); ++i)
    picture.GetBuffer()[i] = static_cast<uint8_t>((i * 2654435761U) >> 13);
  return picture.Encode("picture.tga", QBitMap::TGA);
}

const Root& TheRoot()
{
  static const Root root;
  return root;
}

void Identify(const std::string& track)
{
  TheRoot().Write(track, "track.ini", "track\n{\n  name=Big\n  id=" + track + "\n}\n");
}

// Once; leaves the collision cache behind.
const Root& BigTrack()
{
  static bool written = false;
  const Root& root = TheRoot();
  if (written)
    return root;
  written = true;
  Identify("big");
  std::string geometry = "objects\n{\n";
  for (int i = 0; i < MODELS; ++i) {
    const std::string name = "tile" + std::to_string(i);
    geometry += "  " + name + "\n  {\n    file=" + name + ".dof\n    flags=6\n  }\n";
    root.Write("big", name + ".dof", Model(i));
  }
  root.Write("big", "geometry.ini", geometry + "}\n");
  std::string shaders;
  const std::string picture = Picture();
  for (int i = 0; i < PICTURES; ++i) {
    const std::string number = std::to_string(i);
    shaders += "shader_mat" + number + "\n{\n  layer0\n  {\n    map=pic" + number + ".tga\n  }\n}\n";
    root.Write("big", "pic" + number + ".tga", picture);
  }
  root.Write("big", "track.shd", shaders);
  return root;
}

struct Opened
{
  Opened()
  {
    world = std::make_unique<PNewtonWorld>();
    scene = std::make_unique<WorldScene>();
    track = std::make_unique<RTrackVRML>(RTrackHost{.scene = scene.get(), .physics = world.get()});
    track->SetName("big");
    loaded = track->Load();
  }
  std::unique_ptr<PNewtonWorld> world;
  std::unique_ptr<WorldScene> scene;
  std::unique_ptr<RTrackVRML> track;
  bool loaded = false;
};

void Open(benchmark::State& state)
{
  BigTrack();
  static_cast<void>(Opened()); // writes the cache
  for (auto _ : state) {
    auto opened = std::make_unique<Opened>();
    state.PauseTiming();
    if (!opened->loaded || opened->track->nodes.Count() != MODELS)
      state.SkipWithError("the track didn't load");
    state.counters["surface polys"] = opened->track->SurfaceTree()->Tree().PolyCount();
    opened.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(Open)->Name("open 2,000 models, 300 pictures")->Unit(benchmark::kMillisecond)->Iterations(10);

void Floor(benchmark::State& state)
{
  const std::string directory = BigTrack().Directory("big");
  for (auto _ : state) {
    size_t bytes = 0;
    std::vector<std::unique_ptr<QImage>> pictures;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
      if (!entry.is_regular_file())
        continue;
      if (entry.path().extension() == ".tga")
        bytes += static_cast<size_t>(QImage(entry.path().string()).GetMemSize());
      else
        bytes += FileText(entry.path().string()).size();
    }
    benchmark::DoNotOptimize(bytes);
  }
}
BENCHMARK(Floor)->Name("floor: read the files, decode the pictures")->Unit(benchmark::kMillisecond)->Iterations(10);

constexpr int NODES = 10000, CAMERAS = 200, WAY_POINTS = 4999, LINES = 5000;

// Once; its first save makes the files that the timed ones replace.
std::unique_ptr<RTrackVRML> FullTrack()
{
  Identify("full");
  std::string geometry = "objects\n{\n";
  DGeode speck("speck");
  speck.AddMaterial()->name = "speck";
  DGeob& g = *speck.AddGeob();
  g.vertex = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}};
  g.index = {0, 1, 2};
  TheRoot().Write("full", "speck.dof", Bytes(speck));
  for (int i = 0; i < NODES; ++i)
    geometry += "  node" + std::to_string(i) + "\n  {\n    file=speck.dof\n    flags=6\n  }\n";
  TheRoot().Write("full", "geometry.ini", geometry + "}\n");
  auto track = std::make_unique<RTrackVRML>();
  track->SetName("full");
  if (!track->Load())
    return nullptr;
  for (int i = track->trackCams.Count(); i < CAMERAS; ++i) { // a load makes one
    auto camera = std::make_unique<RTrackCam>();
    camera->pos = {static_cast<float>(i) * 0.37f, 3, 1.5f};
    camera->radius = 50;
    if (!track->AddTrackCam(std::move(camera)))
      return nullptr;
  }
  for (int i = 0; i < WAY_POINTS; ++i)
    if (RTrafficWayPoint* point = track->trafficGrid.wayPoints.Add({}))
      point->pos = {static_cast<float>(i) * 1.37f, 0.25f, 7};
  for (int i = 0; i < LINES; ++i) {
    RSplineLine line;
    line.left = {-4, 0.125f, static_cast<float>(i) * 2.3f};
    line.right = {4, 0.125f, static_cast<float>(i) * 2.3f};
    track->splines.AddLine(line);
  }
  return track;
}

void Save(benchmark::State& state)
{
  static const auto track = FullTrack();
  if (!track || track->nodes.Count() != NODES || !track->Save()) {
    state.SkipWithError("the track can't be saved");
    return;
  }
  for (auto _ : state)
    if (!track->Save())
      state.SkipWithError("a save failed");
}
BENCHMARK(Save)->Name("save 10,000 nodes, 200 cameras, 4,999 way points, 5,000 lines")->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
