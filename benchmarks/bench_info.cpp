// Reading, writing and asking a configuration tree of 10 MB with 313,600 keys, beside libraries that do the like, and
// beside what the machine takes to move the bytes.

#include "foundation/qblock.h"
#include "foundation/qinfo.h"
#include "foundation/qsafewrite.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <unistd.h>

#if __has_include(<boost/property_tree/info_parser.hpp>)
#define PEER_BOOST
#include <boost/property_tree/info_parser.hpp>
#endif
#ifdef PEER_INIH
#include <ini.h>
#endif
#ifdef PEER_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef PEER_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

namespace {

namespace fs = std::filesystem;

// The same tree in the form that each library reads: 20 groups of 280 objects with 4 parts of 14 keys.
class Files
{
public:
  Files()
  {
    std::string name = (fs::temp_directory_path() / "pavex-bench-XXXXXX").string();
    directory = mkdtemp(name.data());
    Generate();
    Save("tree.ini", ini);
    Save("tree.info", info);
    Save("sections.ini", sections);
    Save("tree.xml", "<root>" + xml + "</root>");
    json.back() = '}';
    Save("tree.json", "{" + json);
    std::shuffle(paths.begin(), paths.end(), std::mt19937(7));
    paths = std::vector<std::string>(paths); // so that the asking itself goes through memory in order
  }
  ~Files() { fs::remove_all(directory); }
  std::string Path(const char* name) const { return (directory / name).string(); }
  size_t Size() const { return ini.size(); }
  std::vector<std::string> paths; // of all keys, in random order

private:
  void Open(const std::string& name, int depth)
  {
    const std::string indent(static_cast<size_t>(2 * depth), ' ');
    ini += indent + name + "\n" + indent + "{\n";
    info += indent + name + "\n" + indent + "{\n";
    xml += "<" + name + ">\n";
    json += "\"" + name + "\":{";
  }
  void Close(const std::string& name, int depth)
  {
    const std::string indent(static_cast<size_t>(2 * depth), ' ');
    ini += indent + "}\n";
    info += indent + "}\n";
    xml += "</" + name + ">\n";
    json.back() = '}';
    json += ",";
  }
  void Key(const std::string& path, const std::string& name, const std::string& value)
  {
    ini += "      " + name + "=" + value + "\n";
    info += "      " + name + " \"" + value + "\"\n";
    sections += name + "=" + value + "\n";
    xml += "<" + name + ">" + value + "</" + name + ">\n";
    json += "\"" + name + "\":\"" + value + "\",";
    paths.push_back(path + "." + name);
  }
  void Generate()
  {
    static const char* const keys[] = {"file",    "flags",    "position", "rotation", "scale",   "surface", "friction",
                                       "rolling", "material", "shader",   "lod_near", "lod_far", "name",    "priority"};
    std::mt19937 random(1);
    for (int g = 0; g < 20; ++g) {
      const std::string group = "group" + std::to_string(g);
      Open(group, 0);
      for (int o = 0; o < 280; ++o) {
        const std::string object = "object" + std::to_string(o);
        Open(object, 1);
        for (const char* part : {"geometry", "collision", "sound", "light"}) {
          Open(part, 2);
          const std::string path = group + "." + object + "." + part;
          sections += "[" + path + "]\n";
          for (const char* key : keys)
            Key(path, key, Value(static_cast<uint32_t>(random())));
          Close(part, 2);
        }
        Close(object, 1);
      }
      Close(group, 0);
    }
  }
  static std::string Value(uint32_t n)
  {
    switch (n % 4) {
    case 0:
      return std::to_string(n % 1000);
    case 1:
      return std::to_string(static_cast<float>(n % 100000) / 7);
    case 2:
      return "models/verge/grass_" + std::to_string(n % 5000) + ".dof";
    default:
      return std::to_string(n % 977) + "." + std::to_string(n % 10) + " " + std::to_string(n % 31) + ".25 0.125";
    }
  }
  void Save(const char* name, const std::string& text) const { std::ofstream(Path(name), std::ios::binary) << text; }

