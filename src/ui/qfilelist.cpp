#include "ui/qfilelist.h"

#include "foundation/qdirectory.h"
#include "foundation/qfilename.h"
#include "foundation/qmatch.h"
#include "foundation/qreport.h"
#include "ui/qtext.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>

namespace {

// The letters below U+00C0 .. U+017F, without case and accents.
constexpr std::u32string_view BASE_LETTERS = U"aaaaaaaceeeeiiiidnooooo\u00d7ouuuuyts"
                                             U"aaaaaaaceeeeiiiidnooooo\u00f7ouuuuyty"
                                             U"aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiiiiijjkkklllllll"
                                             U"lllnnnnnnnnnoooooooorrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs";
static_assert(BASE_LETTERS.size() == 0x180 - 0xC0);

// 0 for a combining accent.
char32_t Fold(char32_t c)
{
  if (c >= 'A' && c <= 'Z')
    return c + 32;
  if (c >= 0xC0 && c < 0xC0 + BASE_LETTERS.size())
    return BASE_LETTERS[c - 0xC0];
  if (c >= 0x300 && c <= 0x36F)
    return 0;
  if ((c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F)) // Greek, Cyrillic
    return c + 32;
  return c >= 0x400 && c <= 0x40F ? c + 80 : c;
}

bool IsDigit(char32_t c)
{
  return c >= '0' && c <= '9';
}

QFileEntry Examine(const std::string& directory, const std::string& name)
{
  QFileEntry entry;
  entry.name = name;
  entry.key = QNaturalKey(name);
  struct stat s;
  if (stat((directory + '/' + name).c_str(), &s) != 0)
    return entry; // a link to nothing is still there to be seen
  entry.size = s.st_size;
  entry.modifyTime = s.st_mtime;
  entry.isDirectory = S_ISDIR(s.st_mode);
  return entry;
}

bool ComesBefore(const QFileEntry& a, const QFileEntry& b)
{
  if (a.isDirectory != b.isDirectory)
    return a.isDirectory;
  const auto order = QCompareNatural(a.key, b.key);
  return order != 0 ? order < 0 : a.name < b.name;
}

} // namespace

std::u32string QNaturalKey(std::string_view name)
{
  std::u32string key;
  for (size_t at = 0; at < name.size();) {
    const char32_t c = Fold(QNextChar(name, at));
    // "007" is 7.
    if (IsDigit(c) && !key.empty() && key.back() == '0' && (key.size() < 2 || !IsDigit(key[key.size() - 2])))
      key.pop_back();
    if (c != 0)
      key += c;
  }
  return key;
}

std::strong_ordering QCompareNatural(const std::u32string& a, const std::u32string& b)
{
  size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (!IsDigit(a[i]) || !IsDigit(b[j])) {
      if (a[i] != b[j])
        return a[i] <=> b[j];
      ++i;
      ++j;
      continue;
    }
    const auto endOf = [](const std::u32string& s, size_t at) {
      while (at < s.size() && IsDigit(s[at]))
        ++at;
      return at;
    };
    const size_t iEnd = endOf(a, i), jEnd = endOf(b, j);
    // Of two numbers without leading zeros the longer is the larger, however long they are.
    if (const auto order = iEnd - i <=> jEnd - j; order != 0)
      return order;
    if (const int order = a.compare(i, iEnd - i, b, j, jEnd - j); order != 0)
      return order <=> 0;
    i = iEnd;
    j = jEnd;
  }
  return a.size() - i <=> b.size() - j;
}

bool QMatchFilter(std::string_view filter, const std::string& name)
{
  bool any = false;
  while (!filter.empty()) {
    const size_t end = std::min(filter.find(';'), filter.size());
    std::string pattern(filter.substr(0, end));
    filter.remove_prefix(std::min(end + 1, filter.size()));
    pattern.erase(0, pattern.find_first_not_of(' '));
    pattern.erase(pattern.find_last_not_of(' ') + 1);
    if (pattern.empty())
      continue;
    any = true;
    if (pattern == "*.*" || QMatch(pattern.c_str(), name.c_str()))
      return true;
  }
  return !any;
}

bool QFileList::Read(const std::string& directory, std::string_view filter)
{
  entries.clear();
  const bool hiddenToo = filter.starts_with('.');
  QDirectory source("/");
  const bool readable = source.Read(directory);
  const int error = errno;
  std::string name;
  while (source.ReadNext(name)) {
    if (name == "." || name == ".." || (name.starts_with('.') && !hiddenToo))
      continue;
    QFileEntry entry = Examine(directory, name);
    if (entry.isDirectory || QMatchFilter(filter, name))
      entries.push_back(std::move(entry));
  }
  std::sort(entries.begin(), entries.end(), ComesBefore);
  QFileEntry parent;
  parent.name = "..";
  parent.isDirectory = true;
  entries.insert(entries.begin(), std::move(parent));
  if (!readable)
    QWARN("Can't read directory '%s' (%s)", directory.c_str(), std::strerror(error));
  return readable;
}

int QFileList::Find(std::string_view name) const
{
  const auto at = std::find_if(entries.begin(), entries.end(), [&](const QFileEntry& e) { return e.name == name; });
  return at == entries.end() ? -1 : static_cast<int>(at - entries.begin());
}

std::string QNearestDirectory(const std::string& directory)
{
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path path = fs::absolute(directory.empty() ? "." : directory, error).lexically_normal();
  if (error)
    return "/";
  while (!fs::is_directory(path, error) && path.has_relative_path())
    path = path.parent_path();
  std::string text = path.string();
  while (text.size() > 1 && text.ends_with('/'))
    text.pop_back();
  return text.empty() ? "/" : text;
}
