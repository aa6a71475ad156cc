#include "app/demo/trees.h"

#include "app/demo/furniture.h"
#include "app/demo/textures.h"

#include <map>

namespace {

constexpr double CELL = 145;
constexpr double CLOSEST = 4.2; // of two trees
constexpr double AROUND = 300;  // of the circuit's outermost place

struct Tree
{
  DemoPlan at;
  double ground = 0, height = 0, wide = 0, turn = 0, tone = 1;
  int kind = 0;
};

// A hundredth of a tree for each square metre of thick wood, fewer with the distance to the road.
std::vector<Tree> Plant(const DemoCourse& course, const DemoStrip& strip, const DemoTerrain& terrain)
{
  std::vector<Tree> trees;
  std::map<std::pair<int, int>, std::vector<DemoPlan>> taken;
  const double half = course.land.Radius() + AROUND;
  for (int64_t n = 0; n < 600000 && trees.size() < DEMO_TREES; ++n) {
    const DemoPlan p =
        course.land.Middle() + (DemoPlan(DemoRandom(n, 1, 301), DemoRandom(n, 2, 301)) * 2.0 - 1.0) * half;
    const double away = strip.Nearest().DistanceTo(p);
    const double wanted = DemoMix(0.035, 1, DemoSmooth(190, 55, away)) * (away < AROUND * 1.6 ? 1 : 0);
    if (DemoRandom(n, 3, 301) > wanted * terrain.Wood(p) || DemoIsBuiltOver(course, p))
      continue;
    const std::pair cell(static_cast<int>(std::floor(p.x / CLOSEST)), static_cast<int>(std::floor(p.y / CLOSEST)));
    bool free = true;
    for (int dx = -1; dx <= 1 && free; ++dx)
      for (int dz = -1; dz <= 1 && free; ++dz)
        if (const auto it = taken.find({cell.first + dx, cell.second + dz}); it != taken.end())
          for (const DemoPlan& other : it->second)
            free = free && glm::length(other - p) >= CLOSEST;
    if (!free)
      continue;
    taken[cell].push_back(p);
    Tree t;
    t.at = p;
    t.ground = terrain.Height(p) - 0.25;
    const double sort = DemoFractal(p.x / 90, p.y / 90, 2, 311) + 0.35 * (DemoRandom(n, 4, 301) - 0.5);
    t.kind = sort > 0.56 ? 2 : sort < 0.40 ? 1 : DemoRandom(n, 5, 301) < 0.16 ? 3 : 0;
    static constexpr double heights[] = {11, 12, 15, 4}, widths[] = {0.95, 0.85, 0.62, 1.25};
    t.height = heights[t.kind] * DemoMix(0.75, 1.25, DemoRandom(n, 6, 301));
    t.wide = t.height * widths[t.kind];
    t.turn = DemoRandom(n, 7, 301) * DEMO_PI;
    t.tone = DemoMix(0.80, 1.12, DemoRandom(n, 8, 301));
    trees.push_back(t);
  }
  return trees;
}

// Upright pictures that cross in the tree's middle. The light is the same from all sides, less of it near the ground.
void AddTree(DemoMesh& mesh, const Tree& t, int planes, double grow)
{
  const double cell = 1.0 / DEMO_TREE_BOARD, rim = 0.004;
  const auto u0 = static_cast<float>(t.kind % DEMO_TREE_BOARD * cell + rim);
  const auto u1 = static_cast<float>(u0 + cell - 2 * rim);
  const auto v0 = static_cast<float>(t.kind / DEMO_TREE_BOARD * cell + rim);
  const auto v1 = static_cast<float>(v0 + cell - 2 * rim);
  const auto tone = static_cast<float>(t.tone);
  const DVector3 low = DVector3(0.62f, 0.66f, 0.66f) * tone,
                 high = glm::min(DVector3(1.06f, 1.02f, 0.90f) * tone, DVector3(1.0f));
  for (int k = 0; k < planes; ++k) {
    const double angle = t.turn + DEMO_PI * k / planes;
    const DemoPlan across = DemoPlan(std::cos(angle), std::sin(angle)) * (t.wide / 2 * grow);
    const double top = t.ground + t.height * DemoMix(1, grow, 0.3);
    const DVector3 normal(0, 1, 0);
    const int a = mesh.Add({DemoAt(t.at - across, t.ground), normal, {u0, v0}, low});
    const int b = mesh.Add({DemoAt(t.at + across, t.ground), normal, {u1, v0}, low});
    const int c = mesh.Add({DemoAt(t.at + across, top), normal, {u1, v1}, high});
    const int d = mesh.Add({DemoAt(t.at - across, top), normal, {u0, v1}, high});
    mesh.Quad(a, b, c, d);
  }
}

} // namespace

void DemoAddTrees(DemoScenery& scenery, const DemoCourse& course, const DemoStrip& strip, const DemoTerrain& terrain)
{
  std::map<std::pair<int, int>, std::vector<Tree>> cells;
  for (const Tree& t : Plant(course, strip, terrain))
    cells[{static_cast<int>(std::floor(t.at.x / CELL)), static_cast<int>(std::floor(t.at.y / CELL))}].push_back(t);
  int number = 0;
  for (const auto& [key, trees] : cells) {
    DemoNode& node = scenery.AddNode(DemoNumbered("trees", number++), 0);
    node.levels.resize(3);
    node.distances = {150, 420, 5000};
    for (size_t i = 0; i < trees.size(); ++i) {
      AddTree(node.levels[0].Mesh("trees"), trees[i], 6, 1);
      AddTree(node.levels[1].Mesh("trees"), trees[i], 2, 1.05);
      if (i % 3 != 1 || trees.size() < 6) // from afar two trees do for three
        AddTree(node.levels[2].Mesh("trees"), trees[i], trees.size() < 6 ? 2 : 1, 1.3);
    }
  }
}
