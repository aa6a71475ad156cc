#include "app/demo/furniture.h"

#include "app/demo/textures.h"
#include "app/demo/trackfiles.h"

namespace {

constexpr int RAIL_CHUNK = 16;
const DVector3 white(0.96f, 0.96f, 0.94f), grey(0.62f, 0.63f, 0.65f), dark(0.22f, 0.22f, 0.24f);

DVector3 Flat(const DVector3& v)
{
  return DNormalized({v.x, 0, v.z}, {1, 0, 0});
}

// A piece of guard rail: two beams, each bent outward in its middle, on a post. leftward: the road lies to the right
// of the way from a to b.
void AddRail(DemoMesh& mesh, const DVector3& a, const DVector3& b, double from, double length, bool leftward)
{
  const auto u = static_cast<float>(from / 4), wide = static_cast<float>(length / 4);
  const DVector3 toRoad = Flat(glm::cross(b - a, DVector3(0, 1, 0))) * (leftward ? 1.0f : -1.0f);
  static constexpr float heights[] = {0, 0.34f, 0.74f, 1.05f}, bulges[] = {0, 0.09f, 0.09f, 0};
  for (size_t k = 0; k < 3; ++k) {
    const DVector3 low = toRoad * bulges[k] + DVector3(0, heights[k], 0);
    const DVector3 high = toRoad * bulges[k + 1] + DVector3(0, heights[k + 1], 0);
    const float v0 = heights[k] / 1.05f, v1 = heights[k + 1] / 1.05f;
    // Towards the road, so that the light falls on the side that is seen.
    if (leftward)
      mesh.Plane({a + low, b + low, b + high, a + high}, {u, v0}, {u + wide, v1});
    else
      mesh.Plane({b + low, a + low, a + high, b + high}, {u, v0}, {u + wide, v1});
  }
}

// Both sides' guard rails.
void AddRails(DemoScenery& scenery, const DemoCourse& course, const DemoStrip& strip)
{
  int number = 0;
  for (int from = 0; from < course.Count(); from += RAIL_CHUNK) {
    DemoNode node;
    node.flags = DEMO_COLLIDE;
    DemoMesh& mesh = node.Finest().Mesh("armco");
    for (int i = from; i < std::min(from + RAIL_CHUNK, course.Count()); ++i)
      for (int side = 0; side < 2; ++side) {
        const auto ground = [&](int section) {
          const DemoSection& s = course.At(section);
          const DemoSide& beside = s.side[static_cast<size_t>(side)];
          const int inner = side == DEMO_LEFT ? 2 : DemoStrip::RIGHT_EDGE + 3;
          DVector3 p = strip.Vertex(section, inner);
          const DemoPlan at = s.Lateral(s.Sign(side) * (s.half[static_cast<size_t>(side)] + beside.barrier));
          return DVector3(static_cast<float>(at.x), p.y - 0.05f, static_cast<float>(at.y));
        };
        if (course.At(i).side[static_cast<size_t>(side)].barrier <= 0 ||
            course.At(i + 1).side[static_cast<size_t>(side)].barrier <= 0)
          continue;
        AddRail(mesh, ground(i), ground(i + 1), i * course.spacing, course.spacing, side == DEMO_LEFT);
      }
    if (mesh.indices.empty())
      continue;
    node.name = DemoNumbered("rail", number++);
    scenery.nodes.push_back(std::move(node));
  }
}

// A net in front of the stands, on posts behind the guard rail.
void AddFence(DemoScenery& scenery, const DemoCourse& course)
{
  constexpr double PIECE = 10, HIGH = 3.4, BEHIND = 0.7;
  int number = 0;
  for (double d = DEMO_STAND_FROM; d + PIECE <= DEMO_STAND_TO; d += PIECE) {
    const DemoStation from(course, d), to(course, d + PIECE);
    const double barrier = std::min(from.Section().side[DEMO_LEFT].barrier, to.Section().side[DEMO_LEFT].barrier);
    if (barrier <= 0)
      continue;
    const DVector3 a = from.Beside(DEMO_LEFT, barrier + BEHIND, -0.1), b = to.Beside(DEMO_LEFT, barrier + BEHIND, -0.1);
    const DVector3 up(0, static_cast<float>(HIGH), 0);
    DemoNode& node = scenery.AddNode(DemoNumbered("fence", number++, 2), 0);
    node.distances = {500};
    const auto wide = static_cast<float>(PIECE), high = static_cast<float>(HIGH);
    node.Finest().Mesh("fence").Plane({a, b, b + up, a + up}, {0, 0}, {wide, high});
    node.Finest().Mesh("plain").Box(a, Flat(b - a), 0.09, 0.09, HIGH + 0.1, 1, grey);
  }
}

// Distance boards before the slow bends, adverts at their rails.
void AddBoards(DemoScenery& scenery, const DemoCourse& course)
{
  int number = 0, adverts = 0;
  for (size_t c = 0; c < course.corners.size(); ++c) {
    const DemoCorner& corner = course.corners[c];
    const DemoCorner& before = course.corners[(c + course.corners.size() - 1) % course.corners.size()];
    const int outside = 1 - corner.inside;
    const double run = course.Wrap(corner.first - before.last) * course.spacing;
    for (int k = 0; k < 3 && corner.radius < 140; ++k) {
      const double ahead = 50.0 * (k + 1);
      if (ahead > run - 10)
        break;
      const DemoStation at(course, corner.first * course.spacing - ahead);
      const DemoSide& beside = at.Section().side[static_cast<size_t>(outside)];
      if (beside.barrier < 4 || beside.lane > 0)
        continue;
      const DVector3 foot = at.Beside(outside, std::min(5.0, beside.barrier - 1), -0.15);
      DemoNode& node = scenery.AddNode(DemoNumbered("board", number++), 0);
      node.levels.resize(2);
      node.distances = {220, 700};
      const DVector3 right = Flat(glm::cross(at.Along(), DVector3(0, 1, 0)));
      for (size_t level = 0; level < 2; ++level) {
        DemoAddSign(node.levels[level].Mesh("signs"), DEMO_SIGN_50 + k, foot + DVector3(0, 1.6f, 0), right, 1.4, 1.4);
        if (level == 0)
          for (const float x : {-0.45f, 0.45f})
            node.levels[0].Mesh("plain").Box(foot + right * x + at.Along() * 0.08f, right, 0.08, 0.08, 1.7, 1, grey);
      }
    }
    DemoNode banners;
    banners.distances = {650};
    for (int k = 0; k < 4; ++k) {
      const DemoStation at(course, (corner.first + (corner.last - corner.first) * (k + 0.5) / 4) * course.spacing);
      const DemoSide& beside = at.Section().side[static_cast<size_t>(outside)];
      if (beside.barrier < 6 || beside.lane > 0)
        continue;
      const DVector3 inward = Flat(at.Beside(outside, 0, 0) - at.Beside(outside, 10, 0));
      const DVector3 right = glm::cross(DVector3(0, 1, 0), inward);
      for (int n = -1; n <= 1; ++n)
        DemoAddSign(banners.Finest().Mesh("signs"), DEMO_SIGN_ADVERT0 + (adverts + k + n + 4) % 4,
                    at.Beside(outside, beside.barrier - 0.25, 0.55) + right * (3.6f * static_cast<float>(n)), right,
                    3.5, 1.1);
    }
    if (banners.Finest().Triangles() == 0)
      continue;
    banners.name = DemoNumbered("advert", adverts++);
    scenery.nodes.push_back(std::move(banners));
  }
}

// A hut for each marshal post, and its flag of each colour as a node of its own, which the simulator shows and hides.
void AddPosts(DemoScenery& scenery, const DemoCourse& course, const DemoTerrain& terrain)
{
  int number = 0;
  for (const DemoPost& post : DemoPosts(course)) {
    const DemoStation at(course, post.section * course.spacing);
    const DemoSide& beside = at.Section().side[static_cast<size_t>(post.side)];
    const std::string name = DemoNumbered("post", number++, 2);
    const double offset = beside.reach > 4 ? std::max(beside.barrier + 2.5, 4.0) : 3;
    DVector3 foot = at.Beside(post.side, offset, 0);
    if (offset > beside.reach)
      foot.y = static_cast<float>(terrain.Height({foot.x, foot.z}));
    else
      foot.y -= 0.6f;
    const DVector3 toRoad = Flat(at.Beside(post.side, 0, 0) - at.Beside(post.side, 10, 0));
    const DVector3 right = glm::cross(DVector3(0, 1, 0), toRoad), up(0, 1, 0);
    DemoNode& hut = scenery.AddNode(name, 0);
    hut.levels.resize(2);
    hut.distances = {260, 1200};
    for (DemoModel& level : hut.levels)
      level.Mesh("plain").Box(foot, right, 2.6, 1.8, 1.7, 2, DVector3(1.0f, 0.55f, 0.15f));
    DemoModel& fine = hut.Finest();
    fine.Mesh("plain").Box(foot + up * 2.9f, right, 3.2, 2.4, 0.12, 2, white);
    for (const float x : {-1.2f, 1.2f})
      for (const float z : {-0.8f, 0.8f})
        fine.Mesh("plain").Box(foot + up * 1.7f + right * x + toRoad * z, right, 0.08, 0.08, 1.2, 1, grey);
    DemoAddSign(fine.Mesh("signs"), DEMO_SIGN_POST, foot + up * 1.05f + toRoad * 0.92f, right, 1.6, 1.0);
    const struct
    {
      const char* state;
      int sign;
    } flags[] = {{"_yellow", DEMO_SIGN_YELLOW}, {"_green", DEMO_SIGN_GREEN}, {"_red", DEMO_SIGN_RED}};
    // Against the traffic, so that a driver sees it from afar.
    const DVector3 face = Flat(glm::cross(at.Along(), up));
    for (const auto& f : flags) {
      DemoNode& flag = scenery.AddNode(name + f.state, DEMO_INVISIBLE);
      flag.distances = {900};
      DemoAddSign(flag.Finest().Mesh("signs"), f.sign, foot + up * 3.9f + toRoad * 1.4f, face, 1.4, 1.0);
      flag.Finest().Mesh("plain").Box(foot + up * 1.6f + toRoad * 1.4f + at.Along() * 0.06f, right, 0.06, 0.06, 2.9, 1,
                                      dark);
    }
  }
}

} // namespace

