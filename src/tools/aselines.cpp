#include "tools/aselines.h"

#include "geometry/dreadfile.h"
#include "geometry/dtextreader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

struct Keyword
{
  std::string_view text;
  uint32_t kind;
};

constexpr std::array<Keyword, 6> KEYWORDS = {{
    {"*GEOMOBJECT", AseLines::GEOMOBJECT},
    {"*NODE_NAME", AseLines::NODE_NAME},
    {"*MATERIAL_REF", AseLines::MATERIAL_REF},
    {"*MATERIAL_COUNT", AseLines::MATERIAL_COUNT},
    {"*MATERIAL ", AseLines::MATERIAL},
    {"*SUBMATERIAL", AseLines::SUBMATERIAL},
}};

uint32_t KindOf(std::string_view rest)
{
  // Nearly all are "*MESH_...".
  if (rest.size() < 2 || (rest[1] != 'G' && rest[1] != 'N' && rest[1] != 'S' && rest[1] != 'M') ||
      rest.starts_with("*MESH_"))
    return 0;
  for (const Keyword& k : KEYWORDS)
    if (rest.starts_with(k.text))
      return k.kind;
  return 0;
}

size_t KeywordLength(uint32_t kind)
{
  for (const Keyword& k : KEYWORDS)
    if (k.kind == kind)
      return k.text.size();
  return 0;
}

// Where the lines of positions begin that are asked for in rising order: no byte is looked at twice, however long the
// lines are.
class LineStarts
{
public:
  LineStarts(std::string_view whole, size_t beginning) : text(whole), start(beginning), searched(beginning) {}
  size_t Of(size_t position)
  {
    if (const void* feed = memrchr(text.data() + searched, '\n', position - searched))
      start = static_cast<size_t>(static_cast<const char*>(feed) - text.data()) + 1;
    searched = position;
    return start + (position - start) / AseLines::MAX_LINE * AseLines::MAX_LINE;
  }

private:
  std::string_view text;
  size_t start;
  size_t searched;
};

} // namespace

bool AseLines::Read(const std::string& path)
{
  if (!DReadFile(path, content))
    return false;
  text = {reinterpret_cast<const char*>(content.data()), content.size()};
  Index();
  return true;
}

size_t AseLines::EndOfLine(size_t start) const
{
  const std::string_view line = text.substr(start, MAX_LINE);
  const size_t feed = line.find('\n');
  return start + (feed == std::string_view::npos ? line.size() : feed + 1);
}

void AseLines::Index()
{
  lines.clear();
  LineStarts starts(text, 0);
  for (size_t at = 0; (at = text.find('*', at)) != std::string_view::npos; ++at) {
    const uint32_t kind = KindOf(text.substr(at));
    if (kind == 0)
      continue;
    if (lines.empty() || at >= lines.back().end) {
      const size_t start = starts.Of(at);
      lines.push_back({start, EndOfLine(start), 0});
    }
    if (at + KeywordLength(kind) <= lines.back().end) // else it is torn at the end of the line
      lines.back().kinds |= kind;
  }
  std::erase_if(lines, [](const Line& line) { return line.kinds == 0; });
}

int AseLines::Count(Kind kind) const
{
  return static_cast<int>(std::ranges::count_if(lines, [&](const Line& line) { return line.kinds & kind; }));
}

size_t AseLines::Find(uint32_t kinds, size_t from) const
{
  for (size_t i = from; i < lines.size(); ++i)
    if (lines[i].kinds & kinds)
      return i;
  return NONE;
}

size_t AseLines::Find(Kind kind, const std::string& holds, size_t from) const
{
  for (size_t i = from; i < lines.size(); ++i)
    if (lines[i].kinds & kind && Text(lines[i]).find(holds) != std::string_view::npos)
      return i;
  return NONE;
}

size_t AseLines::Behind(size_t offset) const
{
  const auto found = std::ranges::lower_bound(lines, offset, {}, &Line::start);
  return static_cast<size_t>(found - lines.begin());
}

size_t AseLines::FindBrace(size_t offset, size_t limit) const
{
  LineStarts starts(text, offset);
  for (size_t at = offset; at < limit; ++at) {
    at = text.substr(0, limit).find('}', at);
    if (at == std::string_view::npos)
      break;
    if (starts.Of(at) == at)
      return at;
  }
  return limit;
}

int AseLines::CountLines(size_t offset) const
{
  int count = 0;
  for (size_t start = 0; start < offset; start = EndOfLine(start))
    ++count;
  return count;
}

std::string AseQuoted(std::string_view line)
{
  const size_t first = line.find('"');
  if (first == std::string_view::npos)
    return "unknown";
  const std::string_view rest = line.substr(first + 1);
  return std::string(rest.substr(0, std::min(rest.find_first_of("\"\r\n"), rest.size())));
}

int AseNumberBehind(std::string_view line, std::string_view word)
{
  const size_t at = line.find(word);
  return at == std::string_view::npos ? 0 : DTextReader(line.substr(at + word.size())).Int();
}

AseHeader::AseHeader(const AseLines& scene) : lines(scene)
{
  const size_t object = std::min(lines.Find(AseLines::GEOMOBJECT, 0), lines.Lines().size());
  size_t count = 0;
  for (size_t i = 0; i < object; ++i)
    if (lines.Lines()[i].kinds & AseLines::MATERIAL_COUNT)
      count = lines.Lines()[i].start;
  text = lines.Text().substr(0, count);
  lineCount = lines.CountLines(count);
  firstLine = lines.Behind(lines.EndOfLine(count)); // the line that ends the header isn't searched
}

size_t AseHeader::MaterialLine(int number) const
{
  return lines.Find(AseLines::MATERIAL, "*MATERIAL " + std::to_string(number), firstLine);
}

bool AseHeader::Material(int number, std::string_view& block) const
{
  const size_t line = MaterialLine(number);
  if (line == AseLines::NONE)
    return false;
  const size_t start = lines.Lines()[line].end;
  const size_t next = lines.Find(AseLines::MATERIAL | AseLines::GEOMOBJECT, line + 1);
  const size_t end = next == AseLines::NONE ? lines.Text().size() : lines.Lines()[next].start;
  block = lines.Text().substr(start, end - start);
  return true;
}

namespace {

bool WriteAll(int file, std::string_view content)
{
  while (!content.empty()) {
    const ssize_t written = ::write(file, content.data(), content.size());
    if (written < 0 && errno == EINTR)
      continue;
    if (written <= 0)
      return false;
    content.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

} // namespace

// It isn't flushed: a cut file is made again in no time.
bool AseWriteFile(const std::string& directory, const std::string& name, std::string_view content)
{
  if (name.find_first_of("/\\") != std::string::npos || name.find('\0') != std::string::npos)
    return false;
  const std::string path = directory + "/" + name;
  const std::string beside = path + ".new";
  const int file = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file < 0)
    return false;
  const bool written = WriteAll(file, content);
  if (::close(file) == 0 && written && std::rename(beside.c_str(), path.c_str()) == 0)
    return true;
  ::unlink(beside.c_str());
  return false;
}
