// Compressing and decompressing what a track is made of, beside general compressors on the same blocks.

#include "foundation/qarchivecoder.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#ifdef PEER_LIBLZ4
#include <lz4.h>
#endif
#ifdef PEER_ZLIB
#include <zlib.h>
#endif

namespace {

using Bytes = std::vector<uint8_t>;
constexpr size_t SIZE = 8 << 20;

// Pieces of terrain as they lie in a model file: an array each of positions, normals, texture coordinates, indices.
Bytes ModelBytes()
{
  constexpr int SIDE = 64;
  Bytes bytes;
  std::vector<float> positions, normals, texcoords;
  std::vector<uint16_t> indices;
  const auto append = [&bytes](const auto& values) {
    const auto raw = std::as_bytes(std::span(values));
    const auto* first = reinterpret_cast<const uint8_t*>(raw.data());
    bytes.insert(bytes.end(), first, first + raw.size());
  };
  for (int piece = 0; bytes.size() < SIZE; ++piece) {
    for (auto* values : {&positions, &normals, &texcoords})
      values->clear();
    indices.clear();
    for (int i = 0; i < SIDE * SIDE; ++i) {
      const auto x = static_cast<float>(i % SIDE), z = static_cast<float>(i / SIDE + piece * SIDE);
      const float height = std::sin(x * 0.1f) * std::cos(z * 0.1f) * 5;
      const float slope[] = {-std::cos(x * 0.1f) * std::cos(z * 0.1f) / 8, std::sin(x * 0.1f) * std::sin(z * 0.1f) / 8};
      const float length = std::sqrt(slope[0] * slope[0] + slope[1] * slope[1] + 1);
      positions.insert(positions.end(), {x * 4, height, z * 4});
      normals.insert(normals.end(), {slope[0] / length, 1 / length, slope[1] / length});
      texcoords.insert(texcoords.end(), {x / 8, z / 8});
      if (i % SIDE < SIDE - 1 && i / SIDE < SIDE - 1)
        for (const int corner : {i, i + SIDE, i + 1, i + 1, i + SIDE, i + SIDE + 1})
          indices.push_back(static_cast<uint16_t>(corner));
    }
    append(positions);
    append(normals);
    append(texcoords);
    append(indices);
  }
  bytes.resize(SIZE);
  return bytes;
}

Bytes TextBytes()
{
  std::mt19937 random(3);
  std::string text;
  for (int i = 0; text.size() < SIZE; ++i) {
    const std::string n = std::to_string(i);
    text += "model" + n + "\n{\n  file=tree_" + std::to_string(random() % 200) +
            ".dof\n  x=" + std::to_string(static_cast<int>(random() % 100000)) + "." +
            std::to_string(random() % 1000000) + "\n  flags=" + std::to_string(random() % 16) + "\n}\n";
  }
  text.resize(SIZE);
  return {text.begin(), text.end()};
}

// Grass: a colour with noise, and opaque.
Bytes PictureBytes()
{
  std::mt19937 random(5);
  Bytes bytes;
  while (bytes.size() < SIZE) {
    const auto n = static_cast<int>(random() % 24);
    for (const int channel : {40 + n, 90 + n * 2, 50 + n, 255})
      bytes.push_back(static_cast<uint8_t>(channel));
  }
  return bytes;
}

const Bytes& Data(int64_t kind)
{
  static const Bytes all[] = {ModelBytes(), TextBytes(), PictureBytes()};
  return all[kind];
}

template <typename Work>
void EachBlock(const Bytes& data, Work work)
{
  for (size_t at = 0; at < data.size(); at += QARCHIVE_BLOCK)
    work(std::span(data).subspan(at, std::min(QARCHIVE_BLOCK, data.size() - at)));
}

void SetRates(benchmark::State& state, size_t coded)
{
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(SIZE));
  state.counters["percent"] = static_cast<double>(coded) * 100.0 / static_cast<double>(SIZE);
}

