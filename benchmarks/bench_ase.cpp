// Importing an exported scene of some 200 MB from the page cache, and welding what it gives; beside a walk over its
// tokens and numbers that keeps nothing, and another library's import.

#include "asescene.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"
#include "geometry/dglobal.h"
#include "geometry/dreadfile.h"
#include "geometry/dtextreader.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

#ifdef PEER_ASSIMP
#include <assimp/cimport.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif

namespace {

namespace fs = std::filesystem;

constexpr int OBJECTS = 24, SIDE = 104; // 519,168 triangles

// The scene, gone in the end.
class Scene
{
public:
  Scene()
  {
    QReports().quiet = true;
    QReports().tap = [](auto, auto, auto) { return true; };
    DGlobals().texturesOn = false;
    path = (fs::temp_directory_path() / ("pavex_bench." + std::to_string(getpid()) + ".ase")).string();
    AseScene scene(1);
    for (int i = 0; i < OBJECTS; ++i)
      scene.AddGround(i, SIDE, 0);
    std::ofstream(path, std::ios::binary) << scene.text;
    size = scene.text.size();
  }
  ~Scene() { fs::remove(path); }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  std::string path;
  size_t size = 0;
};

const Scene& TheScene()
{
  static const Scene scene;
  return scene;
}

void SetCounters(benchmark::State& state, size_t triangles)
{
  state.counters["MB"] = static_cast<double>(TheScene().size) / 1e6;
  state.counters["triangles"] = static_cast<double>(triangles);
}

void Import(benchmark::State& state, bool weld)
{
  const Scene& scene = TheScene();
  size_t triangles = 0;
  for (auto _ : state) {
    DGeode geode("scene");
    DArray<int32_t> faces;
    if (!geode.ImportASE(faces, scene.path))
      state.SkipWithError("not imported");
    if (weld)
      DGeodeMergeVertices(geode);
    triangles = 0;
    for (const auto& geob : geode.geob)
      triangles += geob->index.size() / 3;
  }
  SetCounters(state, triangles);
}
BENCHMARK_CAPTURE(Import, plain, false)->Name("import")->Unit(benchmark::kMillisecond)->MinWarmUpTime(1);
BENCHMARK_CAPTURE(Import, welded, true)->Name("import and weld")->Unit(benchmark::kMillisecond)->MinWarmUpTime(1);

void Tokens(benchmark::State& state)
{
  const Scene& scene = TheScene();
  double sum = 0;
  for (auto _ : state) {
    DArray<std::byte> content;
    if (!DReadFile(scene.path, content))
      state.SkipWithError("not read");
    DTextReader in({reinterpret_cast<const char*>(content.data()), content.size()});
    const size_t numbers = content.size() / 16; // one in sixteen bytes, about as many as there are
    for (size_t i = 0; i < numbers; ++i)
      sum += static_cast<double>(in.Float());
    for (std::string_view token; in.NextKeyword(token);) {
    }
  }
  benchmark::DoNotOptimize(sum);
  SetCounters(state, 0);
}
BENCHMARK(Tokens)->Name("floor: read, tokens, numbers")->Unit(benchmark::kMillisecond);

#ifdef PEER_ASSIMP
void Assimp(benchmark::State& state, unsigned steps)
{
  const Scene& scene = TheScene();
  size_t triangles = 0;
  for (auto _ : state) {
    const aiScene* read = aiImportFile(scene.path.c_str(), steps);
    triangles = 0;
    for (unsigned i = 0; read && i < read->mNumMeshes; ++i)
      triangles += read->mMeshes[i]->mNumFaces;
    aiReleaseImport(read);
  }
  SetCounters(state, triangles);
}
BENCHMARK_CAPTURE(Assimp, plain, 0U)->Name("peer assimp: import")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Assimp, welded, unsigned{aiProcess_JoinIdenticalVertices})
    ->Name("peer assimp: import and weld")
    ->Unit(benchmark::kMillisecond)
    ->MinWarmUpTime(1);
#endif

} // namespace

BENCHMARK_MAIN();
