#pragma once

#include "geometry/dprogramcompiler.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Compiled programs on the disk, one file each, found by what they were compiled from. What can't be read there is
// compiled again, and what can't be written is compiled at each start; neither is reported.
class QCgCache
{
public:
  // An empty directory keeps nothing. It is made with the first entry.
  explicit QCgCache(std::string_view cacheDirectory) : directory(cacheDirectory) {}
  // Of the user: $XDG_CACHE_HOME/pavex/programs or ~/.cache/pavex/programs; empty when there is no home.
  static std::string UserDirectory();
  std::optional<DCompiledProgram> Find(std::string_view source) const;
  void Keep(std::string_view source, const DCompiledProgram& program) const;

private:
  std::string Path(std::string_view source) const;

  std::string directory;
};
