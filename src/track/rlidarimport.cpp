// Meshes of an ASE file as a cloud.

#include "foundation/qfile.h"
#include "foundation/qnumber.h"
#include "foundation/qreport.h"
#include "track/rlidar.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace {

constexpr int PROGRESS = 1000;                                // a line of progress for so many
constexpr int64_t MOST = std::numeric_limits<int>::max() / 3; // triangles are counted in numbers too

// The rest of a line behind its key, when it has that key.
bool HasKey(std::string_view line, std::string_view key, std::string_view& rest)
{
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  if (!line.starts_with(key))
    return false;
  rest = line.substr(key.size());
  return true;
}

// The next whole number, past anything that is none: "  12:    A:    3" gives 12, then 3. False when there is no more.
bool TakeInt(std::string_view& text, int& number)
{
  text.remove_prefix(std::min(text.find_first_of("-0123456789"), text.size()));
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<size_t>(read.ptr - text.data()));
  return read.ec == std::errc();
}

float TakeFloat(std::string_view& text)
{
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(" \t\r"));
  text.remove_prefix(word.size());
  return QParseFloat(word);
}

} // namespace

struct RLidar::AseCounts
{
  int64_t objects = 0;
  int64_t vertices = 0;
  int64_t faces = 0;
};

// False when there can't be so many: each takes more bytes of text than that.
bool RLidar::CountASE(QFile& file, AseCounts& counts) const
{
  QLOG("Scanning for vertices and faces\n");
  const int64_t most = std::min(MOST, file.Size());
  qstring line;
  std::string_view rest;
  int n = 0;
  while (file.GetLine(line)) {
    if (HasKey(line.View(), "*NODE_NAME ", rest)) {
      ++counts.objects;
      QLOG("GEOMOBJECT %s\n", std::string(rest).c_str());
    } else if (HasKey(line.View(), "*MESH_NUMVERTEX ", rest) && TakeInt(rest, n)) {
      counts.vertices += std::max(n, 0);
      QLOG("%d vertices; total %lld\n", n, static_cast<long long>(counts.vertices));
    } else if (HasKey(line.View(), "*MESH_NUMFACES ", rest) && TakeInt(rest, n)) {
      counts.faces += std::max(n, 0);
      QLOG("%d faces; total %lld\n", n, static_cast<long long>(counts.faces));
    }
    if (counts.vertices > most || counts.faces > most)
      return false;
  }
  QLOG("Entire ASE contains %lld geomobjects, %lld vertices and %lld faces. Loading...\n",
       static_cast<long long>(counts.objects), static_cast<long long>(counts.vertices),
       static_cast<long long>(counts.faces));
  return true;
}

// counts becomes what was found.
bool RLidar::ReadASE(QFile& file, AseCounts& counts)
{
  counts = {};
  std::fill(points.begin(), points.end(), DVector3(0.0f));
  std::fill(triangles.begin(), triangles.end(), 0u);
  int start = 0;
  qstring line;
  std::string_view rest;
  while (file.GetLine(line)) {
    int n = 0;
    if (HasKey(line.View(), "*NODE_NAME ", rest)) {
      if (blocks.size() == MAX_BLOCKS) {
        qlog(QLOG_FATAL, "RLidar::ImportASE", "RLidar:ImportASE; too many GEOMOBJECTS (max=%d)", MAX_BLOCKS);
        return false;
      }
      start = static_cast<int>(counts.vertices);
      blocks.push_back({start, 0});
    } else if (HasKey(line.View(), "*MESH_VERTEX ", rest) && TakeInt(rest, n)) {
      const int64_t at = int64_t{start} + n;
      if (n < 0 || at >= PointCount()) {
        QERR("ASE load out of bounds; vertexIndex %lld >= points %d", static_cast<long long>(at), PointCount());
        return false;
      }
      DVector3& p = points[static_cast<size_t>(at)];
      for (int axis = 0; axis < 3; ++axis)
        p[axis] = TakeFloat(rest);
      ++counts.vertices;
      if (!blocks.empty())
        ++blocks.back().size;
      if (n % PROGRESS == 0)
        QDBG("Vertex %d: %f %f %f\r", n, double(p.x), double(p.y), double(p.z));
    } else if (HasKey(line.View(), "*MESH_FACE ", rest) && TakeInt(rest, n)) {
      if (counts.faces >= TriangleCount()) {
        QERR("ASE load out of bounds; triIndex %lld >= triangles %d", static_cast<long long>(counts.faces),
             TriangleCount());
        return false;
      }
      int corners[3] = {};
      for (int& corner : corners)
        TakeInt(rest, corner);
      for (size_t i = 0; i < 3; ++i) {
        const int64_t corner = int64_t{start} + corners[i];
        const bool there = corner >= 0 && corner < PointCount();
        triangles[static_cast<size_t>(counts.faces) * 3 + i] = there ? static_cast<uint32_t>(corner) : 0;
      }
      ++counts.faces;
      if (n % PROGRESS == 0)
        QDBG("Face %d: %d %d %d\r", n, corners[0], corners[1], corners[2]);
    }
  }
  return true;
}

bool RLidar::ImportASE(const std::string& path)
{
  QLOG("RLidar:ImportASE(%s)\n", path.c_str());
  Clear();
  QFile file(path);
  if (!file.IsOpen()) {
    QWARN("RLidar:ImportASE(%s); can't open file", path.c_str());
    return false;
  }
  AseCounts expected;
  if (!CountASE(file, expected)) {
    QERR("RLidar:ImportASE(%s); the file names more vertices or faces than it can hold", path.c_str());
    return false;
  }
  AllocPoints(static_cast<int>(expected.vertices));
  AllocTriangles(static_cast<int>(expected.faces));
  file.Seek(0);
  AseCounts found;
  if (!ReadASE(file, found)) {
    Clear();
    return false;
  }
  if (points.empty())
    triangles.clear(); // there is nothing that they could name
  QLOG("ImportASE completed; %lld vertices read (expected %lld)\n", static_cast<long long>(found.vertices),
       static_cast<long long>(expected.vertices));
  QLOG("  %lld triangles read (expected %lld)\n", static_cast<long long>(found.faces),
       static_cast<long long>(expected.faces));
  const bool saved = SaveRLD(trackDir + "/track.rld");
  return Analyze() && saved;
}
