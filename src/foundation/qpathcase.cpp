#include "foundation/qpathcase.h"

#include <algorithm>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <strings.h>
#include <unistd.h>

namespace {

bool Exists(const std::string& path)
{
  return access(path.c_str(), F_OK) == 0;
}

// The entry of directory that equals name but for case; the least by byte order, so that the answer doesn't depend
// on the file system. Empty when there is none.
std::string EntryWithoutCase(const std::string& directory, const std::string& name)
{
  const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(directory.empty() ? "." : directory.c_str()), closedir);
  std::string best;
  while (const dirent* entry = dir ? readdir(dir.get()) : nullptr)
    if (strcasecmp(entry->d_name, name.c_str()) == 0 && (best.empty() || best > entry->d_name))
      best = entry->d_name;
  return best;
}

} // namespace

std::string QFindPath(const std::string& path)
{
  if (path.empty() || Exists(path))
    return path;
  std::string wanted = path;
  std::replace(wanted.begin(), wanted.end(), '\\', '/');
  std::string found;
  size_t at = 0;
  while (at < wanted.size()) {
    if (wanted[at] == '/') {
      found += wanted[at++];
      continue;
    }
    const size_t end = std::min(wanted.find('/', at), wanted.size());
    std::string name = wanted.substr(at, end - at);
    if (!Exists(found + name)) {
      name = EntryWithoutCase(found, name);
      if (name.empty())
        return path;
    }
    found += name;
    at = end;
  }
  return found;
}
