// Splitting a track of 1.5 million triangles in cells of 50 m: 46 models of the same few materials on 2 km by 2 km.

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "scene/worldgeodenode.h"
#include "support/unattendedui.h"
#include "tools/rtracksplitter.h"
#include "track/rtrackvrml.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
constexpr int MODELS = 46;
constexpr int SIDE = 128; // squares of a model: 32,768 triangles
constexpr int IN_ROW = 7; // models
constexpr int MATERIALS = 6;
constexpr float STEP = 2.2f; // metres

void AddStrip(DGeode& geode, int n, int strip)
{
  DGeob& g = *geode.AddGeob();
  g.materialRef = strip % MATERIALS;
  const int rows = SIDE / MATERIALS + (strip == 0 ? SIDE % MATERIALS : 0);
  const int firstRow = strip == 0 ? 0 : SIDE - (MATERIALS - strip) * (SIDE / MATERIALS);
  for (int z = 0; z <= rows; ++z)
    for (int x = 0; x <= SIDE; ++x) {
      const float fx = static_cast<float>(x + SIDE * (n % IN_ROW)) * STEP;
      const float fz = static_cast<float>(z + firstRow + SIDE * (n / IN_ROW)) * STEP;
      g.vertex.push_back({fx, 5 * std::sin(fx * 0.01f), fz});
      g.normal.push_back({0, 1, 0});
      g.texCoord[0].push_back({fx, fz});
    }
  for (int z = 0; z < rows; ++z)
    for (int x = 0; x < SIDE; ++x) {
      const int at = z * (SIDE + 1) + x;
      for (const int corner : {at, at + SIDE + 1, at + 1, at + 1, at + SIDE + 1, at + SIDE + 2})
        g.index.push_back(static_cast<uint16_t>(corner));
    }
  g.AddBurst({0, 3 * g.IndexCount(), 0, 3});
}

std::unique_ptr<RTrackVRML> MakeTrack()
{
  auto track = std::make_unique<RTrackVRML>();
  track->SetName("bench");
  for (int n = 0; n < MODELS; ++n) {
    auto model = std::make_unique<DGeode>("model" + std::to_string(n) + ".dof");
    for (int m = 0; m < MATERIALS; ++m)
      model->AddMaterial()->name = "material" + std::to_string(m);
    for (int m = 0; m < MATERIALS; ++m)
      AddStrip(*model, n, m);
    auto node = std::make_unique<RTrackNode>();
    node->sceneNode = std::make_unique<WorldGeodeNode>(nullptr, "model");
    node->sceneNode->SetGeode(std::move(model), "model");
    track->AddNode(std::move(node));
  }
  return track;
}

// In a directory of its own, in memory where there is one: the disk's own pace isn't what is measured.
void Split(benchmark::State& state)
{
  QReports().quiet = true;
  QReports().tap = [](auto, auto, auto) { return true; };
  const fs::path base =
      fs::exists("/dev/shm") && state.range(0) == 1 ? fs::path("/dev/shm") : fs::temp_directory_path();
  const fs::path root = base / ("pavex_split." + std::to_string(getpid()));
  const fs::path before = fs::current_path();
  fs::create_directories(root / "data/tracks/bench_split");
  fs::current_path(root);
  const auto track = MakeTrack();
  UnattendedUi ui;
  for (auto _ : state) {
    RTrackSplitter splitter(*track, ui);
    splitter.cellSize = 50;
    if (!splitter.Split() || !splitter.Unwritten().empty())
      state.SkipWithError("files are missing");
  }
  const auto files = std::distance(fs::directory_iterator(root / "data/tracks/bench_split"), fs::directory_iterator());
  state.counters["files"] = static_cast<double>(files);
  state.counters["triangles"] = MODELS * SIDE * SIDE * 2;
  fs::current_path(before);
  fs::remove_all(root);
}

BENCHMARK(Split)->Name("split/project, into memory")->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Split)->Name("split/project, onto the disk")->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
