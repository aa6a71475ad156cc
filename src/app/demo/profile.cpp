#include "app/demo/profile.h"

#include <limits>

namespace {

constexpr double SPACING = 5;
constexpr double REACH = 26;       // of the strip beside the road, where nothing is in the way
constexpr double CORRIDOR_GAP = 4; // left between the strips of two stretches
constexpr double PIT_REACH = 46;
constexpr double LANE_WIDTH = 11, APRON_WIDTH = 22, ISLAND_WIDTH = 5;

size_t U(int i)
{
  return static_cast<size_t>(i);
}

// Average of a value over the sections within the span, round the lap.
template <typename Get>
double Average(const DemoCourse& course, int i, int span, Get get)
{
  double sum = 0;
  for (int k = -span; k <= span; ++k)
    sum += get(course.At(i + k));
  return sum / (2 * span + 1);
}

void LayOut(DemoCourse& course, const DemoLine& line)
{
  const DemoLine points = DemoResample(line, SPACING);
  const int n = static_cast<int>(points.size());
  course.length = DemoLength(points);
  course.spacing = course.length / n;
  course.sections.resize(U(n));
  const auto plan = [&](int i) {
    const DemoPoint& p = points[U((i % n + n) % n)];
    return DemoPlan(p.x, p.z);
  };
  double distance = 0;
  for (int i = 0; i < n; ++i) {
    DemoSection& s = course.sections[U(i)];
    s.at = plan(i);
    const DemoPlan ahead = plan(i + 1) - plan(i - 1);
    const double length = glm::length(ahead);
    s.tangent = length > 1e-6 ? ahead / length : DemoPlan(0, -1); // a line that turns back on itself has none
    s.right = DemoPlan(-s.tangent.y, s.tangent.x);
    s.half = {points[U(i)].left, points[U(i)].right};
    s.distance = distance;
    distance += glm::length(plan(i + 1) - plan(i));
  }
  for (int i = 0; i < n; ++i) {
    const DemoPlan a = course.At(i - 1).tangent, b = course.At(i + 1).tangent;
    const double turn = std::atan2(a.x * b.y - a.y * b.x, a.x * b.x + a.y * b.y);
    course.sections[U(i)].curvature = turn / (2 * course.spacing);
  }
}

// Two neighbours' lateral ends must not change places, where a narrow bend turns faster than its curvature says. The
// way to an end is asked for with a factor, by which it is to be shortened first.
template <typename Way>
void Unfold(DemoCourse& course, Way way)
{
  for (int pass = 0, changed = 1; pass < 60 && changed; ++pass) {
    changed = 0;
    for (int i = 0; i < course.Count(); ++i)
      for (int side = 0; side < 2; ++side) {
        DemoSection &a = course.sections[U(i)], &b = course.sections[U(course.Wrap(i + 1))];
        const double wayA = way(a, side, 1.0), wayB = way(b, side, 1.0);
        const DemoPlan step = b.Lateral(b.Sign(side) * wayB) - a.Lateral(a.Sign(side) * wayA);
        if (std::min(glm::dot(step, a.tangent), glm::dot(step, b.tangent)) > 0.12 * course.spacing)
          continue;
        changed |= way(a, side, 0.8) < wayA - 0.01;
        changed |= way(b, side, 0.8) < wayB - 0.01;
      }
  }
}

// An edge inside a bend must not run backwards: there the road is narrower than the line says.
void NarrowTightBends(DemoCourse& course)
{
  for (DemoSection& s : course.sections) {
    const double room = 0.8 / std::max(std::abs(s.curvature), 1e-6);
    double& inside = s.half[s.curvature > 0 ? DEMO_RIGHT : DEMO_LEFT];
    inside = std::max(0.5, std::min(inside, room));
  }
  Unfold(course, [](DemoSection& s, int side, double factor) {
    double& half = s.half[U(side)];
    half = std::max(std::min(half, 0.3), half * factor);
    return half;
  });
}

void SetHeights(DemoCourse& course)
{
  const int n = course.Count();
  std::vector<double> height(U(n)), bank(U(n));
  for (DemoSection& s : course.sections)
    s.height = course.land.Field(s.at);
  for (int pass = 0; pass < 2; ++pass) {
    for (int i = 0; i < n; ++i)
      height[U(i)] = Average(course, i, std::min(8, n / 4), [](const DemoSection& s) { return s.height; });
    for (int i = 0; i < n; ++i)
      course.sections[U(i)].height = height[U(i)];
  }
  for (int i = 0; i < n; ++i) {
    const double k = Average(course, i, std::min(5, n / 4), [](const DemoSection& s) { return s.curvature; });
    bank[U(i)] = std::clamp(k * 3.0, -0.045, 0.045);
  }
  const double zero = course.sections[0].height;
  for (int i = 0; i < n; ++i) {
    course.sections[U(i)].height -= zero;
    course.sections[U(i)].bank = bank[U(i)];
  }
}

// The strip beside the road ends where another stretch becomes nearer, and before the middle of a bend.
void FindReach(DemoCourse& course)
{
  const DemoNearest nearest(course.sections);
  const int n = course.Count();
  std::vector<std::array<double, 2>> free(U(n));
  for (int i = 0; i < n; ++i)
    for (int side = 0; side < 2; ++side) {
      const DemoSection& s = course.sections[U(i)];
      const double half = s.half[U(side)];
      double& room = free[U(i)][U(side)];
      for (room = 0; room < PIT_REACH + CORRIDOR_GAP; room += 1) {
        const DemoPlan p = s.Lateral(s.Sign(side) * (half + room + 1));
        const int found = nearest.Find(p, half + room + 3);
        if (found >= 0 && course.Apart(found, i) > 2)
          break;
      }
      if (s.curvature * s.Sign(side) > 1e-4)
        room = std::min(room, 0.7 / (s.curvature * s.Sign(side)) - half);
      room = std::max(0.0, room - CORRIDOR_GAP);
    }
  // A neighbour's narrow place counts, less and less with the distance, so that the outer edge stays a smooth line.
  for (int i = 0; i < n; ++i)
    for (int side = 0; side < 2; ++side) {
      double reach = PIT_REACH;
      for (int k = -12; k <= 12; ++k)
        reach = std::min(reach, free[U(course.Wrap(i + k))][U(side)] + std::abs(k) * 1.5);
      course.sections[U(i)].side[U(side)].reach = reach;
    }
  Unfold(course, [](DemoSection& a, int side, double factor) {
    a.side[U(side)].reach *= factor;
    return a.half[U(side)] + a.side[U(side)].reach;
  });
}

void FindCorners(DemoCourse& course)
{
  const int n = course.Count();
  std::vector<double> k(U(n));
  for (int i = 0; i < n; ++i)
    k[U(i)] = Average(course, i, std::min(3, n / 4), [](const DemoSection& s) { return s.curvature; });
  const auto bends = [&](int i) { return std::abs(k[U(course.Wrap(i))]) > 1.0 / 210; };
  const auto sameBend = [&](int i) {
    return bends(i) && bends(i - 1) && k[U(course.Wrap(i))] * k[U(course.Wrap(i - 1))] > 0;
  };
  int start = 0;
  while (start < n && sameBend(start))
    ++start;
  for (int i = start; i < start + n;) {
    if (!bends(i)) {
      ++i;
      continue;
    }
    DemoCorner c{i, i, i, 0, DEMO_RIGHT};
    for (++i; i < start + n && sameBend(i); ++i) {
      c.last = i;
      if (std::abs(k[U(course.Wrap(i))]) > std::abs(k[U(course.Wrap(c.apex))]))
        c.apex = i;
    }
    c.radius = 1 / std::abs(k[U(course.Wrap(c.apex))]);
    c.inside = k[U(course.Wrap(c.apex))] > 0 ? DEMO_RIGHT : DEMO_LEFT;
    if (c.last - c.first >= 4)
      course.corners.push_back(c);
  }
}

// Kerbs inside a bend and at its exit, gravel where a car would go straight on.
void FurnishCorners(DemoCourse& course)
{
  for (const DemoCorner& c : course.corners) {
    const size_t inside = U(c.inside), outside = 1 - inside;
    for (int i = c.first - 2; i <= c.last + 2; ++i)
      course.sections[U(course.Wrap(i))].side[inside].kerb = true;
    for (int i = c.last - 4; i <= c.last + 8; ++i)
      course.sections[U(course.Wrap(i))].side[outside].kerb = true;
    if (c.radius < 170)
      for (int i = c.first - 1; i <= c.last + 4; ++i)
        course.sections[U(course.Wrap(i))].side[outside].gravel = true;
  }
}

// Room for pits: the longest run round the start, straight and with nothing beside it.
void PlacePits(DemoCourse& course)
{
  const auto runs = [&](int side, int step) {
    int i = 0;
    while (std::abs(i) < 52 && std::abs(course.At(i + step).curvature) < 1.0 / 400 &&
           course.At(i + step).side[U(side)].reach > PIT_REACH - 1)
      i += step;
    return i * course.spacing;
  };
  double best = 0;
  for (int side : {DEMO_RIGHT, DEMO_LEFT}) {
    const double from = runs(side, -1), to = runs(side, 1);
    if (to - from > best + 1 && from < -90 && to > 70) {
      best = to - from;
      course.pits = {side, std::max(from, -235.0), std::min(to, 195.0), 0, 0};
    }
  }
  DemoPits& pits = course.pits;
  if (!pits.Exist())
    return;
  pits.boxesFrom = std::max(pits.from + 85, -150.0);
  pits.boxesTo = std::min(pits.to - 85, 70.0);
  if (pits.boxesTo - pits.boxesFrom < 24)
    pits = {};
}

void ShapeSides(DemoCourse& course)
{
  for (int i = 0; i < course.Count(); ++i)
    for (int side = 0; side < 2; ++side) {
      DemoSide& s = course.sections[U(i)].side[U(side)];
      const DemoPits& pits = course.pits;
      const double d = course.FromStart(i);
      double wanted = REACH;
      if (pits.Exist() && side == pits.side) {
        const double out = DemoSmooth(pits.from, pits.from + 35, d) * DemoSmooth(pits.to, pits.to - 35, d);
        const double apart = DemoSmooth(pits.from + 25, pits.from + 80, d) * DemoSmooth(pits.to - 25, pits.to - 80, d);
        const double boxes =
            DemoSmooth(pits.boxesFrom - 25, pits.boxesFrom - 5, d) * DemoSmooth(pits.boxesTo + 25, pits.boxesTo + 5, d);
        s.lane = LANE_WIDTH * out;
        s.island = ISLAND_WIDTH * apart;
        s.apron = APRON_WIDTH * boxes;
        wanted =
            DemoMix(REACH, PIT_REACH, DemoSmooth(pits.from, pits.from + 60, d) * DemoSmooth(pits.to, pits.to - 60, d));
        if (s.lane > 0)
          s.kerb = s.gravel = false;
      }
      s.reach = std::min(s.reach, wanted);
      const double used = s.island + s.lane + s.apron;
      if (s.gravel && s.reach < 16)
        s.gravel = false;
      if (s.reach > 4)
        s.barrier = std::min(s.reach - 1.5, std::max(used > 0 ? used + 6 : 0, 0.72 * std::min(s.reach, REACH)));
    }
}

// In the widest gap that the circuit leaves, with its level below all road that is near.
void PlaceLake(DemoCourse& course)
{
  const DemoNearest nearest(course.sections);
  const DemoPlan middle = course.land.Middle();
  const double radius = course.land.Radius();
  double best = 0;
  for (int ix = -12; ix <= 12; ++ix)
    for (int iz = -12; iz <= 12; ++iz) {
      const DemoPlan p = middle + DemoPlan(ix, iz) * (radius / 13);
      // Low ground is worth more room.
      const double room = nearest.DistanceTo(p) - course.land.Field(p) * 1.5;
      if (glm::length(p - middle) < radius * 0.85 && room > best) {
        best = room;
        course.lake.centre = p;
      }
    }
  const double room = nearest.DistanceTo(course.lake.centre);
  course.lake.radius = std::clamp(room - 70, 0.0, 240.0);
  if (course.lake.radius < 40) {
    course.lake = {};
    return;
  }
  course.lake.level = std::numeric_limits<double>::max();
  for (const DemoSection& s : course.sections)
    if (glm::length(s.at - course.lake.centre) < room + 200)
      course.lake.level = std::min(course.lake.level, s.height - 3.5);
}

} // namespace

