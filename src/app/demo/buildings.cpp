#include "app/demo/furniture.h"

#include "app/demo/textures.h"

namespace {

const DVector3 white(0.96f, 0.96f, 0.94f), grey(0.62f, 0.63f, 0.65f), red(0.78f, 0.16f, 0.12f),
    blue(0.22f, 0.34f, 0.62f);
const DVector3 up(0, 1, 0);

DVector3 Flat(const DVector3& v)
{
  return DNormalized({v.x, 0, v.z}, {1, 0, 0});
}

double Used(const DemoStation& at, int side)
{
  const DemoSide& s = at.Section().side[static_cast<size_t>(side)];
  return s.island + s.lane;
}

// One stretch of garages; from and to are stations, the front faces the lane.
void AddGarages(DemoModel& model, const DemoStation& from, const DemoStation& to, int side, bool fine)
{
  constexpr double FRONT = 5, DEPTH = 12, HEIGHT = 8;
  const double near = Used(from, side) + FRONT, far = near + DEPTH;
  // a to b is the front as one sees it from the lane, from left to right.
  const bool onRight = side == DEMO_RIGHT;
  const DemoStation &left = onRight ? to : from, &right = onRight ? from : to;
  const DVector3 a = left.Beside(side, near, -0.3), b = right.Beside(side, near, -0.3);
  const DVector3 c = right.Beside(side, far, -0.3), d = left.Beside(side, far, -0.3),
                 high = up * static_cast<float>(HEIGHT + 0.3);
  model.Mesh("garages").Plane({a, b, b + high, a + high}, {0, 0}, {1, 1});
  DemoMesh& wall = model.Mesh("concrete");
  wall.Plane({b, c, c + high, b + high}, {0, 0}, {3, 2});
  wall.Plane({c, d, d + high, c + high}, {0, 0}, {5, 2});
  wall.Plane({d, a, a + high, d + high}, {0, 0}, {3, 2});
  // The roof stands out over the doors.
  const DVector3 over = Flat(a - d) * 2.2f, roof = high + up * 0.35f;
  DemoMesh& plain = model.Mesh("plain");
  plain.Plane({a + over + roof, b + over + roof, c + roof, d + roof}, {0, 0}, {4, 4}, grey);
  if (!fine)
    return;
  plain.Plane({a + over + high, b + over + high, b + over + roof, a + over + roof}, {0, 0}, {4, 0.1f}, red);
  plain.Plane({d + high, c + high, b + over + high, a + over + high}, {0, 0}, {4, 4}, grey * 0.7f);
  // The balcony in front of the windows.
  const DVector3 floor = up * 5.25f, deck = Flat(a - d) * 1.3f;
  plain.Plane({a + deck + floor, b + deck + floor, b + floor, a + floor}, {0, 0}, {4, 1}, grey);
  plain.Plane({a + deck + floor, b + deck + floor, b + deck + floor + up * 0.9f, a + deck + floor + up * 0.9f}, {0, 0},
              {4, 0.2f}, white);
}

} // namespace

