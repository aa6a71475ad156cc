#include "platform/qcgcache.h"

#include "foundation/qfile.h"
#include "foundation/qsafewrite.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

// An entry is the mark, the hash of all behind it, and the source and the program as numbers and texts with their
// lengths in front. A change of this form or of the compiler needs another mark.
constexpr std::string_view MARK = "PVXP0001";

uint64_t Hash(std::string_view text, uint64_t start)
{
  uint64_t hash = start; // FNV-1a
  for (const unsigned char c : text)
    hash = (hash ^ c) * 0x100000001B3ull;
  return hash;
}

class Writer
{
public:
  void Number(int64_t n) { text.append(reinterpret_cast<const char*>(&n), sizeof n); }
  void Text(std::string_view s)
  {
    Number(static_cast<int64_t>(s.size()));
    text += s;
  }
  std::string text;
};

// What runs out of the entry makes it bad, and gives zeros and empty texts.
class Reader
{
public:
  explicit Reader(std::string_view entry) : left(entry) {}
  int64_t Number()
  {
    int64_t n = 0;
    if (left.size() < sizeof n) {
      bad = true;
      return 0;
    }
    std::memcpy(&n, left.data(), sizeof n);
    left.remove_prefix(sizeof n);
    return n;
  }
  std::string Text()
  {
    const int64_t size = Number();
    if (size < 0 || static_cast<uint64_t>(size) > left.size()) {
      bad = true;
      return {};
    }
    std::string s(left.substr(0, static_cast<size_t>(size)));
    left.remove_prefix(s.size());
    return s;
  }
  // How many items follow; each takes a number at least.
  int64_t Count()
  {
    const int64_t count = Number();
    bad = bad || count < 0 || static_cast<uint64_t>(count) > left.size() / sizeof count;
    return bad ? 0 : count;
  }
  bool bad = false;

private:
  std::string_view left;
};

std::string Entry(std::string_view source, const DCompiledProgram& program)
{
  Writer w;
  w.Text(source);
  w.Text(program.code);
  w.Text(program.listing);
  w.Number(static_cast<int64_t>(program.parameters.size()));
  for (const DProgramParameter& p : program.parameters) {
    w.Text(p.name);
    w.Text(p.uniform);
    w.Number(p.isSampler);
    w.Number(p.unit);
    w.Text({reinterpret_cast<const char*>(p.initial.data()), p.initial.size() * sizeof(float)});
  }
  w.Number(static_cast<int64_t>(program.attributes.size()));
  for (const DProgramAttribute& a : program.attributes) {
    w.Text(a.name);
    w.Number(a.location);
  }
  w.Number(static_cast<int64_t>(program.annotations.size()));
  for (const auto& [name, value] : program.annotations) {
    w.Text(name);
    w.Number(value);
  }
  return w.text;
}

DCompiledProgram Program(Reader& r)
{
  DCompiledProgram program;
  program.code = r.Text();
  program.listing = r.Text();
  for (int64_t i = r.Count(); i > 0 && !r.bad; --i) {
    DProgramParameter p;
    p.name = r.Text();
    p.uniform = r.Text();
    p.isSampler = r.Number() != 0;
    p.unit = static_cast<int>(r.Number());
    const std::string initial = r.Text();
    p.initial.resize(initial.size() / sizeof(float));
    if (!p.initial.empty())
      std::memcpy(p.initial.data(), initial.data(), p.initial.size() * sizeof(float));
    program.parameters.push_back(std::move(p));
  }
  for (int64_t i = r.Count(); i > 0 && !r.bad; --i) {
    std::string name = r.Text();
    program.attributes.push_back({std::move(name), static_cast<int>(r.Number())});
  }
  for (int64_t i = r.Count(); i > 0 && !r.bad; --i) {
    std::string name = r.Text();
    program.annotations.emplace_back(std::move(name), static_cast<int>(r.Number()));
  }
  return program;
}

} // namespace

std::string QCgCache::UserDirectory()
{
  const char* cache = std::getenv("XDG_CACHE_HOME");
  if (cache && *cache)
    return std::string(cache) + "/pavex/programs";
  const char* home = std::getenv("HOME");
  return home && *home ? std::string(home) + "/.cache/pavex/programs" : std::string();
}

std::string QCgCache::Path(std::string_view source) const
{
  char name[40];
  std::snprintf(name, sizeof name, "/%016llx%016llx", static_cast<unsigned long long>(Hash(source, 0xCBF29CE484222325)),
                static_cast<unsigned long long>(Hash(source, 0x9E3779B97F4A7C15)));
  return directory + name;
}

std::optional<DCompiledProgram> QCgCache::Find(std::string_view source) const
{
  std::string content;
  if (directory.empty() || !QReadFile(Path(source), content) || content.size() < MARK.size() + sizeof(uint64_t) ||
      !content.starts_with(MARK))
    return std::nullopt;
  uint64_t hash = 0;
  std::memcpy(&hash, content.data() + MARK.size(), sizeof hash);
  const std::string_view entry = std::string_view(content).substr(MARK.size() + sizeof hash);
  Reader reader(entry);
  if (hash != Hash(entry, 0) || reader.Text() != source)
    return std::nullopt;
  DCompiledProgram program = Program(reader);
  if (reader.bad)
    return std::nullopt;
  return program;
}

void QCgCache::Keep(std::string_view source, const DCompiledProgram& program) const
{
  if (directory.empty())
    return;
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  const std::string entry = Entry(source, program);
  const uint64_t hash = Hash(entry, 0);
  std::string content(MARK);
  content.append(reinterpret_cast<const char*>(&hash), sizeof hash);
  static_cast<void>(QWriteFile(Path(source), content + entry));
}
