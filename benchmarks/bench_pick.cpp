// Picking on a model of 1 M triangles: by the model's tree and by a scan over all triangles; rays as a camera over the
// ground sends them, and straight down.

#include "geometry/dgeode.h"
#include "geometry/dintersect.h"
#include "geometry/dpicktree.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

namespace {

constexpr int TILES = 12;   // a side, each a geob
constexpr int SQUARES = 59; // a tile's side: 1,002,528 triangles in all
constexpr int RAYS = 1 << 14;

struct RayOf
{
  DVector3 origin;
  DVector3 direction;
};

struct Ground
{
  Ground()
  {
    for (int tile = 0; tile < TILES * TILES; ++tile)
      AddTile(static_cast<float>(tile % TILES * SQUARES), static_cast<float>(tile / TILES * SQUARES));
    std::mt19937 random(1);
    std::uniform_real_distribution<float> spread(5, TILES * SQUARES - 5);
    std::uniform_real_distribution<float> over(10, 100);
    for (int i = 0; i < RAYS; ++i) {
      const DVector3 eye(spread(random), over(random), spread(random));
      const DVector3 at(spread(random), 0, spread(random));
      camera.push_back({eye, DNormalized(at - eye)});
      down.push_back({eye, {0, -1, 0}});
      const float t = static_cast<float>(i) * 0.001f; // a drag: each beside the one before
      const DVector3 beside(300 + 50 * std::sin(t), 0, 300 + 30 * std::cos(t * 1.3f));
      drag.push_back({{350, 60, 420}, DNormalized(beside - DVector3(350, 60, 420))});
    }
  }
  static float Height(float x, float z)
  {
    return 8 * std::sin(x * 0.021f) * std::cos(z * 0.017f) + 0.4f * std::sin(x * 0.7f + z * 0.3f);
  }
  void AddTile(float fromX, float fromZ)
  {
    DGeob& g = *geode.AddGeob();
    for (int z = 0; z <= SQUARES; ++z)
      for (int x = 0; x <= SQUARES; ++x) {
        const float fx = fromX + static_cast<float>(x);
        const float fz = fromZ + static_cast<float>(z);
        g.vertex.push_back({fx, Height(fx, fz), fz});
      }
    for (int z = 0; z < SQUARES; ++z)
      for (int x = 0; x < SQUARES; ++x) {
        const int at = z * (SQUARES + 1) + x;
        for (const int corner : {at, at + SQUARES + 1, at + 1, at + 1, at + SQUARES + 1, at + SQUARES + 2})
          g.index.push_back(static_cast<uint16_t>(corner));
      }
  }
  DGeode geode;
  std::vector<RayOf> camera;
  std::vector<RayOf> down;
  std::vector<RayOf> drag;
};

const Ground& TheGround()
{
  static const Ground ground;
  return ground;
}

template <typename Pick>
void Run(benchmark::State& state, const std::vector<RayOf>& rays, size_t count, Pick pick)
{
  GeodeHit hit;
  pick(TheGround().geode, rays[0].origin, rays[0].direction, hit);
  int64_t hits = 0;
  for (auto _ : state)
    for (size_t i = 0; i < count; ++i)
      hits += pick(TheGround().geode, rays[i].origin, rays[i].direction, hit);
  benchmark::DoNotOptimize(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * count));
}

void BuildIndex(benchmark::State& state)
{
  TheGround();
  for (auto _ : state)
    benchmark::DoNotOptimize(std::make_unique<DPickTree>(TheGround().geode));
}
BENCHMARK(BuildIndex)->Name("pick: the index of 1 M triangles")->Unit(benchmark::kMillisecond);

void ByTree(benchmark::State& state, const std::vector<RayOf>& rays)
{
  Run(state, rays, rays.size(), PickGeode);
}
BENCHMARK_CAPTURE(ByTree, camera, TheGround().camera)->Name("pick on 1 M triangles: camera rays");
BENCHMARK_CAPTURE(ByTree, drag, TheGround().drag)->Name("pick on 1 M triangles: along a drag");
BENCHMARK_CAPTURE(ByTree, down, TheGround().down)->Name("pick on 1 M triangles: straight down");

void ByScan(benchmark::State& state)
{
  Run(state, TheGround().camera, 16, IntersectRayGeode);
}
BENCHMARK(ByScan)->Name("pick on 1 M triangles: plain scan")->Unit(benchmark::kMillisecond);

// Both ways over all rays; an error where they differ.
void Compare(benchmark::State& state)
{
  const Ground& g = TheGround();
  for (auto _ : state)
    for (const auto* rays : {&g.camera, &g.drag, &g.down})
      for (size_t i = 0; i < rays->size(); i += 64) {
        GeodeHit scanned;
        GeodeHit picked;
        const RayOf& ray = (*rays)[i];
        IntersectRayGeode(g.geode, ray.origin, ray.direction, scanned);
        PickGeode(g.geode, ray.origin, ray.direction, picked);
        if (scanned.geob != picked.geob || scanned.triangle != picked.triangle || scanned.t != picked.t)
          state.SkipWithError("the tree found another triangle than the scan");
      }
}
BENCHMARK(Compare)->Name("pick: both ways alike on 768 rays")->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
