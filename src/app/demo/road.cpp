#include "app/demo/road.h"

namespace {

constexpr int ROAD_CHUNK = 10; // sections a node
constexpr int VERGE_CHUNK = 16;

// Offsets of the five columns of a side, from the road's edge outward.
std::array<double, DemoStrip::SIDE> Offsets(const DemoSide& s)
{
  if (s.lane > 0) {
    const double lane = s.island + s.lane, apron = lane + s.apron;
    return {s.island * 0.3, s.island, lane, apron, std::max(s.reach, apron + 2)};
  }
  const double kerb = std::min(1.1, s.reach * 0.2), verge = std::min(4.0, s.reach * 0.4);
  const auto rail = [&](double by) { return std::clamp(s.barrier + by, verge, s.reach); };
  // The outer end lies a little farther out, since it is moved to the land's lattice and must not come to lie inside.
  return {kerb, verge, rail(-1), rail(1), s.reach + 0.03};
}

// Height over the road's edge there: flat beside the pits, elsewhere falling a little and then on its way to the land.
double Drop(const DemoSide& s, int column, double offset, double land)
{
  if (s.lane > 0)
    return column < 4 ? -0.02 : -0.25;
  if (column == 0 && s.kerb)
    return 0.05;
  const double outward = std::clamp(land * 0.6, -0.16 * offset, 0.2 * offset);
  const double t = s.reach > 0 ? offset / s.reach : 0;
  return -0.03 - 0.07 * DemoSmooth(1, 6, offset) + outward * t * t;
}

bool InQuad(const DemoPlan& p, const std::array<DVector3, 4>& q)
{
  bool inside = false;
  for (size_t i = 0, j = 3; i < 4; j = i++) {
    const double xi = q[i].x, zi = q[i].z, xj = q[j].x, zj = q[j].z;
    if ((zi > p.y) != (zj > p.y) && p.x < (xj - xi) * (p.y - zi) / (zj - zi) + xi)
      inside = !inside;
  }
  return inside;
}

} // namespace

DVector3 DemoGroundTint(const DemoPlan& p)
{
  const double broad = DemoFractal(p.x / 140, p.y / 140, 3, 11), fine = DemoNoise(p.x / 17, p.y / 17, 23);
  const auto tone = static_cast<float>(0.80 + 0.26 * broad + 0.12 * fine);
  const auto dry = static_cast<float>(DemoSmooth(0.45, 0.75, DemoFractal(p.x / 230, p.y / 230, 2, 31)));
  return glm::mix(DVector3(0.90f, 1.0f, 0.86f), DVector3(1.12f, 1.03f, 0.80f), dry) * tone;
}

DemoStrip::DemoStrip(const DemoCourse& of) : course(of), nearest(of.sections)
{
  const double zero = course.land.Field(course.sections[0].at) - course.sections[0].height;
  for (const DemoSection& s : course.sections) {
    std::array<DVector3, COLUMNS> row;
    for (int k = 0; k <= 4; ++k) {
      const double lateral = DemoMix(-s.half[DEMO_LEFT], s.half[DEMO_RIGHT], k / 4.0);
      row[static_cast<size_t>(LEFT_EDGE + k)] = DemoAt(s.Lateral(lateral), s.HeightAt(lateral));
    }
    for (int side = 0; side < 2; ++side) {
      const DemoSide& beside = s.side[static_cast<size_t>(side)];
      const auto offsets = Offsets(beside);
      for (int k = 0; k < SIDE; ++k) {
        const double offset = offsets[static_cast<size_t>(k)];
        DemoPlan p = s.Lateral(s.Sign(side) * (s.half[static_cast<size_t>(side)] + offset));
        if (k == SIDE - 1) // the land's triangulation knows these places
          p = {std::round(p.x * 64) / 64, std::round(p.y * 64) / 64};
        const double edge = s.EdgeHeight(side);
        const double y = edge + Drop(beside, k, offset, course.land.Field(p) - zero - edge) * std::min(1.0, offset);
        row[static_cast<size_t>(side == DEMO_LEFT ? SIDE - 1 - k : RIGHT_EDGE + 1 + k)] = DemoAt(p, y);
        widest = std::max(widest, glm::length(p - s.at));
      }
    }
    vertices.insert(vertices.end(), row.begin(), row.end());
  }
  normals.assign(vertices.size(), DVector3(0.0f));
  for (int i = 0; i < course.Count(); ++i)
    for (int k = 0; k + 1 < COLUMNS; ++k) {
      const DVector3 n = glm::cross(Vertex(i + 1, k + 1) - Vertex(i, k), Vertex(i + 1, k) - Vertex(i, k + 1)) * 0.5f;
      for (const size_t at : {Index(i, k), Index(i, k + 1), Index(i + 1, k), Index(i + 1, k + 1)})
        normals[at] += n;
    }
}