void Compress(benchmark::State& state)
{
  const auto encoder = std::make_unique<QArchiveEncoder>();
  size_t coded = 0;
  for (auto _ : state) {
    coded = 0;
    EachBlock(Data(state.range(0)), [&](auto block) { coded += encoder->Encode(block).size(); });
  }
  SetRates(state, coded);
}

void Decompress(benchmark::State& state)
{
  const auto encoder = std::make_unique<QArchiveEncoder>();
  const auto decoder = std::make_unique<QArchiveDecoder>();
  std::vector<Bytes> chunks;
  EachBlock(Data(state.range(0)), [&](auto block) {
    const auto chunk = encoder->Encode(block);
    chunks.emplace_back(chunk.begin(), chunk.end());
  });
  for (auto _ : state)
    for (const Bytes& chunk : chunks)
      benchmark::DoNotOptimize(decoder->Decode(chunk));
  SetRates(state, 0);
}

void Copy(benchmark::State& state)
{
  Bytes to(QARCHIVE_BLOCK);
  for (auto _ : state)
    EachBlock(Data(state.range(0)), [&](auto block) {
      std::memcpy(to.data(), block.data(), block.size());
      benchmark::DoNotOptimize(to.data());
    });
  SetRates(state, SIZE);
}

void Kinds(benchmark::internal::Benchmark* bench)
{
  bench->ArgName("model_text_picture")->Arg(0)->Arg(1)->Arg(2);
}
BENCHMARK(Compress)->Apply(Kinds);
BENCHMARK(Decompress)->Apply(Kinds);
BENCHMARK(Copy)->Name("floor_copy")->Apply(Kinds);

#ifdef PEER_LIBLZ4
void Lz4Compress(benchmark::State& state)
{
  Bytes to(QARCHIVE_BLOCK * 2);
  size_t coded = 0;
  for (auto _ : state) {
    coded = 0;
    EachBlock(Data(state.range(0)), [&](auto block) {
      coded += static_cast<size_t>(LZ4_compress_default(reinterpret_cast<const char*>(block.data()),
                                                        reinterpret_cast<char*>(to.data()),
                                                        static_cast<int>(block.size()), static_cast<int>(to.size())));
    });
  }
  SetRates(state, coded);
}
void Lz4Decompress(benchmark::State& state)
{
  std::vector<Bytes> chunks;
  EachBlock(Data(state.range(0)), [&](auto block) {
    Bytes to(QARCHIVE_BLOCK * 2);
    to.resize(static_cast<size_t>(LZ4_compress_default(reinterpret_cast<const char*>(block.data()),
                                                       reinterpret_cast<char*>(to.data()),
                                                       static_cast<int>(block.size()), static_cast<int>(to.size()))));
    chunks.push_back(to);
  });
  Bytes to(QARCHIVE_BLOCK);
  for (auto _ : state)
    for (const Bytes& chunk : chunks)
      benchmark::DoNotOptimize(LZ4_decompress_safe(reinterpret_cast<const char*>(chunk.data()),
                                                   reinterpret_cast<char*>(to.data()), static_cast<int>(chunk.size()),
                                                   static_cast<int>(to.size())));
  SetRates(state, 0);
}
BENCHMARK(Lz4Compress)->Name("peer_lz4_compress")->Apply(Kinds);
BENCHMARK(Lz4Decompress)->Name("peer_lz4_decompress")->Apply(Kinds);
#endif

#ifdef PEER_ZLIB
void ZlibCompress(benchmark::State& state)
{
  Bytes to(QARCHIVE_BLOCK * 2);
  size_t coded = 0;
  for (auto _ : state) {
    coded = 0;
    EachBlock(Data(state.range(0)), [&](auto block) {
      uLongf size = to.size();
      compress2(to.data(), &size, block.data(), block.size(), 1);
      coded += size;
    });
  }
  SetRates(state, coded);
}
BENCHMARK(ZlibCompress)->Name("peer_zlib1_compress")->Apply(Kinds);
#endif

} // namespace

BENCHMARK_MAIN();
