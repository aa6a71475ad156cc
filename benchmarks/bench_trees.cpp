// Trees over the triangles of a ground of 1 M triangles: building them, rays straight down, boxes and short segments,
// beside libraries that do the same.

#include "foundation/qreport.h"
#include "geometry/daabbtree.h"
#include "geometry/daabbtreehd.h"
#include "geometry/dgeode.h"
#include "geometry/dintersect.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#ifdef PEER_BULLET
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <BulletCollision/NarrowPhaseCollision/btRaycastCallback.h>
#include <btBulletCollisionCommon.h>
#pragma GCC diagnostic pop
#endif
#ifdef PEER_EMBREE
#include <embree3/rtcore.h>
#endif

namespace {

constexpr int SIDE = 708; // squares a side: 1,002,528 triangles
constexpr float STEP = 1; // metres
constexpr int QUERIES = 1 << 16;
constexpr DVector3 BOX(4, 2, 4);
constexpr float SEGMENT = 2;

float Height(float x, float z)
{
  return 8 * std::sin(x * 0.021f) * std::cos(z * 0.017f) + 0.4f * std::sin(x * 0.7f + z * 0.3f);
}

struct Ground
{
  Ground()
  {
    QReports().quiet = true;
    QReports().tap = [](auto, auto, auto) { return true; };
    for (int z = 0; z <= SIDE; ++z)
      for (int x = 0; x <= SIDE; ++x) {
        const float fx = static_cast<float>(x) * STEP;
        const float fz = static_cast<float>(z) * STEP;
        vertex.push_back({fx, Height(fx, fz), fz});
      }
    for (uint32_t z = 0; z < SIDE; ++z)
      for (uint32_t x = 0; x < SIDE; ++x) {
        const uint32_t at = z * (SIDE + 1) + x;
        for (const uint32_t corner : {at, at + SIDE + 1, at + 1, at + 1, at + SIDE + 1, at + SIDE + 2})
          index.push_back(corner);
      }
    std::mt19937 random(1);
    std::uniform_real_distribution<float> spread(5, SIDE * STEP - 5);
    std::uniform_real_distribution<float> turn(0, 6.28f);
    for (int i = 0; i < QUERIES; ++i) {
      const float x = spread(random);
      const float z = spread(random);
      place.push_back({x, Height(x, z), z});
      const float angle = turn(random);
      direction.push_back({std::cos(angle), -0.1f, std::sin(angle)});
      // A car at 50 m/s asks a hundred times a second, along a winding road.
      const float t = static_cast<float>(i) * 0.5f;
      const float along = std::fmod(t, 600.0f) + 50;
      drive.push_back({along, 30, 350 + 200 * std::sin(t * 0.004f)});
    }
  }
  int64_t Faces() const { return static_cast<int64_t>(index.size() / 3); }
  DVector3 Corner(size_t i) const { return vertex[index[i]]; }

  DArray<DVector3> vertex; // as scans are kept: on large pages
  DArray<uint32_t> index;
  std::vector<DVector3> place; // on the ground
  std::vector<DVector3> direction;
  std::vector<DVector3> drive;
};

const Ground& TheGround()
{
  static const Ground ground;
  return ground;
}

void SetItems(benchmark::State& state, int64_t each)
{
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * each);
}

// --- the project's

void FillTree(DAABBTree& tree)
{
  const Ground& g = TheGround();
  tree.Reserve(static_cast<size_t>(g.Faces()));
  for (size_t i = 0; i < g.index.size(); i += 3)
    tree.AddPoly({{g.Corner(i), g.Corner(i + 1), g.Corner(i + 2)}, static_cast<int>(i / 3)});
}

const DAABBTree& TheTree()
{
  static DAABBTree tree;
  if (tree.PolyCount() == 0) {
    FillTree(tree);
    tree.Finish();
  }
  return tree;
}

const DAabbTreeHd& TheTreeHd()
{
  static DAabbTreeHd tree(TheGround().vertex, TheGround().index);
  tree.Build();
  return tree;
}

void BuildTree(benchmark::State& state)
{
  TheGround();
  for (auto _ : state) {
    state.PauseTiming();
    auto tree = std::make_unique<DAABBTree>();
    FillTree(*tree);
    state.ResumeTiming();
    tree->Finish();
    state.PauseTiming();
    tree.reset();
    state.ResumeTiming();
  }
  SetItems(state, TheGround().Faces());
}
BENCHMARK(BuildTree)->Name("tree build: DAABBTree")->Unit(benchmark::kMillisecond);

