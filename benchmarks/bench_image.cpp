// Reading pictures of 4096 x 4096 pixels, beside other readers of the same files and beside reading the file alone.

#include "foundation/qblock.h"
#include "foundation/qfile.h"
#include "foundation/qimage.h"
#include "foundation/qreport.h"
#include "foundation/qtga.h"
#include "geometry/ddds.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#ifdef PEER_STB
#include <stb/stb_image.h>
#endif
#ifdef PEER_IL
#include <IL/il.h>
#endif
#ifdef PEER_LIBTURBOJPEG
#include <turbojpeg.h>
#endif

namespace {

namespace fs = std::filesystem;
constexpr int SIDE = 4096;

// Smooth hills with grain on them, 0 to 255: three octaves of random lattices.
class Terrain
{
public:
  Terrain()
  {
    std::mt19937 random(7);
    for (float& v : lattice)
      v = static_cast<float>(random() % 1000) / 1000.0f;
    for (uint8_t& v : grain)
      v = static_cast<uint8_t>(random() % 12);
  }
  int At(int x, int y) const
  {
    const float hills = Octave(x, y, 512) * 120 + Octave(x, y, 64) * 80 + Octave(x, y, 16) * 40;
    return static_cast<int>(hills) + grain[static_cast<size_t>(y % 61 * 67 + x % 67)];
  }

private:
  static constexpr size_t WAVES = 64;
  float Corner(int x, int y) const
  {
    return lattice[static_cast<size_t>(y) % WAVES * WAVES + static_cast<size_t>(x) % WAVES];
  }
  float Octave(int x, int y, int size) const
  {
    const auto fx = static_cast<float>(x % size) / static_cast<float>(size);
    const auto fy = static_cast<float>(y % size) / static_cast<float>(size);
    const int cx = x / size, cy = y / size;
    const float above = Corner(cx, cy) * (1 - fx) + Corner(cx + 1, cy) * fx;
    const float below = Corner(cx, cy + 1) * (1 - fx) + Corner(cx + 1, cy + 1) * fx;
    return above * (1 - fy) + below * fy;
  }
  std::vector<float> lattice = std::vector<float>(WAVES * WAVES);
  std::vector<uint8_t> grain = std::vector<uint8_t>(61 * 67);
};

// A texture sheet in tiles of 128 pixels: grass and asphalt, where hardly two neighbours are alike, painted steps of a
// few pixels, and plain or invisible surfaces.
void Paint(QBitMap& picture)
{
  const Terrain terrain;
  for (int y = 0; y < SIDE; ++y)
    for (int x = 0; x < SIDE; ++x) {
      const int tile = x / 128 * 5 + y / 128 * 3;
      int v = terrain.At(x, y);
      if (tile % 4 == 1)
        v = v / 24 * 24;
      else if (tile % 4 == 2)
        v = tile * 7 % 240;
      const bool invisible = tile % 16 == 6;
      uint8_t* to = picture.GetPixelAddress(x, y);
      to[0] = static_cast<uint8_t>(invisible ? 0 : v * 3 / 4);
      to[1] = static_cast<uint8_t>(invisible ? 0 : v);
      to[2] = static_cast<uint8_t>(invisible ? 0 : v / 2 + 20);
      to[3] = invisible ? 0 : 255;
    }
}

// Packets of a row, a run for two equal pixels or more.
void AddRuns(const char* row, std::string& out)
{
  const auto same = [&](int a, int b) { return b < SIDE && std::memcmp(row + 4 * a, row + 4 * b, 4) == 0; };
  for (int x = 0; x < SIDE;) {
    int end = x + 1;
    while (end - x < 128 && same(x, end))
      ++end;
    if (end - x > 1) {
      out += static_cast<char>(0x80 | (end - x - 1));
      out.append(row + 4 * x, 4);
    } else {
      while (end < SIDE && end - x < 128 && !same(end, end + 1))
        ++end;
      out += static_cast<char>(end - x - 1);
      out.append(row + 4 * x, static_cast<size_t>(end - x) * 4);
    }
    x = end;
  }
}

// Opaque blocks of any colours and alpha indices, and as many levels as there are.
std::string DdsFile()
{
  std::mt19937 random(11);
  std::string file(128, '\0');
  const auto put = [&](size_t at, uint32_t v) { std::memcpy(file.data() + at, &v, sizeof v); };
  file.replace(0, 4, "DDS ");
  put(12, SIDE);
  put(16, SIDE);
  put(28, 13);
  put(80, 4);
  file.replace(84, 4, "DXT5");
  for (int side = SIDE; side > 0; side /= 2)
    for (int blocks = (side + 3) / 4 * ((side + 3) / 4); blocks > 0; --blocks) {
      const uint32_t words[4] = {0xFFFF | static_cast<uint32_t>(random()) << 16, static_cast<uint32_t>(random()),
                                 static_cast<uint32_t>(random()), static_cast<uint32_t>(random())};
      file.append(reinterpret_cast<const char*>(words), sizeof words);
    }
  return file;
}

class Files
{
public:
  Files()
  {
    std::string name = (fs::temp_directory_path() / "pavex-bench-XXXXXX").string();
    directory = mkdtemp(name.data());
    QReports().quiet = true;
    QBitMap picture(32, SIDE, SIDE);
    Paint(picture);
    const std::string plain = QWriteTGA(picture, QBitMap::TGA);
    std::string runs = plain.substr(0, 18);
    runs[2] = 10;
    for (size_t y = 0; y < SIDE; ++y)
      AddRuns(plain.data() + 18 + y * SIDE * 4, runs);
    Save("plain.tga", plain);
    Save("runs.tga", runs);
    Save("photo.jpg", picture.Encode("photo.jpg", QBitMap::JPG, 95));
    Save("blocks.dds", DdsFile());
  }
  ~Files() { fs::remove_all(directory); }
  std::string Path(const char* name) const { return (directory / name).string(); }

private:
  void Save(const char* name, const std::string& bytes) const
  {
    std::ofstream(directory / name, std::ios::binary) << bytes;
  }
  fs::path directory;
};

const Files& TheFiles()
{
  static const Files files;
  return files;
}

// What was read is given back outside the clock.
template <typename Load>
void Measure(benchmark::State& state, const char* file, Load load)
{
  const std::string path = TheFiles().Path(file);
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    auto loaded = load(path);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    if (!loaded)
      std::exit(1);
    benchmark::DoNotOptimize(loaded);
    state.SetIterationTime(took.count());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(fs::file_size(path)));
}

