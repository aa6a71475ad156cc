#pragma once

#include "app/demo/centreline.h"
#include "app/demo/demomath.h"

#include <array>
#include <string>
#include <vector>

enum DemoSideName
{
  DEMO_LEFT = 0,
  DEMO_RIGHT = 1
};

// What lies beside the road at one cross-section, outward from the road's edge. Metres.
struct DemoSide
{
  double reach = 0;   // how far the strip goes that belongs to the road; 0 where another stretch lies too near
  double barrier = 0; // offset of the barrier; 0: none here
  bool kerb = false;
  bool gravel = false;
  double island = 0; // between the road and the pit lane
  double lane = 0;   // width of the pit lane
  double apron = 0;  // paved ground behind the lane, with the boxes on it
};

// One cross-section of the road.
struct DemoSection
{
  DemoPlan at;
  DemoPlan tangent;
  DemoPlan right; // unit vector to the right of the drive
  double distance = 0;
  double curvature = 0; // 1/m, above 0 in a right-hander
  double height = 0;    // of the centre
  double bank = 0;      // the road's rise per metre to the left
  std::array<double, 2> half{};
  std::array<DemoSide, 2> side;

  double Sign(int s) const { return s == DEMO_LEFT ? -1.0 : 1.0; }
  // A place by its lateral offset from the centre, to the right above 0.
  DemoPlan Lateral(double offset) const { return at + right * offset; }
  // Height of the road's plane there.
  double HeightAt(double offset) const { return height - bank * offset; }
  DVector3 Edge(int s) const { return DemoAt(Lateral(Sign(s) * half[static_cast<size_t>(s)]), EdgeHeight(s)); }
  double EdgeHeight(int s) const { return HeightAt(Sign(s) * half[static_cast<size_t>(s)]); }
};

// A bend that a driver brakes for.
struct DemoCorner
{
  int first = 0, apex = 0, last = 0; // sections; last may lie behind the count, for a bend over the start
  double radius = 0;
  int inside = DEMO_RIGHT;
};

struct DemoLake
{
  DemoPlan centre{0, 0};
  double radius = 0; // 0: no lake
  double level = 0;
};

// The pit lane's stations, as distances from the start line; all 0 when there is no room for pits.
struct DemoPits
{
  int side = DEMO_RIGHT;
  double from = 0, to = 0; // where it leaves and joins the road
  double boxesFrom = 0, boxesTo = 0;
  bool Exist() const { return to > from; }
};

// The lie of the land without the circuit in it: hills from a list and noise.
class DemoLand
{
public:
  struct Hill
  {
    DemoPlan at;
    double height, width;
  };
  explicit DemoLand(const std::string& name, const DemoLine& line);
  // Smooth enough for a road.
  double Field(const DemoPlan& p) const;
  const DemoPlan& Middle() const { return middle; }
  double Radius() const { return radius; } // round the middle, the whole circuit inside

private:
  std::vector<Hill> hills;
  DemoPlan middle{0, 0};
  double radius = 0;
};

// The whole circuit as cross-sections, with what lies beside it.
struct DemoCourse
{
  std::string name;
  DemoLand land;
  std::vector<DemoSection> sections;
  double spacing = 0;
  double length = 0;
  std::vector<DemoCorner> corners;
  DemoLake lake;
  DemoPits pits;

  int Count() const { return static_cast<int>(sections.size()); }
  // Wraps round in both directions.
  const DemoSection& At(int i) const { return sections[static_cast<size_t>(Wrap(i))]; }
  int Wrap(int i) const { return (i % Count() + Count()) % Count(); }
  int IndexAt(double distance) const { return Wrap(static_cast<int>(std::lround(distance / spacing))); }
  // Shortest way along the lap, in sections.
  int Apart(int a, int b) const
  {
    const int d = Wrap(a - b);
    return std::min(d, Count() - d);
  }
  // The distance from the start line, between minus and plus half a lap.
  double FromStart(int i) const
  {
    const double d = sections[static_cast<size_t>(Wrap(i))].distance;
    return d > length / 2 ? d - length : d;
  }
};

// From a centre line to cross-sections every 5 m: heights, banking, kerbs, run-off, pits, the lake's place.
DemoCourse DemoMakeCourse(const std::string& name, const DemoLine& line);

// The nearest section to a place among those within the distance; -1 when there is none.
class DemoNearest
{
public:
  explicit DemoNearest(const std::vector<DemoSection>& from);
  int Find(const DemoPlan& p, double within) const;
  // All within the distance, in order of their cells.
  void Gather(const DemoPlan& p, double within, std::vector<int>& out) const;
  // Metres to the nearest section, however far.
  double DistanceTo(const DemoPlan& p) const;

private:
  static constexpr double CELL = 40;
  int64_t Key(const DemoPlan& p) const;
  const std::vector<DemoSection>& sections;
  std::vector<std::pair<int64_t, int>> cells; // sorted
};
