#include "track/rsplinerep.h"

#include "foundation/qreport.h"
#include "geometry/dhermite.h"
#include "track/rinfokeys.h"

#include <algorithm>
#include <cmath>

namespace {

// Reported with severity fatal, while work goes on.
#define FATAL_LEVEL(...) qlog(QLOG_FATAL, "RSplineRep", __VA_ARGS__)

constexpr int64_t MAX_LINES = 1'000'000;
constexpr int64_t MAX_TRIS = 8'000'000;
// How many of the lines that a file counts it may leave out: what is beyond would only repeat the origin.
constexpr int64_t MAX_MISSING = 1000;
constexpr int MAX_LATERAL = 1000; // across a road; the triangles of each line are counted by it

std::string LineKey(int64_t i)
{
  return "line" + std::to_string(i);
}

DVector3 Across(const RSplineLine& line, float t)
{
  return line.left + (line.right - line.left) * t;
}

} // namespace

RSplineRep::RSplineRep() = default;
RSplineRep::~RSplineRep() = default;

int64_t RSplineRep::TriCapacity() const
{
  return int64_t(longDivisions) * lateralDivisions * lineCapacity * 2;
}

void RSplineRep::Load(const QInfo& info)
{
  int count = 0;
  LoadHead(info, count);
  if (count >= 1)
    LoadLines(info, count);
  BuildTriangles();
  BuildSpline();
}

void RSplineRep::LoadHead(const QInfo& info, int& count)
{
  lateralDivisions = info.GetInt("lines.lateral_divisions", 10);
  if (lateralDivisions < 1) {
    FATAL_LEVEL("lines.lateral_divisions in %s must be >=1 (now %d)", info.FileName().c_str(), lateralDivisions);
    lateralDivisions = 1;
  }
  if (lateralDivisions > MAX_LATERAL) {
    FATAL_LEVEL("lines.lateral_divisions in %s must be <=%d (now %d)", info.FileName().c_str(), MAX_LATERAL,
                lateralDivisions);
    lateralDivisions = MAX_LATERAL;
  }
  trisPerLine = 2 * lateralDivisions;
  longDivisions = 1;
  count = GetCount(info, "lines.count");
  if (const int64_t most = info.CountChildren("") + MAX_MISSING; count > most) {
    QWARN("lines.count (%d) in %s is far beyond the lines in the file; capping to %d", count, info.FileName().c_str(),
          static_cast<int>(most));
    count = static_cast<int>(most);
  }
  if (!Reserve(count))
    count = 0;
  flags = info.GetBool("lines.use_mesh_hits", false) ? flags | USE_MESH_HITS : flags & ~uint32_t(USE_MESH_HITS);
  paintStart = info.GetInt("lines.paint_start");
  int64_t end = info.GetInt("lines.paint_end", count - 1);
  if (end < paintStart)
    end += count;
  if (end >= count && count > 0) {
    QWARN("Splines lines.paint_end (%d) >= lines.count (%d); capping to %d", static_cast<int>(end), count, count - 1);
    end = count - 1;
  }
  paintEnd = static_cast<int>(end);
}

void RSplineRep::LoadLines(const QInfo& info, int count)
{
  lines.clear();
  for (int n = 0; n < count; ++n) {
    const std::string key = LineKey(n);
    RSplineLine line;
    bool kept = true;
    for (int side = LEFT; side <= RIGHT && kept; ++side) {
      const auto point = side == LEFT ? &RSplineLine::left : &RSplineLine::right;
      line.*point = GetVector(info, key + (side == LEFT ? ".cp0" : ".cp1"));
      if (lines.empty())
        continue;
      if (line.*point == lines.back().*point) {
        QWARN("RSplineRep: degenerate spline detected at line %d; skipped", n);
        kept = false;
      } else if (n < count - 1 && line.*point == lines.front().*point) {
        QWARN("RSplineRep: spline %d seems to overlap itself for more than 1 lap; fix spline.ini count to %d and "
              "paint_end to %d?",
              n, n, n - 1);
      }
    }
    if (!kept)
      continue;
    line.longGrip = info.GetFloat(key + ".long_grip", 1.0f);
    line.elevation = info.GetFloat(key + ".elevation");
    line.flags = info.GetInt(key + ".flags");
    lines.push_back(line);
  }
}

