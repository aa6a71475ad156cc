// From scan data to clouds, and what is told of a cloud.

#include "foundation/qfile.h"
#include "foundation/qfilename.h"
#include "foundation/qnumber.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "track/rlidar.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr const char* REPORT = "data/dump/rld_report.txt";

[[gnu::format(printf, 2, 3)]] void Put(std::string& out, const char* format, ...)
{
  char buffer[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  out += buffer;
}

double Millions(int count)
{
  return count / 1e6;
}

// The next word of a line, empty at its end.
std::string_view TakeWord(std::string_view& line)
{
  constexpr std::string_view BLANKS = " \t\r";
  line.remove_prefix(std::min(line.find_first_not_of(BLANKS), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(BLANKS));
  line.remove_prefix(word.size());
  return word;
}

// Further words count for nothing; a missing one is 0.
DVector3 PointOf(std::string_view line)
{
  DVector3 p(0.0f);
  for (int axis = 0; axis < 3; ++axis)
    p[axis] = QParseFloat(TakeWord(line));
  return p;
}

// Up to the next line end, or as much as a line may hold.
std::string_view TakeLine(std::string_view& text)
{
  constexpr size_t LONGEST = 1024;
  const std::string_view part = text.substr(0, LONGEST);
  const void* end = std::memchr(part.data(), '\n', part.size());
  const size_t length = end ? static_cast<size_t>(static_cast<const char*>(end) - part.data()) : part.size();
  text.remove_prefix(length + (end ? 1 : 0));
  return part.substr(0, length);
}

} // namespace

// Counted and stored in one pass.
bool RLidar::AddScan(const std::string& path)
{
  constexpr int PROGRESS = 1000;
  QBlock block;
  size_t size = 0;
  if (!QReadFile(path, block, size))
    return false;
  QLOG("Scanning '%s'...\n", path.c_str());
  const int start = PointCount();
  int lines = 0;
  for (std::string_view text(block.Text(), size); !text.empty();) {
    if (PointCount() == std::numeric_limits<int>::max()) {
      QERR("RLidar:ConvertXYZ(); too many points");
      break;
    }
    points.push_back(PointOf(TakeLine(text)));
    if (++lines % PROGRESS == 0)
      QDBG("Line %d...\r", lines);
  }
  const auto number = static_cast<int>(blocks.size());
  if (number < MAX_BLOCKS)
    blocks.push_back({start, lines});
  else
    QWARN("RLidar:ConvertXYZ(); '%s' is no block of its own, there are %d already", path.c_str(), MAX_BLOCKS);
  QLOG("Block %d starts at %d and contains %d points\n", number, start, lines);
  QLOG("%d points, total sofar: %d points (%d million).\n", lines, PointCount(), PointCount() / 1000000);
  return true;
}

bool RLidar::ConvertXYZ()
{
  constexpr int LAST_BLOCK = 9998;
  QLOG("RLidar:ConvertXYZ; notice that the step=%d (may skip points if >1)\n", 1);
  Clear();
  for (int k = 1; k <= LAST_BLOCK; ++k) {
    char name[40];
    std::snprintf(name, sizeof name, "block%06d.xyz", k);
    if (!AddScan(FullPath(name)))
      break;
  }
  QLOG("All blocks files have %d points\n", PointCount());
  QLOG("Saving RLD file...\n");
  const bool saved = SaveRLD("points.rld");
  Clear();
  return saved;
}

DBox RLidar::FindBounds(int progressStep) const
{
  constexpr float FAR = 1e8f;
  QLOG("Searching for min/max...\n");
  DBox box{DVector3(FAR), DVector3(-FAR)};
  int n = 0;
  for (const DVector3& p : points) {
    box.min = glm::min(box.min, p);
    box.max = glm::max(box.max, p);
    if (++n % progressStep == 0)
      QDBG("Point %d...\r", n);
  }
  return box;
}

bool RLidar::RelocateRLD()
{
  if (!LoadRLD("points.rld"))
    return false;
  DbgPrint("Loaded");
  const DVector3 center = points.empty() ? DVector3(0.0f) : FindBounds(10000).Center();
  for (DVector3& p : points)
    p -= center;
  QLOG("Saving relocated RLD file...\n");
  const bool saved = SaveRLD("points_relocated.rld");
  DbgPrint("relocated");
  return saved;
}

bool RLidar::SortRLD()
{
  if (!LoadRLD("points_relocated.rld"))
    return false;
  DbgPrint("Loaded");
  const DBox box = FindBounds(1000000);
  const DVector3 range = box.max - box.min, center = box.Center();
  QLOG("Range: %f %f %f\n", double(range.x), double(range.y), double(range.z));
  QLOG("Center: %f %f %f\n", double(center.x), double(center.y), double(center.z));
  return true;
}

bool RLidar::Export(const std::string& file) const
{
  std::string out = std::to_string(PointCount()) + "\n";
  for (const DVector3& p : points)
    Put(out, "%f %f %f\n", double(p.x), double(p.y), double(p.z));
  if (QWriteFile(file, out))
    return true;
  QERR("Can't open export file (%s)", file.c_str());
  return false;
}

bool RLidar::Analyze() const
{
  std::string out = "RLD report\n----------\n\n";
  Put(out, "Points   : %d (%.2f million)\n", PointCount(), Millions(PointCount()));
  Put(out, "Triangles: %d (%.2f million)\n\n", TriangleCount(), Millions(TriangleCount()));
  const DBox box = FindBounds(10000);
  const DVector3 range = box.max - box.min;
  Put(out, "Min  : %f %f %f\n", double(box.min.x), double(box.min.y), double(box.min.z));
  Put(out, "Max  : %f %f %f\n\n", double(box.max.x), double(box.max.y), double(box.max.z));
  Put(out, "Range: %f %f %f\n\nBlocks: %d\n", double(range.x), double(range.y), double(range.z),
      static_cast<int>(blocks.size()));
  for (size_t i = 0; i < blocks.size(); ++i)
    Put(out, "- block %d: start %d, points %d\n", static_cast<int>(i), blocks[i].start, blocks[i].size);
  if (!QWriteFile(REPORT, out)) {
    QERR("RLidar:Analyze(); can't open report file '%s'\n", REPORT);
    return false;
  }
  QNotePad(REPORT);
  return true;
}

namespace {

constexpr struct
{
  const char* text;
  bool (*run)(RLidar& lidar);
} COMMANDS[] = {
    {"lidar vertices", [](RLidar& l) { return (l.flags ^= RLidar::PAINT_VERTICES, true); }},
    {"lidar triangles", [](RLidar& l) { return (l.flags ^= RLidar::PAINT_TRIANGLES, true); }},
    {"lidar aabb", [](RLidar& l) { return (l.flags ^= RLidar::PAINT_AABB, true); }},
    {"lidar analyze", [](RLidar& l) { return l.Analyze(); }},
    {"lidar convert",
     [](RLidar& l) {
       QLOG("Converting Lidar...\n");
       return l.ConvertXYZ();
     }},
    {"lidar export",
     [](RLidar& l) {
       if (l.PointCount() == 0) {
         QLOG("No RLD data found to export");
         return false;
       }
       QLOG("Exporting RLD to temp/track.pts...\n");
       return l.Export("temp/track.pts");
     }},
    {"lidar sort",
     [](RLidar& l) {
       QLOG("Sort Lidar into AABB-HD tree...\n");
       return l.SortRLD();
     }},
};

} // namespace

bool RLidar::Command(std::string_view text)
{
  for (const auto& command : COMMANDS)
    if (text == command.text) {
      command.run(*this);
      return true;
    }
  if (text == "lidar import") {
    QLOG("Importing ase/surface.ase into Lidar (to track.rld)...\n");
    ImportASE(trackDir + "/ase/surface.ase");
    return true;
  }
  constexpr std::string_view MOVES[] = {"lidar movex ", "lidar movey ", "lidar movez "};
  for (int axis = 0; axis < 3; ++axis)
    if (text.starts_with(MOVES[axis])) {
      DVector3 by(0.0f);
      by[axis] = QParseFloat(text.substr(MOVES[axis].size()));
      translation += by;
      Translate(by);
      return true;
    }
  return false;
}
