#include "app/demo/terrain.h"
#include "app/demo/trees.h"
#include "app/demo/writer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

struct Case
{
  std::string what;
  DemoLine line;
};

// Shapes that are hard on the ground beside the road.
std::vector<Case> Circuits()
{
  std::vector<Case> cases = {{"lakeside", DemoLakesideLine()}};
  const auto add = [&](const char* what, int n, auto place) {
    DemoLine line;
    for (int i = 0; i < n; ++i) {
      const DemoPlan p = place(2 * DEMO_PI * i / n);
      line.push_back({p.x, p.y, 6, 6});
    }
    cases.push_back({what, line});
  };
  add("crossing", 400, [](double a) { return DemoPlan(400 * std::sin(a), 220 * std::sin(2 * a)); });
  add("legs20m", 500,
      [](double a) { return DemoPlan(600 * std::cos(a), 10 * std::tanh(4 * std::sin(a)) + 8 * std::sin(a)); });
  add("hairpins", 900, [](double a) {
    return DemoPlan((350 + 140 * std::sin(9 * a)) * std::cos(a), (350 + 140 * std::sin(9 * a)) * std::sin(a));
  });
  // Real circuits, where they are at hand.
  if (const char* samples = std::getenv("PAVEX_SAMPLES"))
    for (const char* name : {"Norisring", "Spa", "Spielberg"}) {
      std::ifstream file(std::string(samples) + "/circuits/" + name + ".csv");
      std::stringstream text;
      text << file.rdbuf();
      Case c{name, {}};
      std::string problem;
      EXPECT_TRUE(DemoParseLine(text.str(), c.line, problem)) << name << problem;
      cases.push_back(c);
    }
  return cases;
}

// Height of the triangle over a place; false when the place lies beside it.
bool HeightOver(const DVector3& a, const DVector3& b, const DVector3& c, const DemoPlan& p, double& y)
{
  const glm::dvec3 da(a), db(b), dc(c);
  const double d = (db.z - dc.z) * (da.x - dc.x) + (dc.x - db.x) * (da.z - dc.z);
  const double u = ((db.z - dc.z) * (p.x - dc.x) + (dc.x - db.x) * (p.y - dc.z)) / d;
  const double v = ((dc.z - da.z) * (p.x - dc.x) + (da.x - dc.x) * (p.y - dc.z)) / d;
  y = u * da.y + v * db.y + (1 - u - v) * dc.y;
  return u >= 0 && v >= 0 && u + v <= 1;
}

std::string Kind(const std::string& name)
{
  return name.substr(0, name.find_first_of("0123456789"));
}

// The land's triangles by the fields of 20 m that they touch; the big ones far from any road are left out.
class Fields
{
public:
  explicit Fields(const DemoTerrain& of) : terrain(of)
  {
    for (size_t i = 0; i < terrain.Triangles().size(); ++i) {
      const auto [a, b, c] = Corners(i);
      const DVector3 low = glm::floor(glm::min(a, glm::min(b, c)) / 20.0f), high = glm::max(a, glm::max(b, c)) / 20.0f;
      if (high.x - low.x < 60 && high.z - low.z < 60)
        for (float x = low.x; x <= high.x; ++x)
          for (float z = low.z; z <= high.z; ++z)
            fields[{static_cast<int>(x), static_cast<int>(z)}].push_back(i);
    }
  }
  // How many of them lie over the place, higher than that.
  int Over(const DemoPlan& p, double height)
  {
    int n = 0;
    for (const size_t i : fields[{static_cast<int>(std::floor(p.x / 20)), static_cast<int>(std::floor(p.y / 20))}]) {
      const auto [a, b, c] = Corners(i);
      double y = 0;
      n += HeightOver(a, b, c, p, y) && y > height;
    }
    return n;
  }

private:
  std::array<DVector3, 3> Corners(size_t i) const
  {
    const auto& t = terrain.Triangles()[i];
    const auto& v = terrain.Vertices();
    return {v[static_cast<size_t>(t[0])], v[static_cast<size_t>(t[1])], v[static_cast<size_t>(t[2])]};
  }
  const DemoTerrain& terrain;
  std::map<std::pair<int, int>, std::vector<size_t>> fields;
};

} // namespace

