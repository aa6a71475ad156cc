// Cutting exported scenes of some 200 MB apart, in memory where there is a directory for that: the disk's own pace
// isn't what is measured. The peers: cp, and a scan for line ends with a write of the same number of bytes to as many
// files.

#include "foundation/qreport.h"
#include "geometry/dblock.h"
#include "support/unattendedui.h"
#include "tools/asecut.h"
#include "tools/asecutmultisub.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string Header(int materials, int subMaterials)
{
  std::string text =
      "*3DSMAX_ASCIIEXPORT\t200\n*SCENE {\n}\n*MATERIAL_LIST {\n\t*MATERIAL_COUNT " + std::to_string(materials) + "\n";
  for (int m = 0; m < materials; ++m) {
    text += "\t*MATERIAL " + std::to_string(m) + " {\n\t\t*MATERIAL_NAME \"material" + std::to_string(m) + "\"\n";
    if (subMaterials > 0)
      text += "\t\t*NUMSUBMTLS " + std::to_string(subMaterials) + "\n";
    for (int s = 0; s < subMaterials; ++s)
      text += "\t\t*SUBMATERIAL " + std::to_string(s) + " {\n\t\t\t*MATERIAL_NAME \"sub" + std::to_string(s) +
              "\"\n\t\t}\n";
    text += "\t}\n";
  }
  return text + "}\n";
}

void AddObject(std::string& text, int number, int faces, int materials, int subMaterials)
{
  text += "*GEOMOBJECT {\n\t*NODE_NAME \"object" + std::to_string(number) + "\"\n\t*MESH {\n\t\t*MESH_NUMFACES " +
          std::to_string(faces) + "\n";
  char line[200];
  const auto put = [&](const char* format, auto... values) {
    std::snprintf(line, sizeof line, format, values...);
    text += line;
  };
  for (int i = 0; i < faces / 2; ++i)
    put("\t\t\t*MESH_VERTEX %4d\t%.4f\t%.4f\t%.4f\n", i, i * 0.37, i * 1.7, i * 0.01);
  for (int i = 0; i < faces; ++i)
    put("\t\t\t*MESH_FACE %4d:    A: %4d B: %4d C: %4d AB:    1 BC:    1 CA:    0\t *MESH_SMOOTHING 1 \t*MESH_MTLID "
        "%d\n",
        i, i / 2, i / 2 + 1, i / 2 + 2, subMaterials > 0 ? i % subMaterials : 0);
  put("\t\t*MESH_NUMTVFACES %d\n", faces);
  for (int i = 0; i < faces; ++i)
    put("\t\t\t*MESH_TFACE %d\t%d\t%d\t%d\n", i, i, i + 1, i + 2);
  for (int i = 0; i < faces; ++i) {
    put("\t\t\t*MESH_FACENORMAL %d\t%.4f\t%.4f\t%.4f\n", i, 0.1, 0.2, 0.9);
    for (int k = 0; k < 3; ++k)
      put("\t\t\t\t*MESH_VERTEXNORMAL %d\t%.4f\t%.4f\t%.4f\n", i / 2 + k, 0.1, 0.2, 0.9);
  }
  put("\t}\n\t*MATERIAL_REF %d\n}\n", number % materials);
}

// The current directory, gone in the end, with a scene in it.
class Place
{
public:
  Place(int objects, int faces, int subMaterials)
  {
    QReports().tap = [](auto, auto, auto) { return true; };
    path = (fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) /
           ("pavex_cut." + std::to_string(getpid()));
    fs::create_directories(path);
    fs::current_path(path);
    constexpr int MATERIALS = 20;
    std::string text = Header(MATERIALS, subMaterials);
    for (int i = 0; i < objects; ++i)
      AddObject(text, i, faces, MATERIALS, subMaterials);
    std::ofstream("scene.ase", std::ios::binary) << text;
    size = text.size();
  }
  ~Place()
  {
    fs::current_path("/");
    fs::remove_all(path);
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  // Between two runs: nothing of it counts.
  static void Clear(benchmark::State& state)
  {
    state.PauseTiming();
    fs::remove_all("output");
    state.ResumeTiming();
  }
  void Count(benchmark::State& state) const
  {
    size_t files = 0, bytes = 0;
    for (const auto& entry : fs::directory_iterator("output")) {
      ++files;
      bytes += entry.file_size();
    }
    state.counters["MB in"] = static_cast<double>(size) / 1e6;
    state.counters["MB out"] = static_cast<double>(bytes) / 1e6;
    state.counters["files"] = static_cast<double>(files);
  }

private:
  fs::path path;
  size_t size = 0;
};

constexpr int OBJECTS = 200, FACES = 2900;
constexpr int SUB_OBJECTS = 300, SUB_FACES = 1930, SUB_MATERIALS = 20;

void Cut(benchmark::State& state)
{
  const Place place(OBJECTS, FACES, 0);
  UnattendedUi ui;
  for (auto _ : state) {
    Place::Clear(state);
    if (!ASECut("scene.ase", ui))
      state.SkipWithError("not cut");
  }
  place.Count(state);
}

void CutMultiSub(benchmark::State& state)
{
  const Place place(SUB_OBJECTS, SUB_FACES, SUB_MATERIALS);
  UnattendedUi ui;
  for (auto _ : state) {
    Place::Clear(state);
    if (!ASECutMultiSub("scene.ase", "output", false, ui))
      state.SkipWithError("not cut");
  }
  place.Count(state);
}

void Copy(benchmark::State& state)
{
  const Place place(OBJECTS, FACES, 0);
  for (auto _ : state) {
    Place::Clear(state);
    if (std::system("mkdir -p output && cp scene.ase output/copy.ase") != 0)
      state.SkipWithError("not copied");
  }
  place.Count(state);
}

// Reads, finds every line end and writes as many bytes as a cutter to as many files: what none can do without.
void ScanAndWrite(benchmark::State& state, const Place& place, int files, double written)
{
  for (auto _ : state) {
    Place::Clear(state);
    fs::create_directory("output");
    DArray<char> text(fs::file_size("scene.ase"));
    std::ifstream("scene.ase", std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
    size_t lines = 0;
    for (const char* at = text.data();
         (at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(text.data() + text.size() - at))));
         ++at)
      ++lines;
    benchmark::DoNotOptimize(lines);
    const auto each = static_cast<size_t>(written * static_cast<double>(text.size()) / files);
    for (int i = 0; i < files; ++i)
      std::ofstream("output/" + std::to_string(i), std::ios::binary)
          .write(text.data() + static_cast<size_t>(i) * (text.size() - each) / static_cast<size_t>(files),
                 static_cast<std::streamsize>(each));
  }
  place.Count(state);
}

void ScanCut(benchmark::State& state)
{
  ScanAndWrite(state, Place(OBJECTS, FACES, 0), OBJECTS, 1);
}

void ScanMultiSub(benchmark::State& state)
{
  constexpr double TIMES = 2.26; // each part has all vertices of its object
  ScanAndWrite(state, Place(SUB_OBJECTS, SUB_FACES, SUB_MATERIALS), SUB_OBJECTS * SUB_MATERIALS, TIMES);
}

BENCHMARK(Cut)->Name("cut/project")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Copy)->Name("cut/cp")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ScanCut)->Name("cut/scan and write")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(CutMultiSub)->Name("cut-multisub/project")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ScanMultiSub)->Name("cut-multisub/scan and write")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
