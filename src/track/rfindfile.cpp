#include "track/rfindfile.h"

#include "foundation/qreport.h"

#include "foundation/qfilename.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

std::string RFindPath(const std::string& file, const std::string& dir, const char* fallback)
{
  const std::string inDir = dir + "/" + file;
  const std::string inFallback = fallback ? std::string(fallback) + "/" + file : "";
  if (file.empty())
    return inDir;
  for (const std::string* path : {&file, &inDir, &inFallback})
    if (QFileExists(*path))
      return *path;
  if (const char* root = std::getenv("TORVIK")) {
    for (const std::string* path : {&inDir, &inFallback}) {
      const std::string below = std::string(root) + "/" + *path;
      if (!path->empty() && QFileExists(below))
        return below;
    }
  }
  return inDir;
}

const char* RFindFile(const char* file, const char* dir, const char* fallback)
{
  static std::string found;
  found = RFindPath(file ? file : "", dir ? dir : "", fallback);
  return found.c_str();
}

bool RStaysInside(std::string_view path)
{
  constexpr std::string_view SEPARATORS = "/\\";
  if (!path.empty() && SEPARATORS.find(path.front()) != std::string_view::npos)
    return false;
  if (path.find('\0') != std::string_view::npos)
    return false;
  int depth = 0;
  while (!path.empty()) {
    const size_t end = std::min(path.find_first_of(SEPARATORS), path.size());
    const std::string_view part = path.substr(0, end);
    if (part == "..")
      --depth;
    else if (!part.empty() && part != ".")
      ++depth;
    if (depth < 0)
      return false;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return true;
}

std::string RFindSample(const std::string& given, const std::string& trackDir)
{
  if (RStaysInside(trackDir + "/" + given) && RStaysInside(given))
    return RFindPath(given, trackDir, "data/audio");
  QWARN("Sample '%s' lies outside of the data directory; it won't be played", given.c_str());
  return "";
}
