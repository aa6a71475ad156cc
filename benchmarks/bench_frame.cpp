// A frame of 5,000 blocks without its drawing: what the walk, the culling, the sort and the state cache cost.
#include "geometry/dgeode.h"
#include "geometry/dpipe.h"
#include "geometry/dshader.h"
#include "scene/ddirector.h"
#include "scene/rendersort.h"
#include "scene/worldgeodenode.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

// Boxes in a square field seen from its edge: all of them in view, or most of them beside it.
class Field
{
public:
  Field(int count, float fov)
  {
    for (int i = 0; i < 60; ++i) {
      DShader& shader = *shaders.emplace_back(std::make_unique<DShader>());
      shader.sortKey = i % 5 == 0 ? 500 : 300;
      shader.layer.emplace_back();
      shader.layer.front().blendSrc = i % 5 == 0 ? 0x0302 : 1;
      shader.sortOffset = i;
    }
    uint32_t random = 1;
    for (int i = 0; i < count; ++i) {
      random = random * 1664525 + 1013904223;
      auto geode = WorldMakeStub();
      geode->GetMaterial(0)->shader = shaders[random >> 16 & 31].get();
      geode->Translate(static_cast<float>(i % 71) * 10 - 355, 0, static_cast<float>(i / 71) * -10 - 400);
      geode->GetGeob(0)->flags &= ~static_cast<uint32_t>(DGeob::BOX_VALID);
      auto node = std::make_unique<WorldGeodeNode>(&scene, "box");
      node->SetGeode(std::move(geode), "box");
      scene.AddNode(node.get());
      nodes.push_back(std::move(node));
    }
    camera.SetFOV(fov);
    rail.AddCamera(&camera);
    director.AddRail(&rail);
    director.SetRail(0, 0);
    scene.SetFrameport(0, &director, {0, 0, 1280, 800});
    scene.GetRenderer()->SetPipe(&DThePipe());
  }
  void Frame(float yaw)
  {
    camera.Go({0, 20, 0}, DVector3(0.0f), yaw, 0, 0);
    scene.Paint();
  }
  WorldScene scene;

private:
  std::vector<std::unique_ptr<DShader>> shaders;
  std::vector<std::unique_ptr<WorldGeodeNode>> nodes;
  DCameraAnimated camera;
  DRail rail;
  DDirector director;
};

void WholeFrame(benchmark::State& state)
{
  Field field(static_cast<int>(state.range(0)), static_cast<float>(state.range(1)));
  float yaw = 0;
  for (auto _ : state) {
    yaw = yaw > 5 ? -5 : yaw + 0.1f; // a turning view, so that the order is never the last frame's
    field.Frame(yaw);
  }
  state.counters["blocks"] = static_cast<double>(field.scene.GetRenderBlocks().size());
}
BENCHMARK(WholeFrame)
    ->Name("frame: walk, cull, sort, state")
    ->Args({5000, 120})
    ->Args({5000, 20})
    ->Args({650, 60})
    ->ArgNames({"nodes", "fov"})
    ->Unit(benchmark::kMicrosecond);

void Sort(benchmark::State& state)
{
  Field field(5000, 120);
  field.Frame(0);
  const auto blocks = field.scene.GetRenderBlocks();
  const std::vector<RenderBlock> unsorted(blocks.rbegin(), blocks.rend());
  RenderSorter sorter;
  std::vector<RenderBlock> list;
  for (auto _ : state) {
    list = unsorted;
    sorter.Sort(list);
  }
  state.counters["blocks"] = static_cast<double>(list.size());
}
BENCHMARK(Sort)->Name("frame: sort alone")->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