DemoStation::DemoStation(const DemoCourse& course, double distance)
{
  const double where = std::fmod(std::fmod(distance, course.length) + course.length, course.length) / course.spacing;
  const int i = static_cast<int>(where);
  const double t = where - i;
  const DemoSection &a = course.At(i), &b = course.At(i + 1);
  section = &a;
  at = glm::mix(a.at, b.at, t);
  tangent = glm::normalize(glm::mix(a.tangent, b.tangent, t));
  right = DemoPlan(-tangent.y, tangent.x);
  for (int side = 0; side < 2; ++side) {
    height[side] = DemoMix(a.EdgeHeight(side), b.EdgeHeight(side), t);
    half[side] = DemoMix(a.half[static_cast<size_t>(side)], b.half[static_cast<size_t>(side)], t);
  }
}

DVector3 DemoStation::Beside(int side, double offset, double up) const
{
  return DemoAt(at + right * (section->Sign(side) * (half[side] + offset)), height[side] + up);
}

void DemoAddSign(DemoMesh& mesh, int sign, const DVector3& centre, const DVector3& right, double wide, double high,
                 const DVector3& tint)
{
  const float cell = 1.0f / DEMO_SIGN_BOARD;
  const auto u = static_cast<float>(sign % DEMO_SIGN_BOARD) * cell,
             v = static_cast<float>(sign / DEMO_SIGN_BOARD) * cell;
  const DVector3 x = right * static_cast<float>(wide / 2), y(0, static_cast<float>(high / 2), 0);
  constexpr float rim = 0.002f;
  mesh.Plane({centre - x - y, centre + x - y, centre + x + y, centre - x + y}, {u + rim, v + rim},
             {u + cell - rim, v + cell - rim}, tint);
}

