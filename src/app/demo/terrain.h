#pragma once

#include "app/demo/road.h"

// The land round the circuit: triangles that grow with the distance to the road and end exactly at the strip's outer
// ends, so that nothing lies over the road and nothing gapes beside it.
class DemoTerrain
{
public:
  DemoTerrain(const DemoCourse& of, DemoStrip& strip);
  // Height of the land at a place outside the strip.
  double Height(const DemoPlan& p) const;
  // 0 to 1: how thick the wood is there; 0 on water and near the road.
  double Wood(const DemoPlan& p) const;
  bool InLake(const DemoPlan& p, double margin) const;
  // Adds the nodes land..., far... and lake....
  void Emit(DemoScenery& scenery) const;
  const std::vector<DVector3>& Vertices() const { return vertices; }
  const std::vector<std::array<int, 3>>& Triangles() const { return triangles; }

private:
  struct RoadHeight
  {
    double height = 0;   // of the strip's outer end, averaged over what lies near
    double distance = 0; // to the nearest outer end
  };
  RoadHeight Beside(const DemoPlan& p) const;
  double ShoreRadius(const DemoPlan& p) const; // of the lake, in the place's direction
  double PointSpacing(const DemoPlan& p, double distance) const;
  void ScatterPoints(const DemoPlan& middle, double half, std::vector<DemoPlan>& out) const;
  void Triangulate();
  void FindNormals(DemoStrip& outer);
  void EmitCrossings(DemoScenery& scenery) const;
  bool IsBeach(size_t triangle) const;
  void EmitCell(DemoModel& model, const std::vector<size_t>& members, bool beach) const;
  DVector3 Tint(const DVector3& v, const DVector3& normal) const;

  const DemoCourse& course;
  const DemoStrip& strip;
  double zero = 0; // of the land's field, at the start line
  double extent = 0;
  std::vector<DVector3> vertices, normals;
  std::vector<std::pair<int, int>> outerEnd; // section and side of a vertex that is one; section -1 for the others
  std::vector<std::array<int, 3>> triangles;
  std::vector<int> crossed; // sections with an outer end on another stretch
};
