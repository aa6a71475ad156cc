#include "foundation/qdirectory.h"

#include "foundation/qpathcase.h"

#include <algorithm>
#include <dirent.h>
#include <sys/stat.h>

struct QDirectory::Stream
{
  DIR* dir;
  explicit Stream(DIR* opened) : dir(opened) {}
  ~Stream() { closedir(dir); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
};

QDirectory::QDirectory(const std::string& directory)
{
  Read(directory);
}

QDirectory::~QDirectory() = default;

bool QDirectory::Read(const std::string& directory)
{
  path = QFindPath(directory.empty() ? "." : directory);
  stream.reset();
  if (DIR* dir = opendir(path.c_str()))
    stream = std::make_unique<Stream>(dir);
  return stream != nullptr;
}

bool QDirectory::ReadNext(std::string& name, QFileInfo* info)
{
  const dirent* entry = stream ? readdir(stream->dir) : nullptr;
  if (!entry)
    return false;
  name = entry->d_name;
  if (info)
    GetInfo(path + "/" + name, *info);
  return true;
}

bool QDirectory::GetInfo(const std::string& path, QFileInfo& info)
{
  info = {};
  struct stat s;
  if (stat(QFindPath(path).c_str(), &s) != 0)
    return false;
  info.size = s.st_size;
  info.modifyTime = s.st_mtime;
  info.accessTime = s.st_atime;
  info.isDirectory = S_ISDIR(s.st_mode);
  return true;
}

std::vector<std::string> QDirectory::SortedFiles(const std::string& path)
{
  std::vector<std::string> names;
  QDirectory directory(path);
  std::string name;
  QFileInfo info;
  while (directory.ReadNext(name, &info))
    if (!info.isDirectory)
      names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}