void RSplineRep::Save(QInfo& info) const
{
  info.SetInt("lines.count", LineCount());
  info.SetInt("lines.paint_start", paintStart);
  info.SetInt("lines.paint_end", paintEnd);
  info.SetInt("lines.lateral_divisions", lateralDivisions);
  info.SetInt("lines.use_mesh_hits", flags & USE_MESH_HITS ? 1 : 0);
  int n = 0;
  for (const RSplineLine& line : lines) {
    const std::string key = LineKey(n++);
    SetVector(info, key + ".cp0", line.left);
    SetVector(info, key + ".cp1", line.right);
    info.SetFloat(key + ".long_grip", line.longGrip);
    info.SetFloat(key + ".elevation", line.elevation);
    info.SetInt(key + ".flags", line.flags);
  }
}

bool RSplineRep::Reserve(int capacity)
{
  if (capacity == 0)
    return true;
  const int64_t triCapacity = int64_t(longDivisions) * lateralDivisions * capacity * 2;
  if (capacity < 0 || capacity > MAX_LINES) {
    FATAL_LEVEL("RSplineRep:Reserve() out of memory (line)");
    return false;
  }
  if (triCapacity > MAX_TRIS) {
    FATAL_LEVEL("RSplineRep:Reserve() out of memory (tri)");
    return false;
  }
  if (capacity < lineCapacity)
    QWARN("RSplineRep:Reserve(); shrinking line array, quite unusual");
  if (triCapacity < reservedTris)
    QWARN("RSplineRep:Reserve(); shrinking tri array, quite unusual");
  lineCapacity = capacity;
  reservedTris = triCapacity;
  if (LineCount() > capacity)
    lines.resize(static_cast<size_t>(capacity));
  if (static_cast<int64_t>(tris.size()) > triCapacity)
    tris.resize(static_cast<size_t>(triCapacity));
  return true;
}

void RSplineRep::AddLine(const RSplineLine& line)
{
  if (LineCount() >= lineCapacity) {
    QWARN("Reserve more lines (%d > allocated %d)", LineCount() + 1, lineCapacity);
    if (!Reserve(lineCapacity + GROW))
      return;
  }
  lines.push_back(line);
}

void RSplineRep::RemoveLast()
{
  if (!lines.empty())
    lines.pop_back();
}

void RSplineRep::BuildTriangles()
{
  QDBG("BuildTriangles; lines=%d, trisAllocated %d\n", LineCount(), static_cast<int>(TriCapacity()));
  tris.clear();
  if (LineCount() < 2 || int64_t(LineCount()) * trisPerLine > MAX_TRIS)
    return;
  tris.reserve((lines.size() - 1) * static_cast<size_t>(trisPerLine));
  const auto n = static_cast<float>(lateralDivisions);
  for (size_t i = 0; i + 1 < lines.size(); ++i) {
    for (int j = 0; j < lateralDivisions; ++j) {
      const float t0 = static_cast<float>(j) / n;
      const float t1 = static_cast<float>(j + 1) / n;
      const DVector3 a0 = Across(lines[i], t0), a1 = Across(lines[i], t1);
      const DVector3 b0 = Across(lines[i + 1], t0), b1 = Across(lines[i + 1], t1);
      tris.push_back({{a0, a1, b0}, t0});
      tris.push_back({{b1, b0, a1}, t0});
    }
  }
}

void RSplineRep::BuildSpline()
{
  const bool closed = flags & CLOSED;
  for (auto& edge : curves)
    for (auto& curve : edge)
      curve = std::make_unique<DNonUniformHermiteSpline>(closed);
  float total = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    RSplineLine& line = lines[i];
    const RSplineLine& next = lines[(i + 1) % lines.size()];
    for (int axis = 0; axis < 3; ++axis) {
      Curve(LEFT, axis)->AddKey(total, line.left[axis]);
      Curve(RIGHT, axis)->AddKey(total, line.right[axis]);
    }
    line.length = (glm::length(next.left - line.left) + glm::length(next.right - line.right)) / 2;
    line.distance = total;
    total += line.length;
  }
  if (!closed || lines.empty())
    return;
  for (Side side : {LEFT, RIGHT})
    for (int axis = 0; axis < 3; ++axis)
      WarnOfLoop(side, axis);
}