void DemoAddSky(DemoScenery& scenery, const DemoCourse& course)
{
  constexpr int around = 32, rings = 8;
  const double radius = std::min((course.land.Radius() + 1700) * 1.5 + 300, 9000.0);
  DemoNode& node = scenery.AddNode("sky", DEMO_SKY);
  DemoMesh& mesh = node.Finest().Mesh("sky");
  for (int ring = 0; ring <= rings; ++ring) {
    const double angle = DemoMix(-0.3, DEMO_PI / 2, std::pow(static_cast<double>(ring) / rings, 1.4));
    for (int k = 0; k <= around; ++k) {
      const double turn = 2 * DEMO_PI * k / around;
      const DemoPlan p = course.land.Middle() + DemoPlan(std::cos(turn), std::sin(turn)) * (radius * std::cos(angle));
      const auto v = static_cast<float>(std::clamp(angle / (DEMO_PI / 2), 0.004, 0.996));
      mesh.Add(
          {DemoAt(p, radius * std::sin(angle)), {0, 1, 0}, {static_cast<float>(k * 2.0 / around), v}, DVector3(1.0f)});
    }
  }
  for (int ring = 0; ring < rings; ++ring)
    for (int k = 0; k < around; ++k) {
      const int a = ring * (around + 1) + k, b = a + 1, c = b + around + 1, d = a + around + 1;
      mesh.Quad(a, b, c, d); // seen from inside
    }
}

bool DemoIsBuiltOver(const DemoCourse& course, const DemoPlan& p)
{
  // The stand's ground, and a clear view from the start to both sides.
  for (double d = DEMO_STAND_FROM - 20; d <= DEMO_STAND_TO + 60; d += 10) {
    const DemoSection& s = course.At(course.IndexAt(d));
    const DemoPlan away = p - s.at;
    const double lateral = glm::dot(away, s.right);
    if (std::abs(glm::dot(away, s.tangent)) < 8 && std::abs(lateral) < 78)
      return true;
  }
  return false;
}

void DemoAddFurniture(DemoScenery& scenery, const DemoCourse& course, const DemoStrip& strip,
                      const DemoTerrain& terrain)
{
  AddRails(scenery, course, strip);
  AddFence(scenery, course);
  DemoAddPits(scenery, course);
  DemoAddStand(scenery, course);
  DemoAddStart(scenery, course);
  AddBoards(scenery, course);
  AddPosts(scenery, course, terrain);
}
