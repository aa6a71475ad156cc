// Loading a cloud of 20 M points and 4 M triangles, 288 MB, beside what the machine takes to read the same bytes.

#include "foundation/qreport.h"
#include "geometry/daabbtreehd.h"
#include "track/rlidar.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#ifdef PEER_PCL_IO
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <pcl/io/pcd_io.h>
#include <pcl/point_types.h>
#pragma GCC diagnostic pop
#endif

namespace {

namespace fs = std::filesystem;
constexpr int WIDTH = 5000;
constexpr int DEPTH = 4000;

class CloudFile
{
public:
  CloudFile()
  {
    std::string name = (fs::temp_directory_path() / "pavex-bench-XXXXXX").string();
    directory = mkdtemp(name.data());
    QReports().quiet = true;
    RLidar cloud;
    cloud.points.reserve(size_t{WIDTH} * DEPTH);
    for (int y = 0; y < DEPTH; ++y)
      for (int x = 0; x < WIDTH; ++x) {
        const auto fx = static_cast<float>(x) * 0.2f, fy = static_cast<float>(y) * 0.2f;
        cloud.points.push_back({fx, fy, std::sin(fx * 0.01f) * 20 + std::cos(fy * 0.02f) * 10});
      }
    // Over a tenth of the points: two for a cell of 2000 by 1000.
    for (uint32_t y = 0; y < 1000; ++y)
      for (uint32_t x = 0; x < 2000; ++x) {
        const uint32_t a = y * WIDTH + x, b = a + WIDTH;
        cloud.triangles.insert(cloud.triangles.end(), {a, a + 1, b, a + 1, b + 1, b});
      }
    cloud.blocks = {{0, cloud.PointCount()}};
    if (!cloud.SaveRLD(Path()))
      std::exit(1);
    size = fs::file_size(Path());
  }
  ~CloudFile() { fs::remove_all(directory); }
  std::string Path() const { return (directory / "track.rld").string(); }
  uintmax_t size = 0;

private:
  fs::path directory;
};

const CloudFile& TheFile()
{
  static const CloudFile file;
  return file;
}

template <typename Load>
void Measure(benchmark::State& state, Load load)
{
  TheFile();
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    auto loaded = load();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    benchmark::DoNotOptimize(loaded);
    state.SetIterationTime(took.count()); // what was loaded goes outside the clock
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(TheFile().size));
}

void Load(benchmark::State& state, unsigned flags)
{
  Measure(state, [flags] {
    auto cloud = std::make_unique<RLidar>();
    if (!cloud->LoadRLD(TheFile().Path(), flags))
      std::exit(1);
    return cloud;
  });
}

void Project(benchmark::State& state)
{
  Load(state, RLidar::SWAP_AXES);
}

void ProjectWithBounds(benchmark::State& state)
{
  Load(state, RLidar::SWAP_AXES | RLidar::GET_BOUNDS);
}

void ProjectWithTree(benchmark::State& state)
{
  Measure(state, [] {
    auto cloud = std::make_unique<RLidar>();
    if (!cloud->LoadRLD(TheFile().Path(), RLidar::SWAP_AXES))
      std::exit(1);
    cloud->BuildTree();
    return cloud;
  });
}

// The bytes alone, into new pages of 2 MB.
void Floor(benchmark::State& state)
{
  const size_t page = size_t{2} << 20;
  const size_t room = (TheFile().size / page + 1) * page;
  Measure(state, [&] {
    void* block = mmap(nullptr, room + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    auto* at = reinterpret_cast<char*>((reinterpret_cast<uintptr_t>(block) + page - 1) & ~(page - 1));
    madvise(at, room, MADV_HUGEPAGE);
    const int file = open(TheFile().Path().c_str(), O_RDONLY);
    size_t done = 0;
    for (ssize_t got = 1; got > 0; done += static_cast<size_t>(got))
      got = read(file, at + done, TheFile().size - done);
    close(file);
    return std::shared_ptr<void>(block, [room, page](void* b) { munmap(b, room + page); });
  });
}

BENCHMARK(Project)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(ProjectWithBounds)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(ProjectWithTree)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(Floor)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

#ifdef PEER_PCL_IO
// The points alone: its file has no triangles.
void PeerPcl(benchmark::State& state)
{
  using Cloud = pcl::PointCloud<pcl::PointXYZ>;
  const std::string path = TheFile().Path() + ".pcd";
  {
    RLidar cloud;
    Cloud points;
    if (!cloud.LoadRLD(TheFile().Path()))
      std::exit(1);
    points.reserve(cloud.points.size());
    for (const DVector3& p : cloud.points)
      points.push_back({p.x, p.y, p.z});
    pcl::io::savePCDFileBinary(path, points);
  }
  Measure(state, [&path] {
    auto cloud = std::make_unique<Cloud>();
    if (pcl::io::loadPCDFile(path, *cloud) != 0)
      std::exit(1);
    return cloud;
  });
}
BENCHMARK(PeerPcl)->Name("peer PCL, points alone")->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
#endif

} // namespace

BENCHMARK_MAIN();
