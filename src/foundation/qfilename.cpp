#include "foundation/qfilename.h"

#include "foundation/qdirectory.h"
#include "foundation/qfile.h"
#include "foundation/qpathcase.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

QFileServices& QFileHooks()
{
  static QFileServices services;
  return services;
}

const char* QFileBase(const char* path)
{
  const char* base = path;
  for (const char* p = path; *p; ++p)
    if (*p == '/' || *p == '\\')
      base = p + 1;
  return base;
}

const char* QFileExtension(const char* path)
{
  return *path ? std::strrchr(path, '.') : path;
}

bool QFileExists(const std::string& path, bool archives)
{
  if (path.empty())
    return false;
  if (std::FILE* file = qfopen(path.c_str(), "rb")) {
    qfclose(file);
    return true;
  }
  return archives && QFileHooks().archiveHas && QFileHooks().archiveHas(path);
}

bool QDirectoryExists(const std::string& path)
{
  QFileInfo info;
  return QDirectory::GetInfo(path, info) && info.isDirectory;
}

int QFileSize(const std::string& path)
{
  QFileInfo info;
  if (!QDirectory::GetInfo(path, info) || info.isDirectory)
    return -1;
  return static_cast<int>(std::min<int64_t>(info.size, INT_MAX));
}

bool QCopyFile(const std::string& from, const std::string& to)
{
  if (from == to) {
    QLOG("QCopyFile(); source and dest are the same (%s) - returning success", from.c_str());
    return true;
  }
  std::string content;
  return QReadFile(from, content) && QWriteFile(to, content);
}

std::string QPathJoin(std::string_view base, std::string_view name)
{
  if (name == "..") {
    const auto slash = base.find_last_of("/\\");
    if (slash == std::string_view::npos)
      return "";
    return slash == 0 ? "/" : std::string(base.substr(0, slash));
  }
  // An empty base is the current directory; a "/" in front of the name would lead to the root instead.
  if (base.empty())
    return std::string(name);
  return base == "/" ? "/" + std::string(name) : std::string(base) + "/" + std::string(name);
}

bool QCreateDirectory(const std::string& path)
{
  return QDirectoryExists(path) || mkdir(path.c_str(), 0777) == 0;
}

bool QCreateDirectories(const std::string& path)
{
  if (QCreateDirectory(path))
    return true;
  if (errno != ENOENT)
    return false;
  std::string parent = path;
  while (!parent.empty() && (parent.back() == '/' || parent.back() == '\\'))
    parent.pop_back();
  auto at = parent.find_last_of('/');
  if (at == std::string::npos)
    at = parent.find_last_of('\\');
  if (at == std::string::npos || at == 0)
    return false;
  parent.resize(at);
  return QCreateDirectories(parent) && QCreateDirectory(path);
}

void QCurrentDir(qstring& path)
{
  std::array<char, 1024> buffer;
  path = getcwd(buffer.data(), buffer.size()) ? buffer.data() : "";
}

bool QSetCurrentDirectory(const std::string& path)
{
  if (chdir(QFindPath(path).c_str()) == 0)
    return true;
  QWARN("QSetCurrentDirectory(%s) failed; errno %d", path.c_str(), errno);
  return false;
}

bool QNotePad(const std::string& path)
{
  if (QFileHooks().openDocument && QFileHooks().openDocument(QFindPath(path), {}))
    return true;
  QWARN("QNotePad: can't open %s", path.c_str());
  return false;
}

bool QOpen(const std::string& what, const std::string& args)
{
  if (QFileHooks().openDocument && QFileHooks().openDocument(QFindPath(what), args))
    return true;
  QWARN("QOpen: can't open %s", what.c_str());
  return false;
}

void QHexDump(const void* buffer, size_t size)
{
  constexpr size_t LINE = 16;
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  for (size_t at = 0; at < size; at += LINE) {
    std::string hex;
    std::string text;
    for (size_t i = at; i < std::min(at + LINE, size); ++i) {
      std::array<char, 4> two;
      std::snprintf(two.data(), two.size(), "%02X ", unsigned{bytes[i]});
      hex += two.data();
      text += bytes[i] >= 32 && bytes[i] < 127 ? static_cast<char>(bytes[i]) : '.';
    }
    QLOG("%08zX: %-48s%s\n", at, hex.c_str(), text.c_str());
  }
}

int QNearestPowerOf2(int n, bool round)
{
  if (round)
    QWARN("QNearestPowerOf2(); rounding not yet implemented");
  int power = 1;
  while (power < n && power < 1 << 30)
    power *= 2;
  return power;
}
