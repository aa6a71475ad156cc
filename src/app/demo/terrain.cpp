#include "app/demo/terrain.h"

#include "app/demo/triangulation.h"

#include <map>

namespace {

constexpr double NEAR_ROAD = 140; // how far the road's height counts
constexpr double BEYOND = 1700;   // of the circuit's outermost place
constexpr double LAND_CELL = 215, FAR_CELL = 950;
constexpr double LAKE_CELL = 170;
constexpr double LAKE_BED = 3.2;

size_t U(int i)
{
  return static_cast<size_t>(i);
}

} // namespace

DemoTerrain::DemoTerrain(const DemoCourse& of, DemoStrip& outer) : course(of), strip(outer)
{
  zero = course.land.Field(course.sections[0].at) - course.sections[0].height;
  extent = course.land.Radius() + BEYOND;
  Triangulate();
  FindNormals(outer);
}

DemoTerrain::RoadHeight DemoTerrain::Beside(const DemoPlan& p) const
{
  std::vector<int> found;
  strip.Nearest().Gather(p, NEAR_ROAD, found);
  double sum = 0, weights = 0, least = NEAR_ROAD;
  for (const int i : found) {
    const DemoSection& s = course.At(i);
    const DVector3& end = strip.Outer(i, glm::dot(p - s.at, s.right) < 0 ? DEMO_LEFT : DEMO_RIGHT);
    const DemoPlan d = p - DemoPlan(end.x, end.z);
    const double square = d.x * d.x + d.y * d.y;
    const double weight = 1 / ((square + 1) * (square + 1));
    sum += weight * end.y;
    weights += weight;
    least = std::min(least, std::sqrt(square));
  }
  return {weights > 0 ? sum / weights : 0, least};
}

double DemoTerrain::ShoreRadius(const DemoPlan& p) const
{
  const DemoPlan d = p - course.lake.centre;
  const double angle = std::atan2(d.y, d.x);
  return course.lake.radius *
         (0.66 +
          0.34 * DemoSmooth(0.25, 0.72, DemoFractal(4 + 1.5 * std::cos(angle), 4 + 1.5 * std::sin(angle), 3, 77)));
}

bool DemoTerrain::InLake(const DemoPlan& p, double margin) const
{
  return course.lake.radius > 0 && glm::length(p - course.lake.centre) < ShoreRadius(p) + margin;
}

double DemoTerrain::Height(const DemoPlan& p) const
{
  const RoadHeight road = Beside(p);
  const double away = road.distance < NEAR_ROAD ? road.distance : strip.Nearest().DistanceTo(p);
  double land = course.land.Field(p) - zero;
  land += DemoSmooth(10, 130, away) * 9 * (DemoFractal(p.x / 120, p.y / 120, 4, 41) - 0.5);
  // Higher ground all round, which the eye takes for the rest of the country.
  land += DemoSmooth(260, 1100, away) * 75 * DemoFractal(p.x / 620, p.y / 620, 4, 51);
  land -=
      DemoSmooth(0.93, 1.0,
                 std::max(std::abs(p.x - course.land.Middle().x), std::abs(p.y - course.land.Middle().y)) / extent) *
      60;
  double h = DemoMix(road.height, land, DemoSmooth(0, 75, road.distance));
  if (course.lake.radius > 0) {
    const double shore = ShoreRadius(p), d = glm::length(p - course.lake.centre);
    const double bank = DemoMix(h, course.lake.level + 0.5, DemoSmooth(shore + 40, shore + 3, d));
    h = d > shore ? bank : course.lake.level + 0.5 - (LAKE_BED + 0.5) * DemoSmooth(shore, shore - 22, d);
  }
  return h;
}

double DemoTerrain::Wood(const DemoPlan& p) const
{
  if (strip.Near(p, 9) || InLake(p, 9))
    return 0;
  const double wood = DemoFractal(p.x / 170, p.y / 170, 3, 61);
  return DemoMix(0.04, 1.0, DemoSmooth(0.46, 0.60, wood));
}

double DemoTerrain::PointSpacing(const DemoPlan& p, double distance) const
{
  double spacing = distance < 150 ? 8 : distance < 300 ? 16 : distance < 480 ? 32 : distance < 800 ? 64 : 128;
  if (course.lake.radius > 0) {
    const double fromShore = std::abs(glm::length(p - course.lake.centre) - ShoreRadius(p));
    if (fromShore < 26)
      spacing = std::min(spacing, 8.0);
    else if (InLake(p, -30))
      spacing = std::max(spacing, 40.0);
  }
  return spacing;
}

