#include "foundation/qassert.h"

#include "foundation/qfilename.h"
#include "foundation/qreport.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace {

// Where the libraries' sources lie, seen from the tree; the file's own path comes first.
constexpr const char* SOURCE_DIRECTORIES[] = {"src/foundation/", "src/geometry/", "src/scene/", "src/ui/",
                                              "src/track/"};

std::string FindSource(const char* file)
{
  if (QFileExists(file, false))
    return file;
  for (const char* directory : SOURCE_DIRECTORIES)
    if (const std::string path = directory + std::string(QFileNameOf(file)); QFileExists(path, false))
      return path;
  return {};
}

void LogLinesAround(const std::string& path, int wanted)
{
  constexpr int AROUND = 3;
  std::ifstream in(path);
  std::string text;
  for (int line = 1; line <= wanted + AROUND && std::getline(in, text); ++line)
    if (line >= wanted - AROUND)
      qlog(QLOG_ERR, {}, "%c%5d %s", line == wanted ? '>' : ' ', line, text.c_str());
}

} // namespace

void QAssertFailed(const char* what, const char* file, int line)
{
  qlog(QLOG_ERR, what, "Assertion failed in '%s', line %d", file, line);
  if (const std::string path = FindSource(file); !path.empty())
    LogLinesAround(path, line);
  QCrash("qasserterr");
}
