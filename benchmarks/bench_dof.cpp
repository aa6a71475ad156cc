// Loading a model of 78 MB with 3.5 M triangles, beside libraries that load the same arrays as GLB, and beside what
// the machine takes to read and check them.

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef PEER_TINYGLTF
#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#include <tiny_gltf.h>
#pragma GCC diagnostic pop
#endif
#ifdef PEER_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

namespace {

namespace fs = std::filesystem;
constexpr int GEOBS = 27;
constexpr int SIDE = 255; // vertices a side: 65,025 a geob, just below what an index can name

void FillGeob(DGeob& g, int n)
{
  for (int z = 0; z < SIDE; ++z)
    for (int x = 0; x < SIDE; ++x) {
      const auto fx = static_cast<float>(x);
      const auto fz = static_cast<float>(z);
      g.vertex.push_back({fx + static_cast<float>(n) * SIDE, fx * fz * 0.001f, fz});
      g.normal.push_back({0, 1, 0});
      g.texCoord[0].push_back({fx / SIDE, fz / SIDE});
    }
  for (int z = 0; z + 1 < SIDE; ++z)
    for (int x = 0; x + 1 < SIDE; ++x) {
      const int at = z * SIDE + x;
      for (const int corner : {at, at + SIDE, at + 1, at + 1, at + SIDE, at + SIDE + 1})
        g.index.push_back(static_cast<uint16_t>(corner));
    }
  g.AddBurst({0, 3 * g.IndexCount(), 0, 3});
}

// The arrays of a model as one GLB file: a mesh with a primitive for each geob.
class GlbWriter
{
public:
  explicit GlbWriter(const DGeode& geode)
  {
    for (const auto& g : geode.geob) {
      primitives += primitives.empty() ? "" : ",";
      primitives += "{\"attributes\":{\"POSITION\":" + Accessor(g->vertex, "VEC3", 5126, true);
      primitives += ",\"NORMAL\":" + Accessor(g->normal, "VEC3", 5126);
      primitives += ",\"TEXCOORD_0\":" + Accessor(g->texCoord[0], "VEC2", 5126);
      primitives += "},\"indices\":" + Accessor(g->index, "SCALAR", 5123) + "}";
    }
  }
  void Save(const std::string& path)
  {
    std::string json = "{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{\"nodes\":[0]}],"
                       "\"nodes\":[{\"mesh\":0}],\"meshes\":[{\"primitives\":[" +
                       primitives + "]}],\"accessors\":[" + accessors + "],\"bufferViews\":[" + views +
                       "],\"buffers\":[{\"byteLength\":" + std::to_string(data.size()) + "}]}";
    json.resize((json.size() + 3) / 4 * 4, ' ');
    std::ofstream out(path, std::ios::binary);
    const auto put = [&](size_t n) { out.write(reinterpret_cast<const char*>(&n), 4); };
    out << "glTF";
    put(2);
    put(12 + 8 + json.size() + 8 + data.size());
    put(json.size());
    out << "JSON" << json;
    put(data.size());
    out.write("BIN\0", 4);
    out << data;
  }

private:
  template <typename T>
  std::string Accessor(const DArray<T>& array, const char* type, int componentType, bool bounds = false)
  {
    const std::string number = std::to_string(count);
    views += (count ? ",{" : "{") + std::string("\"buffer\":0,\"byteOffset\":") + std::to_string(data.size()) +
             ",\"byteLength\":" + std::to_string(array.size() * sizeof(T)) + "}";
    accessors += (count ? ",{" : "{") + std::string("\"bufferView\":") + number +
                 ",\"componentType\":" + std::to_string(componentType) + ",\"count\":" + std::to_string(array.size()) +
                 ",\"type\":\"" + type + "\"" + (bounds ? ",\"min\":[-1e9,-1e9,-1e9],\"max\":[1e9,1e9,1e9]" : "") + "}";
    data.append(reinterpret_cast<const char*>(array.data()), array.size() * sizeof(T));
    data.resize((data.size() + 3) / 4 * 4);
    ++count;
    return number;
  }
  std::string primitives, accessors, views, data;
  size_t count = 0;
};

class Files
{
public:
  Files()
  {
    std::string name = (fs::temp_directory_path() / "pavex-bench-XXXXXX").string();
    directory = mkdtemp(name.data());
    DGlobals().texturesOn = false;
    QReports().quiet = true;
    DGeode geode("bench");
    geode.AddMaterial()->name = "ground";
    for (int i = 0; i < GEOBS; ++i)
      FillGeob(*geode.AddGeob(), i);
    if (!geode.ExportDOF(Dof()))
      std::exit(1);
    GlbWriter(geode).Save(Glb());
    size = fs::file_size(Dof());
  }
  ~Files() { fs::remove_all(directory); }
  std::string Dof() const { return (directory / "model.dof").string(); }
  std::string Glb() const { return (directory / "model.glb").string(); }
  uintmax_t size = 0;

private:
  fs::path directory;
};

const Files& TheFiles()
{
  static const Files files;
  return files;
}

template <typename Load>
void Measure(benchmark::State& state, Load load)
{
  TheFiles();
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    auto loaded = load();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    benchmark::DoNotOptimize(loaded);
    state.SetIterationTime(took.count()); // what was loaded goes outside the clock
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(TheFiles().size));
}