void RSplineRep::WarnOfLoop(Side side, int axis) const
{
  constexpr float WIDEST = 100; // metres
  const DNonUniformHermiteSpline& curve = *Curve(side, axis);
  const float gap = std::abs(curve.Value(0) - curve.Value(curve.Count() - 1));
  if (gap > WIDEST)
    QWARN("Spline %s-%c would loop from last to first point with %.1f distance. Are you sure this is not a "
          "point_to_point track? (special.ini: timeline.point_to_point=1)",
          side == LEFT ? "LEFT" : "RIGHT", "xyz"[axis], static_cast<double>(gap));
}

bool RSplineRep::CopySubdivision(const RSplineRep& other)
{
  if (!lines.empty()) {
    QWARN("Cannot change the subdivision level of a spline when there are splines present");
    return false;
  }
  lateralDivisions = other.lateralDivisions;
  longDivisions = other.longDivisions;
  trisPerLine = 2 * lateralDivisions;
  return true;
}

float RSplineRep::GetTrackLength() const
{
  if (lines.empty())
    return 0;
  return lines.back().distance + (flags & CLOSED ? lines.back().length : 0);
}

bool RSplineRep::GetPosAt(float distance, float lateral, DVector3& position, DVector3& behind) const
{
  position = behind = DVector3(0.0f);
  if (lines.empty())
    return false;
  auto line =
      std::find_if(lines.begin(), lines.end(), [&](const RSplineLine& l) { return l.distance + l.length > distance; });
  float f = 0;
  if (line == lines.end())
    line = lines.begin();
  else if (line->length > 0)
    f = (distance - line->distance) / line->length;
  const RSplineLine& next = line + 1 == lines.end() ? lines.front() : line[1];
  const DVector3 left = line->left + (next.left - line->left) * f;
  const DVector3 right = line->right + (next.right - line->right) * f;
  position = left * (1 - lateral) + right * lateral;
  behind = position - DNormalized((next.left - line->left) + (next.right - line->right));
  return true;
}

void RSplineRep::Roll(int n)
{
  const auto count = static_cast<int64_t>(lines.size());
  if (count < 2 || n == 0)
    return;
  const int64_t first = ((n % count) + count) % count;
  std::rotate(lines.begin(), lines.begin() + first, lines.end());
  BuildTriangles();
  BuildSpline();
}

bool RSplineRep::SetMaxVelocity(int fromSpline, int toSpline, float fromVelocity, float toVelocity)
{
  const int last = LineCount() - 1;
  if (fromSpline < 0 || fromSpline > last) {
    QWARN("'fromSpline' (%d) is out of range 0..%d", fromSpline, last);
    return false;
  }
  if (toSpline < 0 || toSpline > last) {
    QWARN("'toSpline' (%d) is out of range 0..%d", toSpline, last);
    return false;
  }
  if (fromSpline >= toSpline) {
    QWARN("'fromSpline' (%d) must be smaller than 'toSpline' (%d)", fromSpline, toSpline);
    return false;
  }
  for (int i = fromSpline; i <= toSpline; ++i) {
    const float f = static_cast<float>(i - fromSpline) / static_cast<float>(toSpline - fromSpline);
    lines[static_cast<size_t>(i)].maxVelocity = fromVelocity + (toVelocity - fromVelocity) * f;
  }
  return true;
}

void RSplineRep::SetMaxVelocity(float velocity)
{
  for (RSplineLine& line : lines)
    line.maxVelocity = velocity;
}

DNonUniformHermiteSpline* RSplineRep::Curve(Side side, int axis) const
{
  return curves[static_cast<size_t>(side)][static_cast<size_t>(axis)].get();
}
