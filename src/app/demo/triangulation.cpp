#include "app/demo/triangulation.h"

namespace {

// Wide enough for the fourth powers of the circle test.
__extension__ typedef __int128 Wide;

size_t U(int i)
{
  return static_cast<size_t>(i);
}

} // namespace

DemoTriangulation::Place DemoTriangulation::At(const DemoPlan& p)
{
  return {std::llround(p.x / STEP), std::llround(p.y / STEP)};
}

DemoTriangulation::DemoTriangulation(const DemoPlan& low, const DemoPlan& high)
{
  const DemoPlan margin = (high - low) * 0.25 + 1.0;
  const DemoPlan a = low - margin, b = high + margin;
  points = {At(a), At({b.x, a.y}), At(b), At({a.x, b.y})};
  triangles.push_back({{0, 1, 2}, {-1, 1, -1}, {}});
  triangles.push_back({{0, 2, 3}, {-1, -1, 0}, {}});
  some = {0, 0, 0, 1};
}

DemoPlan DemoTriangulation::Point(int i) const
{
  const Place& p = points[U(i + CORNERS)];
  return {static_cast<double>(p.x) * STEP, static_cast<double>(p.y) * STEP};
}

int64_t DemoTriangulation::Side(int a, int b, int c) const
{
  const Place &pa = points[U(a)], &pb = points[U(b)], &pc = points[U(c)];
  return (pb.x - pa.x) * (pc.y - pa.y) - (pb.y - pa.y) * (pc.x - pa.x);
}

bool DemoTriangulation::InCircle(const Triangle& t, int p) const
{
  Wide x[3], y[3], square[3];
  for (size_t i = 0; i < 3; ++i) {
    x[i] = points[U(t.v[i])].x - points[U(p)].x;
    y[i] = points[U(t.v[i])].y - points[U(p)].y;
    square[i] = x[i] * x[i] + y[i] * y[i];
  }
  return square[0] * (x[1] * y[2] - x[2] * y[1]) + square[1] * (x[2] * y[0] - x[0] * y[2]) +
             square[2] * (x[0] * y[1] - x[1] * y[0]) >
         0;
}

int DemoTriangulation::IndexOf(const Triangle& t, int vertex) const
{
  return t.v[0] == vertex ? 0 : t.v[1] == vertex ? 1 : t.v[2] == vertex ? 2 : -1;
}

int DemoTriangulation::Across(int triangle, int neighbour) const
{
  const Triangle& t = triangles[U(triangle)];
  return t.next[0] == neighbour ? 0 : t.next[1] == neighbour ? 1 : 2;
}

void DemoTriangulation::Relink(int triangle, int from, int to)
{
  if (triangle >= 0)
    Link(triangle, Across(triangle, from), to);
}

void DemoTriangulation::Touch(int triangle)
{
  for (const int v : triangles[U(triangle)].v)
    some[U(v)] = triangle;
}

// Walks from the last triangle towards the point.
int DemoTriangulation::Locate(int p) const
{
  int at = last;
  for (size_t steps = 0; steps <= triangles.size() * 3; ++steps) {
    const Triangle& t = triangles[U(at)];
    int go = -1;
    for (int k = 0; k < 3 && go < 0; ++k) {
      const int i = (k + static_cast<int>(steps)) % 3; // another order each time, so that no ring is walked for ever
      if (Side(t.v[U((i + 1) % 3)], t.v[U((i + 2) % 3)], p) < 0)
        go = t.next[U(i)];
    }
    if (go < 0)
      break;
    at = go;
  }
  return last = at;
}

int DemoTriangulation::Add(const DemoPlan& where)
{
  const Place place = At(where);
  const int p = static_cast<int>(points.size());
  const auto [entry, isNew] = taken.try_emplace((place.x << 32) + place.y, p);
  if (!isNew)
    return entry->second - CORNERS;
  points.push_back(place);
  some.push_back(0);
  const int t0 = Locate(p);
  const Triangle t = triangles[U(t0)];
  // One triangle becomes three. A point on an edge makes one of them flat; the flip that follows takes it away,
  // since the circle test counts such a triangle's circle as holding all beyond the edge.
  const int t1 = static_cast<int>(triangles.size()), t2 = t1 + 1;
  triangles[U(t0)] = {{t.v[0], t.v[1], p}, {t1, t2, t.next[2]}, {false, false, t.held[2]}};
  triangles.push_back({{t.v[1], t.v[2], p}, {t2, t0, t.next[0]}, {false, false, t.held[0]}});
  triangles.push_back({{t.v[2], t.v[0], p}, {t0, t1, t.next[1]}, {false, false, t.held[1]}});
  Relink(t.next[0], t0, t1);
  Relink(t.next[1], t0, t2);
  for (const int i : {t0, t1, t2})
    Touch(i);
  std::vector<EdgeRef> open = {{t0, 2}, {t1, 2}, {t2, 2}};
  // The flat one first: until it is gone its neighbours' tests would be of no use.
  for (EdgeRef& e : open)
    if (const Triangle& f = triangles[U(e.triangle)]; Side(f.v[0], f.v[1], f.v[2]) == 0)
      std::swap(e, open.back());
  Legalise(open);
  return p - CORNERS;
}