void BuildTreeHd(benchmark::State& state)
{
  const Ground& g = TheGround();
  for (auto _ : state) {
    DAabbTreeHd tree(g.vertex, g.index);
    tree.Build();
    benchmark::DoNotOptimize(tree.NodeCount());
  }
  SetItems(state, g.Faces());
}
BENCHMARK(BuildTreeHd)->Name("tree build: DAabbTreeHd")->Unit(benchmark::kMillisecond);

void DownHd(benchmark::State& state, const std::vector<DVector3>& from, float above)
{
  const DAabbTreeHd& tree = TheTreeHd();
  DAabbTreeHdQuery query;
  query.length = 60;
  for (auto _ : state) {
    int hits = 0;
    for (const DVector3& p : from) {
      query.from = {p.x, p.y + above, p.z};
      hits += tree.Query(query);
    }
    if (hits != QUERIES)
      state.SkipWithError("a ray missed the ground");
  }
  SetItems(state, QUERIES);
}
BENCHMARK_CAPTURE(DownHd, random, TheGround().place, 30.0f)->Name("rays down, random: DAabbTreeHd");
BENCHMARK_CAPTURE(DownHd, drive, TheGround().drive, 0.0f)->Name("rays down, along a drive: DAabbTreeHd");

void BoxQuery(benchmark::State& state)
{
  const DAABBTree& tree = TheTree();
  int64_t met = 0;
  for (auto _ : state)
    for (const DVector3& p : TheGround().place)
      tree.Query(DBox{p - BOX * 0.5f, p + BOX * 0.5f}, [&](const DAABBPolyInfo& poly) {
        met += poly.user & 1;
        return true;
      });
  benchmark::DoNotOptimize(met);
  SetItems(state, QUERIES);
}
BENCHMARK(BoxQuery)->Name("box of 4x2x4 m: DAABBTree");

void SegmentQuery(benchmark::State& state)
{
  const DAABBTree& tree = TheTree();
  const Ground& g = TheGround();
  int64_t hits = 0;
  for (auto _ : state)
    for (size_t i = 0; i < g.place.size(); ++i) {
      const DVector3 from = g.place[i] + DVector3(0, 0.1f, 0);
      const DVector3 direction = g.direction[i];
      tree.Query(DAABB::FromSegment(from, direction, SEGMENT), [&](const DAABBPolyInfo& poly) {
        float t = 0;
        const bool isHit = RayTriangle(from, direction, poly.corner[0], poly.corner[1], poly.corner[2], t, SEGMENT);
        hits += isHit;
        return !isHit;
      });
    }
  benchmark::DoNotOptimize(hits);
  SetItems(state, QUERIES);
}
BENCHMARK(SegmentQuery)->Name("segment of 2 m: DAABBTree");

// --- peers

#ifdef PEER_BULLET
struct BulletMesh
{
  BulletMesh() :
      array(static_cast<int>(TheGround().Faces()),
            const_cast<int*>(reinterpret_cast<const int*>(TheGround().index.data())), 12,
            static_cast<int>(TheGround().vertex.size()), const_cast<float*>(&TheGround().vertex[0].x), 12),
      shape(&array, true)
  {}
  btTriangleIndexVertexArray array;
  btBvhTriangleMeshShape shape;
};

const BulletMesh& TheBulletMesh()
{
  static const BulletMesh mesh;
  return mesh;
}

btVector3 Bt(const DVector3& v)
{
  return {v.x, v.y, v.z};
}

struct CountTriangles : btTriangleCallback
{
  void processTriangle(btVector3*, int, int index) override { met += index & 1; }
  int64_t met = 0;
};

struct NearestTriangle : btTriangleRaycastCallback
{
  using btTriangleRaycastCallback::btTriangleRaycastCallback;
  btScalar reportHit(const btVector3&, btScalar fraction, int, int) override
  {
    isHit = true;
    return fraction;
  }
  bool isHit = false;
};

void BuildBullet(benchmark::State& state)
{
  TheGround();
  for (auto _ : state)
    benchmark::DoNotOptimize(std::make_unique<BulletMesh>());
  SetItems(state, TheGround().Faces());
}
BENCHMARK(BuildBullet)->Name("tree build: peer Bullet")->Unit(benchmark::kMillisecond);

void DownBullet(benchmark::State& state, const std::vector<DVector3>& from, float above)
{
  auto& shape = const_cast<btBvhTriangleMeshShape&>(TheBulletMesh().shape);
  int64_t hits = 0;
  for (auto _ : state)
    for (const DVector3& p : from) {
      const btVector3 top = Bt(p + DVector3(0, above, 0));
      const btVector3 bottom = top - btVector3(0, 60, 0);
      NearestTriangle nearest(top, bottom);
      shape.performRaycast(&nearest, top, bottom);
      hits += nearest.isHit;
    }
  benchmark::DoNotOptimize(hits);
  SetItems(state, QUERIES);
}
BENCHMARK_CAPTURE(DownBullet, random, TheGround().place, 30.0f)->Name("rays down, random: peer Bullet");
BENCHMARK_CAPTURE(DownBullet, drive, TheGround().drive, 0.0f)->Name("rays down, along a drive: peer Bullet");

