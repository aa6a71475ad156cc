#pragma once

#include <compare>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

// What a file selector shows of a directory.
struct QFileEntry
{
  std::string name;
  std::u32string key; // of the name, for sorting and finding
  int64_t size = 0;   // bytes
  std::time_t modifyTime = 0;
  bool isDirectory = false; // or a link to one
};

// The entries of a directory as a person looks for them: "..", then directories, then files, each in natural order.
class QFileList
{
public:
  // Takes over what lies in the directory: all directories, and the files that pass the filter. Names that begin with
  // "." are left out, unless the filter begins so too. False, reported and with ".." alone, when it can't be read.
  bool Read(const std::string& directory, std::string_view filter);
  const std::vector<QFileEntry>& Entries() const { return entries; }
  // The index of the entry with that very name, or -1.
  int Find(std::string_view name) const;

private:
  std::vector<QFileEntry> entries;
};

// A name as people compare it: without case, accents and leading zeros of numbers.
std::u32string QNaturalKey(std::string_view name);
// By such keys: numbers by their value, "a2" before "a10".
std::strong_ordering QCompareNatural(const std::u32string& a, const std::u32string& b);
// Patterns of QMatch, one of which has to match, with ";" between them. An empty filter, "*" and "*.*" let all pass.
bool QMatchFilter(std::string_view filter, const std::string& name);
// The directory itself, or the nearest one above it that exists; at last "/". Relative ones count from the working
// directory. The answer is absolute, without "." and ".." in it.
std::string QNearestDirectory(const std::string& directory);