bool DemoStrip::Covers(const DemoPlan& p, int except) const
{
  std::vector<int> found;
  nearest.Gather(p, widest + 2 * course.spacing, found);
  for (const int i : found)
    if (except < 0 || course.Apart(i, except) > 3)
      if (InQuad(p, {Outer(i, DEMO_LEFT), Outer(i + 1, DEMO_LEFT), Outer(i + 1, DEMO_RIGHT), Outer(i, DEMO_RIGHT)}))
        return true;
  return false;
}

bool DemoStrip::Near(const DemoPlan& p, double margin) const
{
  std::vector<int> found;
  nearest.Gather(p, widest + margin + 2 * course.spacing, found);
  for (const int i : found) {
    const DemoSection& s = course.At(i);
    const DemoPlan d = p - s.at;
    if (std::abs(glm::dot(d, s.tangent)) > course.spacing)
      continue;
    const double lateral = glm::dot(d, s.right);
    const int side = lateral < 0 ? DEMO_LEFT : DEMO_RIGHT;
    const DVector3& outer = Outer(i, side);
    if (std::abs(lateral) < glm::length(DemoPlan(outer.x, outer.z) - s.at) + margin)
      return true;
  }
  return false;
}

std::string_view DemoStrip::MaterialOf(int section, int column) const
{
  if (column >= LEFT_EDGE && column < RIGHT_EDGE)
    return "asphalt";
  const int side = column < LEFT_EDGE ? DEMO_LEFT : DEMO_RIGHT;
  const int span = side == DEMO_LEFT ? SIDE - 1 - column : column - RIGHT_EDGE;
  const DemoSide& a = course.At(section).side[static_cast<size_t>(side)];
  const DemoSide& b = course.At(section + 1).side[static_cast<size_t>(side)];
  if (a.lane > 0 && b.lane > 0)
    return span == 2 ? "pitlane" : span == 3 ? "concrete" : "grass";
  if (span == 0 && a.kerb && b.kerb)
    return "kerb";
  if (span == 2 && a.gravel && b.gravel)
    return "gravel";
  return "grass";
}

void DemoStrip::EmitSpan(DemoModel& model, int section, int column) const
{
  // Where another stretch leaves no room only a seam is left.
  const auto wide = [&](int i) {
    const DVector3 across = Vertex(i, column + 1) - Vertex(i, column);
    return glm::length(DVector2(across.x, across.z));
  };
  if (wide(section) < 0.05f && wide(section + 1) < 0.05f)
    return;
  const std::string_view material = MaterialOf(section, column);
  DemoMesh& mesh = model.Mesh(material);
  const auto corner = [&](int ahead, int across) {
    const int i = section + ahead, k = column + across;
    DemoVertex v;
    v.position = Vertex(i, k);
    v.normal = DNormalized(normals[Index(i, k)]);
    const double along = (course.Wrap(section) + ahead) * course.spacing;
    const DemoPlan p(v.position.x, v.position.z);
    DVector3 tint(1.0f);
    if (material == "asphalt") {
      v.uv = {static_cast<float>((k - LEFT_EDGE) / 4.0), static_cast<float>(along / 12)};
      tint = DVector3(static_cast<float>(0.92 + 0.16 * DemoFractal(p.x / 40, p.y / 40, 2, 5)));
    } else if (material == "kerb") {
      const bool left = column < LEFT_EDGE;
      v.uv = {static_cast<float>(left ? 1 - across : across), static_cast<float>(along / 4)};
    } else {
      v.uv = {v.position.x / 9, v.position.z / 9};
      if (material == "grass")
        tint = DemoGroundTint(p);
    }
    v.color = DemoLight(v.normal) * tint;
    return mesh.Add(v);
  };
  const int a = corner(0, 0), b = corner(0, 1), c = corner(1, 1), d = corner(1, 0);
  mesh.Quad(a, b, c, d);
}

void DemoStrip::Emit(DemoScenery& scenery) const
{
  int number = 0;
  for (int from = 0; from < course.Count(); from += ROAD_CHUNK, ++number) {
    DemoNode& node = scenery.AddNode(DemoNumbered("road", number), DEMO_COLLIDE | DEMO_SURFACE);
    for (int i = from; i < std::min(from + ROAD_CHUNK, course.Count()); ++i)
      for (int k = LEFT_EDGE; k < RIGHT_EDGE; ++k)
        EmitSpan(node.Finest(), i, k);
  }
  number = 0;
  for (int from = 0; from < course.Count(); from += VERGE_CHUNK, ++number) {
    DemoNode& node = scenery.AddNode(DemoNumbered("verge", number), DEMO_COLLIDE | DEMO_SURFACE);
    for (int i = from; i < std::min(from + VERGE_CHUNK, course.Count()); ++i)
      for (int k = 0; k + 1 < COLUMNS; ++k)
        if (k < LEFT_EDGE || k >= RIGHT_EDGE)
          EmitSpan(node.Finest(), i, k);
    if (node.Finest().Triangles() == 0)
      scenery.nodes.pop_back();
  }
}