DemoLand::DemoLand(const std::string& name, const DemoLine& line)
{
  DemoPlan low(1e9), high(-1e9);
  for (const DemoPoint& p : line) {
    low = glm::min(low, DemoPlan(p.x, p.z));
    high = glm::max(high, DemoPlan(p.x, p.z));
  }
  middle = (low + high) * 0.5;
  radius = glm::length(high - low) * 0.5;
  if (name == "lakeside") {
    hills = {{{880, 230}, 40, 270},  {{-420, -160}, 36, 210}, {{330, 850}, 34, 210},
             {{300, -900}, 40, 220}, {{640, -420}, 9, 130},   {{-330, 420}, 22, 170}};
    return;
  }
  // A hill in every second or so field of a coarse board; where, is the name's affair.
  uint32_t salt = 0;
  for (const char c : name)
    salt = salt * 31 + static_cast<unsigned char>(c);
  constexpr double FIELD = 520;
  const auto cells = static_cast<int>(radius / FIELD) + 2;
  for (int ix = -cells; ix <= cells; ++ix)
    for (int iz = -cells; iz <= cells; ++iz) {
      const double jx = DemoRandom(ix, iz, salt) - 0.5, jz = DemoRandom(ix, iz, salt + 1) - 0.5;
      hills.push_back({middle + DemoPlan(ix + 0.8 * jx, iz + 0.8 * jz) * FIELD, 36 * DemoRandom(ix, iz, salt + 2) - 6,
                       DemoMix(190, 290, DemoRandom(ix, iz, salt + 3))});
    }
}

