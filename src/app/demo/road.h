#pragma once

#include "app/demo/profile.h"
#include "app/demo/scenery.h"

// The road with its verges, as a band of columns of vertices: five on the road, five on each side.
class DemoStrip
{
public:
  static constexpr int SIDE = 5;
  static constexpr int COLUMNS = 2 * SIDE + 5; // 0 is the outer end on the left
  static constexpr int LEFT_EDGE = SIDE;
  static constexpr int RIGHT_EDGE = SIDE + 4;

  explicit DemoStrip(const DemoCourse& of);
  const DVector3& Vertex(int section, int column) const { return vertices[Index(section, column)]; }
  // Outer end of a side.
  const DVector3& Outer(int section, int side) const { return Vertex(section, side == DEMO_LEFT ? 0 : COLUMNS - 1); }
  // For the normals: what the land's triangles add at an outer end.
  void AddNormal(int section, int side, const DVector3& n)
  {
    normals[Index(section, side == DEMO_LEFT ? 0 : COLUMNS - 1)] += n;
  }
  // Of the strip's own triangles, its length their area.
  const DVector3& Normal(int section, int column) const { return normals[Index(section, column)]; }
  // Inside the band between the outer ends, leaving out the sections that lie near the given one along the lap.
  bool Covers(const DemoPlan& p, int except = -1) const;
  // The same with a margin, roughly.
  bool Near(const DemoPlan& p, double margin) const;
  // Adds the nodes road000.. and verge000...
  void Emit(DemoScenery& scenery) const;
  const DemoNearest& Nearest() const { return nearest; }

private:
  size_t Index(int section, int column) const { return static_cast<size_t>(course.Wrap(section) * COLUMNS + column); }
  std::string_view MaterialOf(int section, int column) const; // of the span from that column to the next
  void EmitSpan(DemoModel& model, int section, int column) const;

  const DemoCourse& course;
  DemoNearest nearest;
  double widest = 0; // from a centre to an outer end
  std::vector<DVector3> vertices, normals;
};

// The colour of the ground at a place, to be multiplied with the light: what breaks the sameness of a repeated
// picture.
DVector3 DemoGroundTint(const DemoPlan& p);