void Project(benchmark::State& state)
{
  Measure(state, [] {
    auto geode = std::make_unique<DGeode>("bench");
    if (!geode->ImportDOF(TheFiles().Dof()))
      std::exit(1);
    return geode;
  });
}

// One read into pages of 2 MB, the largest of all 16-bit numbers, the least of all floats: no arrays are made.
void Floor(benchmark::State& state)
{
  const size_t room = (TheFiles().size + (4 << 20)) / (2 << 20) * (2 << 20);
  void* block = nullptr;
  Measure(state, [&] {
    block = mmap(nullptr, room + (2 << 20), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    auto* at =
        reinterpret_cast<char*>((reinterpret_cast<uintptr_t>(block) + (2 << 20) - 1) & ~uintptr_t{(2 << 20) - 1});
    madvise(at, room, MADV_HUGEPAGE);
    const int file = open(TheFiles().Dof().c_str(), O_RDONLY);
    const ssize_t got = read(file, at, TheFiles().size);
    close(file);
    uint16_t largest[64] = {};
    const auto* numbers = reinterpret_cast<const uint16_t*>(at);
    for (size_t i = 0; i + 64 <= static_cast<size_t>(got) / 2; i += 64)
      for (size_t k = 0; k < 64; ++k)
        largest[k] = std::max(largest[k], numbers[i + k]);
    const int sum = *std::max_element(largest, largest + 64);
    return std::shared_ptr<void>(block, [sum, room](void* b) {
      benchmark::DoNotOptimize(sum);
      munmap(b, room + (2 << 20));
    });
  });
}

#ifdef PEER_TINYGLTF
void PeerTinygltf(benchmark::State& state)
{
  Measure(state, [] {
    auto model = std::make_unique<tinygltf::Model>();
    tinygltf::TinyGLTF loader;
    std::string error;
    std::string warning;
    if (!loader.LoadBinaryFromFile(model.get(), &error, &warning, TheFiles().Glb()))
      std::exit(1);
    return model;
  });
}
BENCHMARK(PeerTinygltf)
    ->Name("load/peer tinygltf (the same arrays as GLB)")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
#endif

#ifdef PEER_ASSIMP
void PeerAssimp(benchmark::State& state)
{
  Measure(state, [] {
    auto importer = std::make_unique<Assimp::Importer>();
    if (!importer->ReadFile(TheFiles().Glb(), 0))
      std::exit(1);
    return importer;
  });
}
BENCHMARK(PeerAssimp)
    ->Name("load/peer assimp (the same arrays as GLB)")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
#endif

void Save(benchmark::State& state)
{
  DGeode geode("bench");
  if (!geode.ImportDOF(TheFiles().Dof()))
    std::exit(1);
  Measure(state, [&] { return geode.ExportDOFBytes(); });
}

BENCHMARK(Project)->Name("load/project")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Floor)->Name("load/floor (read and check alone)")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Save)->Name("save to memory/project")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