// Squares cut in four until they are as small as their place asks; a point, not quite in the middle, in each.
void DemoTerrain::ScatterPoints(const DemoPlan& middle, double half, std::vector<DemoPlan>& out) const
{
  const double distance = std::max(0.0, strip.Nearest().DistanceTo(middle) - half * 1.2);
  if (2 * half > PointSpacing(middle, distance)) {
    for (const double x : {-0.5, 0.5})
      for (const double z : {-0.5, 0.5})
        ScatterPoints(middle + DemoPlan(x, z) * half, half / 2, out);
    return;
  }
  const auto kx = static_cast<int64_t>(middle.x * 8), kz = static_cast<int64_t>(middle.y * 8);
  const DemoPlan p = middle + DemoPlan(DemoRandom(kx, kz, 1) - 0.5, DemoRandom(kx, kz, 2) - 0.5) * (half * 1.1);
  const DemoPlan off = glm::abs(p - course.land.Middle());
  if (std::max(off.x, off.y) < extent - half && !strip.Near(p, std::min(half, 3.5)))
    out.push_back(DemoTriangulation::Snapped(p));
}

void DemoTerrain::Triangulate()
{
  const DemoPlan middle = DemoTriangulation::Snapped(course.land.Middle());
  DemoTriangulation net(middle - extent, middle + extent);
  std::vector<std::array<int, 2>> ends(course.sections.size(), {-1, -1});
  const auto note = [&](int vertex, const DVector3& position, int section, int side) {
    if (vertex < static_cast<int>(vertices.size()))
      return;
    vertices.push_back(position);
    outerEnd.emplace_back(section, side);
  };
  for (int side = 0; side < 2; ++side)
    for (int i = 0; i < course.Count(); ++i) {
      const DVector3& end = strip.Outer(i, side);
      const DemoPlan p(end.x, end.z);
      if (strip.Covers(p, i)) {
        crossed.push_back(i);
        continue;
      }
      ends[U(i)][U(side)] = net.Add(p);
      note(ends[U(i)][U(side)], end, i, side);
    }
  for (int side = 0; side < 2; ++side)
    for (int i = 0; i < course.Count(); ++i) {
      const int a = ends[U(i)][U(side)], b = ends[U(course.Wrap(i + 1))][U(side)];
      if (a >= 0 && b >= 0)
        static_cast<void>(net.AddEdge(a, b)); // false at a crossing, where no edge is needed
    }
  std::vector<DemoPlan> free;
  double half = 64; // a power of two, so that the squares come out as wide as is asked
  while (half < extent)
    half *= 2;
  ScatterPoints(middle, half, free);
  for (int k = -8; k < 8; ++k) // the rim
    for (const DemoPlan& p : {DemoPlan(k, -8), DemoPlan(8, k), DemoPlan(-k, 8), DemoPlan(-8, -k)})
      free.push_back(DemoTriangulation::Snapped(middle + p * (extent / 8)));
  for (const DemoPlan& p : free)
    note(net.Add(p), DemoAt(p, Height(p)), -1, 0);
  for (const auto& t : net.Triangles()) {
    const DemoPlan centre = (net.Point(t[0]) + net.Point(t[1]) + net.Point(t[2])) / 3.0;
    if (!strip.Covers(centre))
      triangles.push_back({t[0], t[2], t[1]}); // the net's page has z upward, the world looks from the other side
  }
}

void DemoTerrain::FindNormals(DemoStrip& outer)
{
  normals.assign(vertices.size(), DVector3(0.0f));
  for (const auto& t : triangles) {
    const DVector3 a = vertices[U(t[0])];
    const DVector3 n = glm::cross(vertices[U(t[1])] - a, vertices[U(t[2])] - a);
    for (const int v : t)
      normals[U(v)] += n;
  }
  // The seam has one normal for both sides.
  for (size_t i = 0; i < normals.size(); ++i)
    if (const auto [section, side] = outerEnd[i]; section >= 0) {
      const DVector3 land = normals[i];
      normals[i] += outer.Normal(section, side == DEMO_LEFT ? 0 : DemoStrip::COLUMNS - 1);
      outer.AddNormal(section, side, land);
    }
  for (DVector3& n : normals)
    n = DNormalized(n);
}

DVector3 DemoTerrain::Tint(const DVector3& v, const DVector3& normal) const
{
  const DemoPlan p(v.x, v.z);
  DVector3 tint = DemoGroundTint(p);
  const auto wood = static_cast<float>(DemoSmooth(0.3, 0.8, Wood(p)));
  tint = glm::mix(tint, DVector3(0.80f, 0.82f, 0.72f) * tint, wood);
  const auto steep = static_cast<float>(DemoSmooth(0.90, 0.78, normal.y));
  tint = glm::mix(tint, DVector3(1.15f, 0.95f, 0.80f), steep * 0.7f);
  return tint;
}