void Image(benchmark::State& state, const char* file)
{
  Measure(state, file, [](const std::string& path) {
    auto image = std::make_unique<QImage>(path);
    return image->LoadFailed() ? nullptr : std::move(image);
  });
}

void Dds(benchmark::State& state, const char* file)
{
  Measure(state, file, [](const std::string& path) {
    auto picture = std::make_unique<DDDS>();
    return picture->Load(path) ? std::move(picture) : nullptr;
  });
}

void Floor(benchmark::State& state, const char* file)
{
  Measure(state, file, [](const std::string& path) {
    auto block = std::make_unique<QBlock>();
    size_t size = 0;
    return QReadFile(path, *block, size) ? std::move(block) : nullptr;
  });
}

#ifdef PEER_STB
void PeerStb(benchmark::State& state, const char* file)
{
  Measure(state, file, [](const std::string& path) {
    int wid = 0;
    int hgt = 0;
    int channels = 0;
    return std::unique_ptr<stbi_uc, void (*)(void*)>(stbi_load(path.c_str(), &wid, &hgt, &channels, 4),
                                                     stbi_image_free);
  });
}
#endif

#ifdef PEER_IL
class DevilPicture
{
public:
  DevilPicture()
  {
    [[maybe_unused]] static const bool started = (ilInit(), true);
    number = ilGenImage();
    ilBindImage(number);
  }
  ~DevilPicture() { ilDeleteImage(number); }
  DevilPicture(const DevilPicture&) = delete;
  DevilPicture& operator=(const DevilPicture&) = delete;

private:
  ILuint number;
};

void PeerDevil(benchmark::State& state, const char* file)
{
  Measure(state, file, [](const std::string& path) {
    auto picture = std::make_unique<DevilPicture>();
    return ilLoadImage(path.c_str()) ? std::move(picture) : nullptr;
  });
}
#endif

#ifdef PEER_LIBTURBOJPEG
void PeerTurboJpeg(benchmark::State& state, const char* file)
{
  const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
  Measure(state, file, [&](const std::string& path) {
    std::vector<std::byte> bytes;
    std::unique_ptr<unsigned char, void (*)(unsigned char*)> pixels(nullptr, tjFree);
    if (!QReadFile(path, bytes))
      return pixels;
    const auto* from = reinterpret_cast<const unsigned char*>(bytes.data());
    pixels.reset(tjAlloc(SIDE * SIDE * 4));
    if (tjDecompress2(decoder.get(), from, bytes.size(), pixels.get(), SIDE, 0, SIDE, TJPF_RGBA, TJFLAG_BOTTOMUP) != 0)
      pixels.reset();
    return pixels;
  });
}
#endif

using Work = void (*)(benchmark::State&, const char*);

void Register(const std::string& name, Work work, const char* file)
{
  benchmark::RegisterBenchmark(name.c_str(), work, file)->UseManualTime()->Unit(benchmark::kMillisecond);
}

void RegisterAll()
{
  for (const char* file : {"plain.tga", "runs.tga"}) {
    const std::string kind = file;
    Register(kind + "/project", Image, file);
    Register(kind + "/floor (reading the file alone)", Floor, file);
#ifdef PEER_STB
    Register(kind + "/peer stb_image", PeerStb, file);
#endif
#ifdef PEER_IL
    Register(kind + "/peer DevIL", PeerDevil, file);
#endif
  }
  Register("photo.jpg/project", Image, "photo.jpg");
  Register("photo.jpg/floor (reading the file alone)", Floor, "photo.jpg");
#ifdef PEER_LIBTURBOJPEG
  Register("photo.jpg/peer TurboJPEG", PeerTurboJpeg, "photo.jpg");
#endif
  Register("blocks.dds/project", Dds, "blocks.dds");
  Register("blocks.dds/floor (reading the file alone)", Floor, "blocks.dds");
}

} // namespace

int main(int argc, char** argv)
{
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
