#include "foundation/qsafewrite.h"

#include "foundation/qpathcase.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

namespace {

std::string DirectoryOf(const std::string& path)
{
  const auto slash = path.find_last_of('/');
  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool WriteAll(int fd, std::string_view content)
{
  while (!content.empty()) {
    const ssize_t n = write(fd, content.data(), content.size());
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      return false;
    content.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

// Mode and owner of the file that is replaced; a new file gets what the process gives new files.
bool TakeOverAttributes(int fd, const std::string& target)
{
  struct stat old;
  if (stat(target.c_str(), &old) != 0) {
    const mode_t mask = umask(0);
    umask(mask);
    return fchmod(fd, 0666 & ~mask) == 0;
  }
  if ((old.st_uid != geteuid() || old.st_gid != getegid()) && fchown(fd, old.st_uid, old.st_gid) != 0 && errno != EPERM)
    return false;
  return fchmod(fd, old.st_mode & 07777) == 0;
}

// The rename itself must reach the disk too. A file system that can't flush a directory isn't a failure.
void FlushDirectory(const std::string& directory)
{
  const int fd = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0)
    return;
  fsync(fd);
  close(fd);
}

} // namespace

struct QFileSet::Entry
{
  std::string target;
  std::string temporary; // empty once renamed or when none was made

  ~Entry()
  {
    if (!temporary.empty())
      unlink(temporary.c_str());
  }

  bool Write(std::string_view content, bool flush = true)
  {
    // A directory that can't be written to also can't replace the file, so refuse before anything is made.
    struct stat old;
    if (stat(target.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) {
      errno = EINVAL;
      return false;
    }
    if (access(target.c_str(), F_OK) == 0 && access(target.c_str(), W_OK) != 0)
      return false;
    std::string name = target + ".XXXXXX";
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0)
      return false;
    temporary = name;
    bool good = WriteAll(fd, content) && TakeOverAttributes(fd, target) && (!flush || fsync(fd) == 0);
    const int reason = errno;
    if (close(fd) != 0)
      good = false;
    else if (!good)
      errno = reason;
    return good;
  }

  bool Rename(bool flush = true)
  {
    if (rename(temporary.c_str(), target.c_str()) != 0)
      return false;
    temporary.clear();
    if (flush)
      FlushDirectory(DirectoryOf(target));
    return true;
  }
};

QFileSet::QFileSet() = default;
QFileSet::~QFileSet() = default;

bool QFileSet::Add(const std::string& path, std::string_view content)
{
  auto entry = std::make_unique<Entry>();
  entry->target = QWriteTarget(path);
  const bool good = entry->Write(content);
  failed = failed || !good;
  entries.push_back(std::move(entry));
  return good;
}

bool QFileSet::Commit()
{
  if (failed)
    return false;
  for (const auto& entry : entries)
    if (!entry->Rename())
      return false;
  entries.clear();
  return true;
}

bool QWriteFile(const std::string& path, std::string_view content)
{
  QFileSet set;
  return set.Add(path, content) && set.Commit();
}

bool QWriteFile(const std::string& path, std::span<const std::byte> content)
{
  return QWriteFile(path, std::string_view(reinterpret_cast<const char*>(content.data()), content.size()));
}

// By their lower-case form, as QWriteTarget would find them one by one. Of names that differ in case alone, the least.
struct QFileBatch::Names
{
  explicit Names(const std::string& directory)
  {
    std::error_code error;
    for (std::filesystem::directory_iterator i(directory, error), end; !error && i != end; i.increment(error)) {
      const std::string name = i->path().filename();
      const auto [at, isNew] = byLower.emplace(Lower(name), name);
      if (!isNew && name < at->second)
        at->second = name;
    }
  }
  static std::string Lower(std::string name)
  {
    for (char& c : name)
      if (c >= 'A' && c <= 'Z')
        c = static_cast<char>(c - 'A' + 'a');
    return name;
  }
  std::unordered_map<std::string, std::string> byLower;
};

QFileBatch::QFileBatch(const std::string& targetDirectory) :
    directory(QFindPath(targetDirectory)), names(std::make_unique<Names>(directory))
{}

QFileBatch::~QFileBatch() = default;

bool QFileBatch::Add(const std::string& name, std::span<const std::byte> content)
{
  auto entry = std::make_unique<QFileSet::Entry>();
  entry->target = directory + "/" + name;
  bool elsewhere = false;
  if (const auto known = names->byLower.find(Names::Lower(name)); known != names->byLower.end()) {
    const bool exists = access(entry->target.c_str(), F_OK) == 0;
    entry->target = QWriteTarget(exists ? entry->target : directory + "/" + known->second);
    elsewhere = DirectoryOf(entry->target) != realDirectory; // by a link
  }
  if (!entry->Write({reinterpret_cast<const char*>(content.data()), content.size()}, elsewhere))
    return false;
  entries.push_back(std::move(entry));
  return true;
}

std::vector<std::string> QFileBatch::Commit()
{
  std::vector<std::string> failed;
  const int fd = entries.empty() ? -1 : open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool flushed = fd >= 0 && syncfs(fd) == 0;
  for (const auto& entry : entries)
    if (!flushed || !entry->Rename(false))
      failed.push_back(entry->target);
  if (fd >= 0) {
    fsync(fd);
    close(fd);
  }
  entries.clear();
  return failed;
}

std::string QWriteTarget(const std::string& path)
{
  const std::string found = QFindPath(path);
  char resolved[PATH_MAX];
  if (realpath(found.c_str(), resolved))
    return resolved;
  return found;
}
