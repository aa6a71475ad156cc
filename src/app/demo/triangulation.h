#pragma once

#include "app/demo/demomath.h"

#include <array>
#include <unordered_map>
#include <vector>

// A Delaunay triangulation of points in the plane, with edges that must be in it. All tests are exact: points lie on a
// lattice of 1/64 m, which single precision holds without loss as far as 100 km from the origin.
class DemoTriangulation
{
public:
  static constexpr double STEP = 1.0 / 64;
  static DemoPlan Snapped(const DemoPlan& p) { return {std::round(p.x / STEP) * STEP, std::round(p.y / STEP) * STEP}; }

  // All points to come lie inside the box.
  DemoTriangulation(const DemoPlan& low, const DemoPlan& high);
  // The point's number, counted from 0; a place that is taken gives the number of the point there.
  int Add(const DemoPlan& p);
  // Makes the line from a to b an edge. False when another such edge or a point is in the way.
  bool AddEdge(int a, int b);
  bool HasEdge(int a, int b) const { return FindEdge(a + CORNERS, b + CORNERS).triangle >= 0; }
  int Count() const { return static_cast<int>(points.size()) - CORNERS; }
  DemoPlan Point(int i) const;
  // Corners anticlockwise as seen with x to the right and y up the page; those at the box's corners are left out.
  std::vector<std::array<int, 3>> Triangles() const;

private:
  static constexpr int CORNERS = 4; // of the box, before the points
  struct Place
  {
    int64_t x, y;
    bool operator==(const Place&) const = default;
  };
  struct Triangle
  {
    std::array<int, 3> v;    // anticlockwise
    std::array<int, 3> next; // across the edge opposite v[i]; -1 outside
    std::array<bool, 3> held{};
  };
  struct EdgeRef
  {
    int triangle = -1;
    int opposite = 0; // the edge lies opposite this corner
  };
  static Place At(const DemoPlan& p);
  int64_t Side(int a, int b, int c) const; // above 0: c lies to the left of a to b
  bool InCircle(const Triangle& t, int p) const;
  int Locate(int p) const;
  EdgeRef FindEdge(int a, int b) const;
  bool Crossed(int a, int b, std::vector<std::pair<int, int>>& edges) const;
  int IndexOf(const Triangle& t, int vertex) const;
  int Across(int triangle, int neighbour) const; // which of the triangle's edges leads there
  void Relink(int triangle, int from, int to);
  void Link(int triangle, int i, int neighbour)
  {
    triangles[static_cast<size_t>(triangle)].next[static_cast<size_t>(i)] = neighbour;
  }
  void Flip(int triangle, int opposite);
  void Legalise(std::vector<EdgeRef>& open);
  void Touch(int triangle);

  std::vector<Place> points;
  std::vector<Triangle> triangles;
  std::vector<int> some; // a triangle of each point
  std::unordered_map<int64_t, int> taken;
  mutable int last = 0; // where the search for the next point starts
};
