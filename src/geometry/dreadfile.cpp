#include "geometry/dreadfile.h"

#include "foundation/qfile.h"
#include "foundation/qfilename.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>
#include <vector>

namespace {

// Of an open archive, for a file that the disk doesn't have.
bool ReadMember(const std::string& path, DArray<std::byte>& content)
{
  std::vector<std::byte> bytes;
  if (!QReadFile(path, bytes, true))
    return false;
  content.resize(bytes.size());
  std::ranges::copy(bytes, content.data());
  return true;
}

} // namespace

bool DReadFile(const std::string& path, DArray<std::byte>& content)
{
  std::FILE* file = qfopen(path.c_str(), "rb");
  if (!file)
    return ReadMember(path, content);
  struct stat info = {};
  const bool known = fstat(fileno(file), &info) == 0;
  if (known) {
    content.resize(static_cast<size_t>(info.st_size));
    std::setvbuf(file, nullptr, _IONBF, 0); // straight to its place
    content.resize(std::fread(content.data(), 1, content.size(), file));
  }
  qfclose(file);
  return known;
}