void BoxBullet(benchmark::State& state)
{
  const BulletMesh& mesh = TheBulletMesh();
  CountTriangles count;
  for (auto _ : state)
    for (const DVector3& p : TheGround().place)
      mesh.shape.processAllTriangles(&count, Bt(p - BOX * 0.5f), Bt(p + BOX * 0.5f));
  benchmark::DoNotOptimize(count.met);
  SetItems(state, QUERIES);
}
BENCHMARK(BoxBullet)->Name("box of 4x2x4 m: peer Bullet");

void SegmentBullet(benchmark::State& state)
{
  auto& shape = const_cast<btBvhTriangleMeshShape&>(TheBulletMesh().shape);
  const Ground& g = TheGround();
  int64_t hits = 0;
  for (auto _ : state)
    for (size_t i = 0; i < g.place.size(); ++i) {
      const btVector3 from = Bt(g.place[i] + DVector3(0, 0.1f, 0));
      const btVector3 to = from + Bt(g.direction[i]) * SEGMENT;
      NearestTriangle nearest(from, to);
      shape.performRaycast(&nearest, from, to);
      hits += nearest.isHit;
    }
  benchmark::DoNotOptimize(hits);
  SetItems(state, QUERIES);
}
BENCHMARK(SegmentBullet)->Name("segment of 2 m: peer Bullet");
#endif

#ifdef PEER_EMBREE
// A scene of the ground on one thread.
struct EmbreeScene
{
  explicit EmbreeScene(RTCBuildQuality quality) :
      device(rtcNewDevice("threads=1")), scene(rtcNewScene(device)),
      mesh(rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE))
  {
    const Ground& g = TheGround();
    rtcSetSharedGeometryBuffer(mesh, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, g.vertex.data(), 0, 12,
                               g.vertex.size() - 1); // it reads 16 bytes a vertex
    rtcSetSharedGeometryBuffer(mesh, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, g.index.data(), 0, 12,
                               static_cast<size_t>(g.Faces() - 2));
    rtcSetGeometryBuildQuality(mesh, quality);
    rtcSetSceneBuildQuality(scene, quality);
    rtcCommitGeometry(mesh);
    rtcAttachGeometry(scene, mesh);
  }
  ~EmbreeScene()
  {
    rtcReleaseGeometry(mesh);
    rtcReleaseScene(scene);
    rtcReleaseDevice(device);
  }
  EmbreeScene(const EmbreeScene&) = delete;
  EmbreeScene& operator=(const EmbreeScene&) = delete;
  RTCDevice device;
  RTCScene scene;
  RTCGeometry mesh;
};

void BuildEmbree(benchmark::State& state, RTCBuildQuality quality)
{
  TheGround();
  for (auto _ : state) {
    EmbreeScene embree(quality);
    rtcCommitScene(embree.scene);
  }
  SetItems(state, TheGround().Faces());
}
BENCHMARK_CAPTURE(BuildEmbree, low, RTC_BUILD_QUALITY_LOW)
    ->Name("tree build: peer Embree, low quality")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BuildEmbree, medium, RTC_BUILD_QUALITY_MEDIUM)
    ->Name("tree build: peer Embree, medium quality")
    ->Unit(benchmark::kMillisecond);

void DownEmbree(benchmark::State& state, const std::vector<DVector3>& from, float above)
{
  static EmbreeScene embree(RTC_BUILD_QUALITY_MEDIUM);
  rtcCommitScene(embree.scene);
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  int64_t hits = 0;
  for (auto _ : state)
    for (const DVector3& p : from) {
      RTCRay ray{};
      ray.org_x = p.x;
      ray.org_y = p.y + above;
      ray.org_z = p.z;
      ray.dir_y = -1;
      ray.tfar = 60;
      ray.mask = ~0U;
      rtcOccluded1(embree.scene, &context, &ray);
      hits += ray.tfar < 0;
    }
  benchmark::DoNotOptimize(hits);
  SetItems(state, QUERIES);
}
BENCHMARK_CAPTURE(DownEmbree, random, TheGround().place, 30.0f)->Name("rays down, random: peer Embree, any hit");
BENCHMARK_CAPTURE(DownEmbree, drive, TheGround().drive, 0.0f)->Name("rays down, along a drive: peer Embree, any hit");
#endif

} // namespace

BENCHMARK_MAIN();
