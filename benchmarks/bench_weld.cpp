// Making an imported model compact: 46 geobs of 64,896 vertices, each triangle with corners of its own.

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>

#ifdef PEER_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

namespace {

constexpr int GEOBS = 46;
constexpr int SIDE = 104; // squares: 6 * 104 * 104 corners

void AddCorner(DGeob& g, int n, int x, int z)
{
  const auto fx = static_cast<float>(x);
  const auto fz = static_cast<float>(z);
  g.index.push_back(static_cast<uint16_t>(g.vertex.size()));
  g.vertex.push_back({fx * 0.7f + static_cast<float>(n) * SIDE, 3 * std::sin(fx * 0.1f + fz * 0.3f), fz * 0.7f});
  g.normal.push_back(DNormalized({0.3f * std::cos(fx * 0.1f + fz * 0.3f), 1, 0}));
  g.texCoord[0].push_back({fx / SIDE, fz / SIDE});
}

const DGeode& Imported()
{
  static const auto geode = [] {
    QReports().quiet = true;
    QReports().tap = [](auto, auto, auto) { return true; };
    auto made = std::make_unique<DGeode>();
    for (int n = 0; n < GEOBS; ++n) {
      DGeob& g = *made->AddGeob();
      for (int z = 0; z < SIDE; ++z)
        for (int x = 0; x < SIDE; ++x)
          for (const auto& [dx, dz] : {std::pair(0, 0), {0, 1}, {1, 0}, {1, 0}, {0, 1}, {1, 1}})
            AddCorner(g, n, x + dx, z + dz);
      g.AddBurst({0, 3 * g.IndexCount(), 0, 3});
    }
    return made;
  }();
  return *geode;
}

std::unique_ptr<DGeode> Copy()
{
  auto copy = std::make_unique<DGeode>();
  for (const auto& from : Imported().geob) {
    DGeob& g = *copy->AddGeob();
    g.index = from->index;
    g.vertex = from->vertex;
    g.normal = from->normal;
    g.texCoord[0] = from->texCoord[0];
    g.burst = from->burst;
  }
  return copy;
}

void Report(benchmark::State& state, size_t vertices)
{
  state.counters["vertices left"] = static_cast<double>(vertices);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * GEOBS * SIDE * SIDE * 6);
}

// One core: geob by geob, as a model of one geob is done.
void WeldPackSort(benchmark::State& state)
{
  size_t left = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto geode = Copy();
    left = 0;
    state.ResumeTiming();
    for (const auto& g : geode->geob) {
      DGeobMergeVertices(*g);
      DGeobPackIndices(*g);
      DGeobSortVertices(*g);
      left += g->vertex.size();
    }
    state.PauseTiming();
    geode.reset();
    state.ResumeTiming();
  }
  Report(state, left);
}

void WeldAlone(benchmark::State& state)
{
  for (auto _ : state) {
    state.PauseTiming();
    auto geode = Copy();
    state.ResumeTiming();
    benchmark::DoNotOptimize(DGeodeMergeVertices(*geode));
    state.PauseTiming();
    geode.reset();
    state.ResumeTiming();
  }
  Report(state, 0);
}

#ifdef PEER_MESHOPTIMIZER
// Remap table, indices and the three streams remapped, then order of first fetch, which the remap makes already.
size_t PeerWeld(DGeob& g)
{
  const meshopt_Stream streams[] = {{g.vertex.data(), sizeof(DVector3), sizeof(DVector3)},
                                    {g.normal.data(), sizeof(DVector3), sizeof(DVector3)},
                                    {g.texCoord[0].data(), sizeof(DVector2), sizeof(DVector2)}};
  const std::vector<unsigned> index(g.index.begin(), g.index.end());
  std::vector<unsigned> remap(g.vertex.size());
  const size_t left =
      meshopt_generateVertexRemapMulti(remap.data(), index.data(), index.size(), g.vertex.size(), streams, 3);
  std::vector<unsigned> newIndex(index.size());
  meshopt_remapIndexBuffer(newIndex.data(), index.data(), index.size(), remap.data());
  std::vector<DVector3> vertex(left);
  std::vector<DVector3> normal(left);
  std::vector<DVector2> texCoord(left);
  meshopt_remapVertexBuffer(vertex.data(), g.vertex.data(), g.vertex.size(), sizeof(DVector3), remap.data());
  meshopt_remapVertexBuffer(normal.data(), g.normal.data(), g.vertex.size(), sizeof(DVector3), remap.data());
  meshopt_remapVertexBuffer(texCoord.data(), g.texCoord[0].data(), g.vertex.size(), sizeof(DVector2), remap.data());
  benchmark::DoNotOptimize(vertex.data());
  benchmark::DoNotOptimize(normal.data());
  benchmark::DoNotOptimize(texCoord.data());
  return left;
}

void PeerMeshoptimizer(benchmark::State& state)
{
  auto geode = Copy();
  size_t left = 0;
  for (auto _ : state) {
    left = 0;
    for (const auto& g : geode->geob)
      left += PeerWeld(*g);
  }
  Report(state, left);
}
BENCHMARK(PeerMeshoptimizer)->Name("weld, pack, sort/peer meshoptimizer")->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(WeldPackSort)->Name("weld, pack, sort/project")->Unit(benchmark::kMillisecond);
BENCHMARK(WeldAlone)->Name("weld alone/project")->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