void DemoAddPits(DemoScenery& scenery, const DemoCourse& course)
{
  const DemoPits& pits = course.pits;
  if (!pits.Exist())
    return;
  const int side = pits.side;
  const int stretches = std::max(1, static_cast<int>((pits.boxesTo - pits.boxesFrom) / 22));
  for (int n = 0; n < stretches; ++n) {
    DemoNode& node = scenery.AddNode(DemoNumbered("garages", n, 2), 0);
    node.levels.resize(2);
    node.distances = {320, 5000};
    const double step = (pits.boxesTo - pits.boxesFrom) / stretches;
    const DemoStation from(course, pits.boxesFrom + n * step), to(course, pits.boxesFrom + (n + 1) * step);
    AddGarages(node.levels[0], from, to, side, true);
    AddGarages(node.levels[1], from, to, side, false);
  }
  // The tower at the end, with glass on top.
  DemoNode& tower = scenery.AddNode("tower", DEMO_COLLIDE);
  const DemoStation at(course, pits.boxesTo + 7);
  const DVector3 foot = at.Beside(side, Used(at, side) + 12, -0.4);
  DemoModel& model = tower.Finest();
  model.Mesh("concrete").Box(foot, at.Along(), 8, 8, 12, 4);
  model.Mesh("plain").Box(foot + up * 12.0f, at.Along(), 10, 10, 3.2, 3, DVector3(0.30f, 0.40f, 0.50f));
  model.Mesh("plain").Box(foot + up * 15.2f, at.Along(), 11, 11, 0.5, 3, white);
  model.Mesh("plain").Box(foot + up * 15.7f, at.Along(), 0.2, 0.2, 5, 1, red);
  // The wall between road and lane, painted at its top.
  int number = 0;
  for (double d = pits.from; d < pits.to; d += 40) {
    DemoNode wall;
    wall.flags = DEMO_COLLIDE;
    for (double k = d; k < std::min(d + 40, pits.to); k += 10) {
      const DemoStation a(course, k), b(course, k + 10);
      const auto island = [&](const DemoStation& s) { return s.Section().side[static_cast<size_t>(side)].island; };
      if (island(a) < 2.5 || island(b) < 2.5)
        continue;
      const auto at2 = [&](const DemoStation& s, double offset, double y) {
        return s.Beside(side, island(s) * offset, y);
      };
      DemoMesh& mesh = wall.Finest().Mesh("concrete");
      const bool onRight = side == DEMO_RIGHT;
      const DemoStation &l = onRight ? b : a, &r = onRight ? a : b;
      mesh.Plane({at2(l, 0.5, -0.2), at2(r, 0.5, -0.2), at2(r, 0.5, 1.0), at2(l, 0.5, 1.0)}, {0, 0}, {3, 0.4f});
      mesh.Plane({at2(r, 0.6, -0.2), at2(l, 0.6, -0.2), at2(l, 0.6, 1.0), at2(r, 0.6, 1.0)}, {0, 0}, {3, 0.4f});
      wall.Finest().Mesh("plain").Plane({at2(l, 0.5, 1.0), at2(r, 0.5, 1.0), at2(r, 0.6, 1.0), at2(l, 0.6, 1.0)},
                                        {0, 0}, {3, 0.1f}, blue);
    }
    if (wall.Finest().Triangles() == 0)
      continue;
    wall.name = DemoNumbered("pitwall", number++, 2);
    scenery.nodes.push_back(std::move(wall));
  }
}

void DemoAddStand(DemoScenery& scenery, const DemoCourse& course)
{
  // Opposite the pits: a slope of seats in stretches, with a roof on posts behind the spectators.
  const int side = course.pits.Exist() ? 1 - course.pits.side : DEMO_LEFT;
  constexpr double STRETCH = 38, DEPTH = 17, RISE = 9, FOOT = 1.6, ROOF = 15;
  const DemoNearest nearest(course.sections);
  int number = 0;
  for (double d = DEMO_STAND_FROM; d + STRETCH <= DEMO_STAND_TO + 1; d += STRETCH) {
    const DemoStation from(course, d), to(course, d + STRETCH - 2);
    const DemoSide& beside = from.Section().side[static_cast<size_t>(side)];
    if (beside.reach < 12 || std::abs(from.Section().curvature) > 1.0 / 150)
      continue; // no room here
    const double near = beside.barrier + 4, far = near + DEPTH;
    const DVector3 behind = from.Beside(side, far, 0);
    if (const int other = nearest.Find({behind.x, behind.z}, 34);
        other >= 0 && course.Apart(other, course.IndexAt(d)) > 12)
      continue; // another stretch runs there
    const bool onRight = side == DEMO_RIGHT;
    const DemoStation &left = onRight ? to : from, &right = onRight ? from : to;
    const auto L = [&](double offset, double y) { return left.Beside(side, offset, y); };
    const auto R = [&](double offset, double y) { return right.Beside(side, offset, y); };
    DemoNode& node = scenery.AddNode(DemoNumbered("stand", number++, 2), 0);
    node.levels.resize(2);
    node.distances = {360, 5000};
    for (size_t level = 0; level < 2; ++level) {
      DemoModel& model = node.levels[level];
      model.Mesh("crowd").Plane({L(near, FOOT), R(near, FOOT), R(far, FOOT + RISE), L(far, FOOT + RISE)}, {0, 0},
                                {1, 1});
      DemoMesh& plain = model.Mesh("plain");
      plain.Plane({L(near, -2), R(near, -2), R(near, FOOT), L(near, FOOT)}, {0, 0}, {6, 0.5f}, white);
      plain.Plane({R(far, -4), L(far, -4), L(far, ROOF), R(far, ROOF)}, {0, 0}, {6, 3}, grey);
      plain.Plane({L(near - 1, ROOF - 1.5), R(near - 1, ROOF - 1.5), R(far, ROOF), L(far, ROOF)}, {0, 0}, {6, 3},
                  white);
      if (level == 1)
        continue;
      plain.Plane({L(far, ROOF - 0.3), R(far, ROOF - 0.3), R(near - 1, ROOF - 1.8), L(near - 1, ROOF - 1.8)}, {0, 0},
                  {6, 3}, grey * 0.75f);
      plain.Plane({L(near - 1, ROOF - 1.8), R(near - 1, ROOF - 1.8), R(near - 1, ROOF - 0.9), L(near - 1, ROOF - 0.9)},
                  {0, 0}, {6, 0.2f}, red);
      // The sloped sides.
      const auto cheek = [&](const auto& at, bool flip) {
        DemoMesh& wall = model.Mesh("concrete");
        const DVector3 corners[] = {at(near, -2), at(far, -2), at(far, FOOT + RISE), at(near, FOOT)};
        if (flip)
          wall.Plane({corners[1], corners[0], corners[3], corners[2]}, {0, 0}, {4, 2}, DVector3(0.9f));
        else
          wall.Plane({corners[0], corners[1], corners[2], corners[3]}, {0, 0}, {4, 2}, DVector3(0.9f));
      };
      cheek(R, false);
      cheek(L, true);
      for (const double t : {0.05, 0.35, 0.65, 0.95}) {
        const DVector3 foot = glm::mix(L(near + 5, 2), R(near + 5, 2), static_cast<float>(t));
        plain.Box(foot, from.Along(), 0.3, 0.3, ROOF - 3.2, 2, grey);
      }
    }
  }
}

