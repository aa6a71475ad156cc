#include "foundation/qpathcase.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <dirent.h>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

bool Exists(const std::string& path)
{
  return access(path.c_str(), F_OK) == 0;
}

// What stood in a directory, by names in small letters, the least name first among equal ones. It holds as long as the
// directory's time of change says so; a directory that changed just before it was read may change once more within
// the same tick of that clock, so then it holds for one look.
struct Listing
{
  std::string directory;
  dev_t device;
  ino_t inode;
  timespec changed;
  bool isSettled;
  std::vector<std::pair<std::string, std::string>> names;
};

std::string Lower(std::string name)
{
  for (char& c : name)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return name;
}

Listing Read(const std::string& directory, const struct stat& info)
{
  constexpr time_t SETTLED = 2; // seconds
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  Listing listing{directory, info.st_dev, info.st_ino, info.st_mtim, info.st_mtim.tv_sec < now.tv_sec - SETTLED, {}};
  const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(directory.c_str()), closedir);
  while (const dirent* entry = dir ? readdir(dir.get()) : nullptr)
    listing.names.emplace_back(Lower(entry->d_name), entry->d_name);
  std::sort(listing.names.begin(), listing.names.end());
  return listing;
}

bool Holds(const Listing& listing, const struct stat& info)
{
  return listing.isSettled && listing.device == info.st_dev && listing.inode == info.st_ino &&
         listing.changed.tv_sec == info.st_mtim.tv_sec && listing.changed.tv_nsec == info.st_mtim.tv_nsec;
}

// The entry of directory that equals name but for case; the least by byte order, so that the answer doesn't depend
// on the file system. Empty when there is none. A track asks for a thousand files that may be elsewhere, so the last
// few directories are kept.
std::string EntryWithoutCase(const std::string& found, const std::string& name)
{
  constexpr size_t KEPT = 8;
  static std::mutex mutex;
  static std::vector<Listing>& kept = *new std::vector<Listing>; // other statics may look for files at the end
  const std::string directory = found.empty() ? std::string(1, '.') : found;
  struct stat info
  {};
  if (stat(directory.c_str(), &info) != 0)
    return {};
  const std::lock_guard lock(mutex);
  auto at = std::find_if(kept.begin(), kept.end(), [&](const Listing& l) { return l.directory == directory; });
  if (at == kept.end() || !Holds(*at, info)) {
    if (at != kept.end())
      kept.erase(at);
    else if (kept.size() == KEPT)
      kept.pop_back();
    at = kept.insert(kept.begin(), Read(directory, info));
  }
  const auto entry = std::lower_bound(at->names.begin(), at->names.end(), std::pair(Lower(name), std::string()));
  return entry != at->names.end() && entry->first == Lower(name) ? entry->second : std::string();
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