bool DemoTerrain::IsBeach(size_t triangle) const
{
  const auto& t = triangles[triangle];
  const DVector3 c = (vertices[U(t[0])] + vertices[U(t[1])] + vertices[U(t[2])]) / 3.0f;
  return InLake({c.x, c.z}, 6);
}

// Of the triangles those that are the lake's shore and bed, or the others.
void DemoTerrain::EmitCell(DemoModel& model, const std::vector<size_t>& members, bool beach) const
{
  std::map<int, int> own; // the mesh's number of a vertex
  for (const size_t i : members) {
    if (IsBeach(i) != beach)
      continue;
    DemoMesh& mesh = model.Mesh(beach ? "gravel" : "grass");
    std::array<int, 3> corner{};
    for (size_t k = 0; k < 3; ++k) {
      const int v = triangles[i][k];
      const auto [entry, isNew] = own.try_emplace(v, static_cast<int>(mesh.vertices.size()));
      if (isNew) {
        const DVector3 &at = vertices[U(v)], &n = normals[U(v)];
        mesh.Add({at, n, {at.x / 9, at.z / 9}, DemoLight(n) * Tint(at, n)});
      }
      corner[k] = entry->second;
    }
    mesh.Triangle(corner[0], corner[1], corner[2]);
  }
}

// Where stretches cross, the land stops short of their corners: ground a little below both roads closes the gaps.
void DemoTerrain::EmitCrossings(DemoScenery& scenery) const
{
  if (crossed.empty())
    return;
  DemoMesh& mesh = scenery.AddNode("crossing", DEMO_COLLIDE).Finest().Mesh("grass");
  for (const int i : crossed) {
    const auto corner = [&](int section, int side) {
      const DemoSection& s = course.At(section);
      const double lateral = s.Sign(side) * (s.half[U(side)] + 9);
      const DVector3 at = DemoAt(s.Lateral(lateral), s.HeightAt(lateral) - 0.6);
      const DVector3 up(0, 1, 0);
      return mesh.Add({at, up, {at.x / 9, at.z / 9}, DemoLight(up) * DemoGroundTint({at.x, at.z})});
    };
    for (const int from : {i - 1, i})
      mesh.Quad(corner(from, DEMO_LEFT), corner(from, DEMO_RIGHT), corner(from + 1, DEMO_RIGHT),
                corner(from + 1, DEMO_LEFT));
  }
}

void DemoTerrain::Emit(DemoScenery& scenery) const
{
  std::map<std::array<int, 3>, std::vector<size_t>> cells; // far or near, then the cell
  for (size_t i = 0; i < triangles.size(); ++i) {
    const auto& t = triangles[i];
    const DVector3 c = (vertices[U(t[0])] + vertices[U(t[1])] + vertices[U(t[2])]) / 3.0f;
    const DemoPlan p(c.x, c.z);
    const bool far = strip.Nearest().DistanceTo(p) > 330;
    const double cell = far ? FAR_CELL : LAND_CELL;
    cells[{far, static_cast<int>(std::floor(p.x / cell)), static_cast<int>(std::floor(p.y / cell))}].push_back(i);
  }
  int counts[2] = {0, 0};
  for (const auto& [key, members] : cells) {
    const bool far = key[0] != 0;
    DemoNode& node =
        scenery.AddNode(DemoNumbered(far ? "far" : "land", counts[key[0]]++), far ? 0 : DEMO_COLLIDE | DEMO_SURFACE);
    for (const bool beach : {false, true})
      EmitCell(node.Finest(), members, beach);
  }
  EmitCrossings(scenery);
  if (course.lake.radius <= 0)
    return;
  int number = 0;
  const auto span = static_cast<int>(std::ceil((course.lake.radius * 1.05) / LAKE_CELL));
  for (int ix = -span; ix < span; ++ix)
    for (int iz = -span; iz < span; ++iz) {
      const DemoPlan a = course.lake.centre + DemoPlan(ix, iz) * LAKE_CELL, b = a + LAKE_CELL;
      const DemoPlan nearest = glm::clamp(course.lake.centre, a, b);
      if (glm::length(nearest - course.lake.centre) > course.lake.radius * 1.02)
        continue;
      const double y = course.lake.level;
      DemoNode& node = scenery.AddNode(DemoNumbered("lake", number++), DEMO_SURFACE);
      node.Finest().Mesh("water").Plane({DemoAt({a.x, b.y}, y), DemoAt(b, y), DemoAt({b.x, a.y}, y), DemoAt(a, y)},
                                        {static_cast<float>(a.x / 24), static_cast<float>(b.y / 24)},
                                        {static_cast<float>(b.x / 24), static_cast<float>(a.y / 24)});
    }
}