void DemoAddStart(DemoScenery& scenery, const DemoCourse& course)
{
  // The gantry.
  const DemoStation line(course, 2);
  const DVector3 left = line.Beside(DEMO_LEFT, 2.2, -0.3), right = line.Beside(DEMO_RIGHT, 2.2, -0.3);
  const double wide = glm::length(right - left);
  const DVector3 across = Flat(right - left), middle = (left + right) * 0.5f;
  DemoNode& gantry = scenery.AddNode("gantry", DEMO_COLLIDE);
  DemoModel& model = gantry.Finest();
  for (const DVector3& foot : {left, right})
    model.Mesh("plain").Box(foot, across, 0.5, 0.5, 7.2, 2, grey);
  model.Mesh("plain").Box(middle + up * 6.2f, across, wide + 0.5, 0.7, 1.5, 2, DVector3(0.20f, 0.22f, 0.27f));
  const DVector3 toCars = -line.Along();
  const DVector3 board = middle + up * 7.0f + toCars * 0.40f, back = middle + up * 7.0f - toCars * 0.40f;
  for (int k = -2; k <= 2; ++k) {
    const int sign = k == 0 ? DEMO_SIGN_START : k % 2 ? DEMO_SIGN_CHEQUER : DEMO_SIGN_ADVERT0 + (k + 2) / 4;
    DemoAddSign(model.Mesh("signs"), sign, board + across * (static_cast<float>(k) * 2.6f), across, 2.5, 1.3);
    DemoAddSign(model.Mesh("signs"), sign, back + across * (static_cast<float>(k) * 2.6f), -across, 2.5, 1.3);
  }
  // Paint on the road: the line, and a box for each car of the grid.
  DemoNode& paint = scenery.AddNode("startpaint", 0);
  paint.distances = {420};
  const float cell = 1.0f / DEMO_SIGN_BOARD;
  const auto patch = [&](DemoMesh& mesh, double d0, double d1, double t0, double t1, int sign, double repeats) {
    const DemoStation a(course, d0), b(course, d1);
    const auto at = [&](const DemoStation& s, double t) {
      return glm::mix(s.Beside(DEMO_LEFT, 0, 0.035), s.Beside(DEMO_RIGHT, 0, 0.035), static_cast<float>(t));
    };
    const float u = static_cast<float>(sign % DEMO_SIGN_BOARD) * cell,
                v = static_cast<float>(sign / DEMO_SIGN_BOARD) * cell;
    const auto parts = static_cast<int>(repeats);
    for (int k = 0; k < parts; ++k) {
      const double p = DemoMix(t0, t1, k / repeats), q = DemoMix(t0, t1, (k + 1) / repeats);
      mesh.Plane({at(a, p), at(a, q), at(b, q), at(b, p)}, {u + 0.003f, v + 0.003f},
                 {u + cell - 0.003f, v + cell * (sign == DEMO_SIGN_CHEQUER ? 0.25f : 0.9f)});
    }
  };
  DemoMesh& mesh = paint.Finest().Mesh("signs");
  patch(mesh, 0, 1.0, 0.02, 0.98, DEMO_SIGN_CHEQUER, 4);
  for (int n = 0; n < 20; ++n) {
    const double d = -9.5 - 8.0 * n, middleOfBox = n % 2 == 0 ? 0.275 : 0.725;
    patch(mesh, d, d + 0.16, middleOfBox - 0.10, middleOfBox + 0.10, DEMO_SIGN_GRID, 1);
    for (const double t : {middleOfBox - 0.10, middleOfBox + 0.09})
      patch(mesh, d - 1.6, d, t, t + 0.01, DEMO_SIGN_GRID, 1);
  }
}