TEST(DemoScenery, TheGroundFacesUpAndNeverLiesOverTheRoad)
{
  for (const Case& c : Circuits()) {
    SCOPED_TRACE(c.what);
    const DemoCourse course = DemoMakeCourse(c.what, c.line);
    DemoStrip strip(course);
    const DemoTerrain terrain(course, strip);
    DemoScenery scenery;
    strip.Emit(scenery);
    terrain.Emit(scenery);
    int turned = 0, closed = 0;
    for (const DemoNode& node : scenery.nodes) {
      closed += node.name == "crossing";
      for (const DemoMesh& mesh : node.levels.front().meshes)
        for (size_t i = 0; i < mesh.indices.size(); i += 3) {
          const auto at = [&](size_t k) { return mesh.vertices[mesh.indices[i + k]].position; };
          turned += glm::cross(at(1) - at(0), at(2) - at(0)).y <= 0;
        }
    }
    EXPECT_GE(closed, c.what == "crossing") << "the gaps at a crossing's corners";
    EXPECT_EQ(0, turned);
    Fields fields(terrain);
    int covered = 0;
    for (const DemoSection& s : course.sections)
      for (const double across : {-0.95, -0.5, 0.0, 0.5, 0.95}) {
        const double lateral = across * s.half[across < 0 ? DEMO_LEFT : DEMO_RIGHT];
        covered += fields.Over(s.Lateral(lateral), s.HeightAt(lateral) + 0.02);
      }
    EXPECT_EQ(0, covered) << "places on the road that land lies over";
  }
}

TEST(DemoScenery, HasWhatACircuitHas)
{
  const DemoCourse course = DemoMakeCourse("lakeside", DemoLakesideLine());
  const DemoScenery scenery = DemoBuildScenery(course);
  EXPECT_NEAR(3000, course.length, 100);
  EXPECT_NEAR(400, static_cast<double>(scenery.nodes.size()), 60);
  EXPECT_NEAR(100000, scenery.Triangles(), 20000);
  std::map<std::string, int> count;
  std::set<std::string> names;
  size_t treeCorners = 0;
  int levels = 0;
  float low = 1e9f, high = -1e9f;
  for (const DemoNode& node : scenery.nodes) {
    EXPECT_TRUE(names.insert(node.name).second) << node.name;
    const std::string kind = Kind(node.name);
    ++count[kind];
    levels += node.levels.size() > 1;
    if (node.flags & (DEMO_COLLIDE | DEMO_SURFACE)) {
      EXPECT_TRUE(node.levels.size() == 1 && node.distances.empty()) << node.name << ": what collides has one level";
    }
    const DemoMesh& first = node.levels[0].meshes.at(0);
    if (kind == "trees")
      treeCorners += first.vertices.size();
    if (kind == "land")
      for (const DemoVertex& v : first.vertices) {
        low = std::min(low, v.position.y);
        high = std::max(high, v.position.y);
      }
    int finer = node.levels[0].Triangles();
    for (const DemoModel& level : node.levels) {
      EXPECT_GT(level.Triangles(), 0) << node.name;
      EXPECT_LE(level.Triangles(), finer) << node.name;
      finer = level.Triangles();
    }
  }
  EXPECT_GT(treeCorners, 0u);
  EXPECT_EQ(0u, treeCorners % DEMO_TREES) << "the same number of corners for each of the trees";
  EXPECT_GT(high - low, 35) << "hills";
  EXPECT_GT(levels, 60);
  for (const char* kind : {"sky", "road", "verge", "land", "far", "lake", "rail", "garages", "pitwall", "tower",
                           "stand", "gantry", "startpaint", "board", "advert", "post", "trees"})
    EXPECT_GT(count[kind], 0) << kind;
}

TEST(DemoScenery, EveryMeshCanBeDrawn)
{
  const DemoScenery scenery = DemoBuildScenery(DemoMakeCourse("lakeside", DemoLakesideLine()));
  for (const DemoNode& node : scenery.nodes)
    for (const DemoModel& level : node.levels)
      for (const DemoMesh& mesh : level.meshes) {
        EXPECT_LE(mesh.vertices.size(), 65536u) << node.name;
        int bad = 0;
        for (const uint16_t i : mesh.indices)
          bad += i >= mesh.vertices.size();
        for (const DemoVertex& v : mesh.vertices) {
          bad += !(glm::length(v.position) < 20000) || std::abs(glm::length(v.normal) - 1) > 0.01f;
          bad += glm::any(glm::lessThan(v.color, DVector3(0))) || glm::any(glm::greaterThan(v.color, DVector3(1)));
        }
        EXPECT_EQ(0, bad) << node.name << " " << mesh.material;
      }
}