double DemoLand::Field(const DemoPlan& p) const
{
  double h = 0;
  for (const Hill& hill : hills) {
    const DemoPlan d = p - hill.at;
    h += hill.height * std::exp(-(d.x * d.x + d.y * d.y) / (2 * hill.width * hill.width));
  }
  return h;
}

DemoCourse DemoMakeCourse(const std::string& name, const DemoLine& line)
{
  DemoCourse course{name, DemoLand(name, line), {}, 0, 0, {}, {}, {}};
  LayOut(course, line);
  NarrowTightBends(course);
  SetHeights(course);
  FindReach(course);
  FindCorners(course);
  FurnishCorners(course);
  PlacePits(course);
  ShapeSides(course);
  PlaceLake(course);
  return course;
}

DemoNearest::DemoNearest(const std::vector<DemoSection>& from) : sections(from)
{
  for (size_t i = 0; i < sections.size(); ++i)
    cells.emplace_back(Key(sections[i].at), static_cast<int>(i));
  std::sort(cells.begin(), cells.end());
}

int64_t DemoNearest::Key(const DemoPlan& p) const
{
  return (static_cast<int64_t>(std::floor(p.x / CELL)) << 32) + static_cast<int64_t>(std::floor(p.y / CELL));
}

void DemoNearest::Gather(const DemoPlan& p, double within, std::vector<int>& out) const
{
  out.clear();
  const int span = static_cast<int>(std::ceil(within / CELL));
  for (int ix = -span; ix <= span; ++ix) {
    // Cells of one column stand together in the list.
    const int64_t from = Key(p + DemoPlan(ix * CELL, -span * CELL)), to = Key(p + DemoPlan(ix * CELL, span * CELL));
    for (auto it = std::lower_bound(cells.begin(), cells.end(), std::pair(from, -1));
         it != cells.end() && it->first <= to; ++it) {
      const DemoPlan d = sections[static_cast<size_t>(it->second)].at - p;
      if (d.x * d.x + d.y * d.y <= within * within)
        out.push_back(it->second);
    }
  }
}

int DemoNearest::Find(const DemoPlan& p, double within) const
{
  std::vector<int> found;
  Gather(p, within, found);
  int best = -1;
  double least = within * within;
  for (const int i : found) {
    const DemoPlan d = sections[static_cast<size_t>(i)].at - p;
    const double square = d.x * d.x + d.y * d.y;
    if (square < least || (square == least && (best < 0 || i < best))) {
      least = square;
      best = i;
    }
  }
  return best;
}

double DemoNearest::DistanceTo(const DemoPlan& p) const
{
  for (double within = 60; within < 250; within *= 2)
    if (const int i = Find(p, within); i >= 0)
      return glm::length(sections[static_cast<size_t>(i)].at - p);
  double least = std::numeric_limits<double>::max();
  for (const DemoSection& s : sections)
    least = std::min(least, glm::length(s.at - p));
  return least;
}