  fs::path directory;
  std::string ini, info, sections, xml, json;
};

Files& Data()
{
  static Files files;
  return files;
}

size_t ReadFd(const std::string& path, QBlock& block)
{
  const int fd = open(path.c_str(), O_RDONLY);
  size_t length = 0;
  for (ssize_t got = 1; got > 0; length += static_cast<size_t>(got))
    got = read(fd, block.Data() + length, block.Size() - length);
  close(fd);
  return length;
}

void ReadProject(benchmark::State& state)
{
  const std::string path = Data().Path("tree.ini");
  for (auto _ : state)
    benchmark::DoNotOptimize(QInfo(path).Root());
}
BENCHMARK(ReadProject)->Name("read/project")->Unit(benchmark::kMillisecond);

void ReadFloor(benchmark::State& state)
{
  const std::string path = Data().Path("tree.ini");
  for (auto _ : state) {
    QBlock block(Data().Size() + 1);
    benchmark::DoNotOptimize(ReadFd(path, block));
  }
}
BENCHMARK(ReadFloor)->Name("read/floor (bytes alone)")->Unit(benchmark::kMillisecond);

void WriteTextProject(benchmark::State& state)
{
  const QInfo info(Data().Path("tree.ini"));
  for (auto _ : state)
    benchmark::DoNotOptimize(info.WriteToText());
}

void WriteProject(benchmark::State& state)
{
  QInfo info(Data().Path("tree.ini"));
  const std::string path = Data().Path("out.ini");
  for (auto _ : state)
    if (!info.Write(path.c_str(), false))
      state.SkipWithError("can't write");
}
BENCHMARK(WriteTextProject)->Name("write to memory/project")->Unit(benchmark::kMillisecond);
BENCHMARK(WriteProject)->Name("write to disk, flushed/project")->Unit(benchmark::kMillisecond);

void WriteFloor(benchmark::State& state)
{
  QBlock block(Data().Size() + 1);
  const size_t length = ReadFd(Data().Path("tree.ini"), block);
  const std::string path = Data().Path("out.ini");
  for (auto _ : state)
    if (!QWriteFile(path, std::string_view(block.Text(), length)))
      state.SkipWithError("can't write");
}
BENCHMARK(WriteFloor)->Name("write to disk, flushed/floor (bytes alone)")->Unit(benchmark::kMillisecond);

void GetProject(benchmark::State& state)
{
  const QInfo info(Data().Path("tree.ini"));
  std::string value;
  size_t i = 0;
  for (auto _ : state) {
    if (!info.GetString(Data().paths[i], value))
      state.SkipWithError("not found");
    if (++i == Data().paths.size())
      i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(GetProject)->Name("get by path/project");

#ifdef PEER_BOOST
using boost::property_tree::ptree;

ptree BoostTree()
{
  ptree tree;
  boost::property_tree::read_info(Data().Path("tree.info"), tree);
  return tree;
}

void ReadBoost(benchmark::State& state)
{
  for (auto _ : state)
    benchmark::DoNotOptimize(BoostTree());
}
BENCHMARK(ReadBoost)->Name("read/peer Boost INFO")->Unit(benchmark::kMillisecond);

void WriteBoost(benchmark::State& state)
{
  const ptree tree = BoostTree();
  for (auto _ : state)
    boost::property_tree::write_info(Data().Path("out.info"), tree);
}
BENCHMARK(WriteBoost)->Name("write to disk/peer Boost INFO")->Unit(benchmark::kMillisecond);

void GetBoost(benchmark::State& state)
{
  const ptree tree = BoostTree();
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(tree.get<std::string>(Data().paths[i]));
    if (++i == Data().paths.size())
      i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(GetBoost)->Name("get by path/peer Boost INFO");
#endif

#ifdef PEER_INIH
int CountKey(void* count, const char*, const char*, const char*)
{
  ++*static_cast<int*>(count);
  return 1;
}

void ReadInih(benchmark::State& state)
{
  const std::string path = Data().Path("sections.ini");
  for (auto _ : state) {
    int count = 0;
    ini_parse(path.c_str(), CountKey, &count);
    benchmark::DoNotOptimize(count);
  }
}
BENCHMARK(ReadInih)->Name("read/peer inih (events only)")->Unit(benchmark::kMillisecond);
#endif

#ifdef PEER_PUGIXML
void ReadPugixml(benchmark::State& state)
{
  const std::string path = Data().Path("tree.xml");
  for (auto _ : state) {
    pugi::xml_document document;
    if (!document.load_file(path.c_str()))
      state.SkipWithError("can't read");
  }
}
BENCHMARK(ReadPugixml)->Name("read/peer pugixml")->Unit(benchmark::kMillisecond);
#endif

#ifdef PEER_RAPIDJSON
std::string JsonText()
{
  const std::string path = Data().Path("tree.json");
  std::string text(fs::file_size(path), '\0');
  std::FILE* f = std::fopen(path.c_str(), "rb");
  text.resize(std::fread(text.data(), 1, text.size(), f));
  std::fclose(f);
  return text;
}

void ReadRapidJson(benchmark::State& state)
{
  for (auto _ : state) {
    std::string text = JsonText();
    rapidjson::Document document;
    document.ParseInsitu(text.data());
    if (document.HasParseError())
      state.SkipWithError("can't read");
  }
}
BENCHMARK(ReadRapidJson)->Name("read/peer RapidJSON")->Unit(benchmark::kMillisecond);

void WriteRapidJson(benchmark::State& state)
{
  rapidjson::Document document;
  document.Parse(JsonText().c_str());
  for (auto _ : state) {
    rapidjson::StringBuffer out;
    rapidjson::Writer<rapidjson::StringBuffer> writer(out);
    document.Accept(writer);
    benchmark::DoNotOptimize(out.GetString());
  }
}
BENCHMARK(WriteRapidJson)->Name("write to memory/peer RapidJSON")->Unit(benchmark::kMillisecond);
#endif

} // namespace

BENCHMARK_MAIN();