// The edge opposite the corner is replaced by the other diagonal of the two triangles beside it.
void DemoTriangulation::Flip(int t0, int opposite)
{
  const Triangle a = triangles[U(t0)];
  const int t1 = a.next[U(opposite)];
  const Triangle b = triangles[U(t1)];
  const int j = Across(t1, t0);
  const int i1 = (opposite + 1) % 3, i2 = (opposite + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
  // a: p, q, r and b: s, r, q share q-r; now p, q, s and s, r, p share p-s.
  const int p = a.v[U(opposite)], q = a.v[U(i1)], r = a.v[U(i2)], s = b.v[U(j)];
  triangles[U(t0)] = {{p, q, s}, {b.next[U(j1)], t1, a.next[U(i2)]}, {b.held[U(j1)], false, a.held[U(i2)]}};
  triangles[U(t1)] = {{s, r, p}, {a.next[U(i1)], t0, b.next[U(j2)]}, {a.held[U(i1)], false, b.held[U(j2)]}};
  Relink(b.next[U(j1)], t1, t0);
  Relink(a.next[U(i1)], t0, t1);
  Touch(t0);
  Touch(t1);
}

void DemoTriangulation::Legalise(std::vector<EdgeRef>& open)
{
  while (!open.empty()) {
    const EdgeRef e = open.back();
    open.pop_back();
    const Triangle& t = triangles[U(e.triangle)];
    const int other = t.next[U(e.opposite)];
    if (other < 0 || t.held[U(e.opposite)])
      continue;
    const int p = t.v[U(e.opposite)];
    const bool flat = Side(t.v[0], t.v[1], t.v[2]) == 0;
    if (!flat && !InCircle(triangles[U(other)], p))
      continue;
    Flip(e.triangle, e.opposite);
    // The edges opposite the new point, in both triangles.
    open.push_back({e.triangle, IndexOf(triangles[U(e.triangle)], p)});
    open.push_back({other, IndexOf(triangles[U(other)], p)});
  }
}

// Turns round point a until a triangle with b comes.
DemoTriangulation::EdgeRef DemoTriangulation::FindEdge(int a, int b) const
{
  for (const int direction : {1, 2}) {
    int at = some[U(a)];
    for (size_t n = 0; n < triangles.size() && at >= 0; ++n) {
      const Triangle& t = triangles[U(at)];
      const int i = IndexOf(t, a);
      if (const int k = IndexOf(t, b); k >= 0)
        return {at, 3 - i - k};
      at = t.next[U((i + direction) % 3)];
      if (at == some[U(a)])
        return {};
    }
  }
  return {};
}

// The edges that the line from a to b crosses, each as its end to the right and its end to the left of the line.
// False when a point or a held edge is in the way.
bool DemoTriangulation::Crossed(int a, int b, std::vector<std::pair<int, int>>& edges) const
{
  EdgeRef cross;
  for (const int direction : {1, 2}) { // the triangle at a through which the line leaves lies to one side or the other
    int at = some[U(a)];
    while (at >= 0 && cross.triangle < 0) {
      const Triangle& t = triangles[U(at)];
      const int i = IndexOf(t, a);
      if (Side(a, b, t.v[U((i + 1) % 3)]) < 0 && Side(a, b, t.v[U((i + 2) % 3)]) > 0)
        cross = {at, i};
      at = t.next[U((i + direction) % 3)];
      if (at == some[U(a)])
        break;
    }
  }
  while (cross.triangle >= 0) {
    const Triangle& t = triangles[U(cross.triangle)];
    const int q = t.v[U((cross.opposite + 1) % 3)], r = t.v[U((cross.opposite + 2) % 3)];
    const int other = t.next[U(cross.opposite)];
    if (other < 0 || t.held[U(cross.opposite)])
      return false;
    edges.emplace_back(q, r);
    const Triangle& o = triangles[U(other)];
    const int s = o.v[U(Across(other, cross.triangle))];
    if (s == b)
      return true;
    const int64_t side = Side(a, b, s);
    if (side == 0)
      return false;
    cross = {other, IndexOf(o, side > 0 ? r : q)};
  }
  return false;
}

bool DemoTriangulation::AddEdge(int first, int second)
{
  const int a = first + CORNERS, b = second + CORNERS;
  if (a == b)
    return false;
  std::vector<std::pair<int, int>> edges;
  if (!HasEdge(first, second) && !Crossed(a, b, edges))
    return false;
  // Flips what crosses until nothing does. An edge whose two triangles make no convex quadrilateral waits for others.
  size_t waited = 0;
  for (size_t k = 0; k < edges.size() && waited <= edges.size() - k; ++k) {
    const auto [q, r] = edges[k];
    const EdgeRef e = FindEdge(q, r);
    const Triangle& t = triangles[U(e.triangle)];
    const int other = t.next[U(e.opposite)];
    const int p = t.v[U(e.opposite)], s = triangles[U(other)].v[U(Across(other, e.triangle))];
    const int64_t sideQ = Side(p, s, q), sideR = Side(p, s, r);
    if ((sideQ < 0) == (sideR < 0) || sideQ == 0 || sideR == 0) {
      edges.emplace_back(q, r);
      ++waited;
      continue;
    }
    waited = 0;
    Flip(e.triangle, e.opposite);
    const int64_t sideP = Side(a, b, p), sideS = Side(a, b, s);
    if (p != a && p != b && s != a && s != b && (sideP < 0) != (sideS < 0))
      edges.emplace_back(p, s);
  }
  const EdgeRef e = FindEdge(a, b);
  if (e.triangle < 0)
    return false;
  triangles[U(e.triangle)].held[U(e.opposite)] = true;
  if (const int other = triangles[U(e.triangle)].next[U(e.opposite)]; other >= 0)
    triangles[U(other)].held[U(Across(other, e.triangle))] = true;
  return true;
}

std::vector<std::array<int, 3>> DemoTriangulation::Triangles() const
{
  std::vector<std::array<int, 3>> out;
  for (const Triangle& t : triangles)
    if (t.v[0] >= CORNERS && t.v[1] >= CORNERS && t.v[2] >= CORNERS)
      out.push_back({t.v[0] - CORNERS, t.v[1] - CORNERS, t.v[2] - CORNERS});
  return out;
}
