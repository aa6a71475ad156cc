#pragma once

#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

class DNonUniformHermiteSpline;
class QInfo;
struct RMarshalPost;

// A cross-section of the road.
struct RSplineLine
{
  int flags = 0;
  DVector3 left{0.0f};
  DVector3 right{0.0f};
  float elevation = 0;          // crown height in metres
  RMarshalPost* post = nullptr; // that guards this line, or null
  float maxVelocity = 0;        // m/s; not in the file
  float distance = 0;           // from line 0 along the road, computed
  float length = 0;             // to the next line, computed
  float longGrip = 1;
};

// A triangle of the road's surface; t is the lateral position (0 to 1) of its left edge.
struct RSplineTri
{
  std::array<DVector3, 3> p{};
  float t = 0;
};

// The road apart from its scenery: cross-sections from line to line, and what is computed from them.
class RSplineRep
{
public:
  enum Flag : uint32_t
  {
    CLOSED = 1,       // the last line leads on to the first
    USE_MESH_HITS = 2 // the scenery gives the height of the road
  };
  enum Side
  {
    LEFT,
    RIGHT
  };
  static constexpr int GROW = 50;

  RSplineRep();
  ~RSplineRep();
  RSplineRep(const RSplineRep&) = delete;
  RSplineRep& operator=(const RSplineRep&) = delete;

  uint32_t flags = 0;
  std::vector<RSplineLine> lines; // the lines in use
  std::vector<RSplineTri> tris;   // BuildTriangles makes them from the lines
  int lateralDivisions = 1;
  int longDivisions = 1;
  int trisPerLine = 2;
  int paintStart = 0; // lines that the minimap paints
  int paintEnd = 0;

  int LineCount() const { return static_cast<int>(lines.size()); }
  int LineCapacity() const { return lineCapacity; }
  int64_t TriCapacity() const;

  // The keys of "spline.ini". What is wrong in them is reported and corrected.
  void Load(const QInfo& info);
  void Save(QInfo& info) const;
  // Room for lines and triangles; 0 does nothing. Shrinking drops the tail (reported). False when there are more
  // than memory can hold.
  bool Reserve(int capacity);
  // Behind the last. Neither these two nor changes of a line rebuild anything.
  void AddLine(const RSplineLine& line);
  void RemoveLast();
  void BuildTriangles();
  // Lengths, distances and the six curves of the road's edges.
  void BuildSpline();
  // False when there are lines already (reported).
  bool CopySubdivision(const RSplineRep& other);
  // In metres; 0 without lines.
  float GetTrackLength() const;
  // The point at a distance along the road and a lateral position (0 left, 1 right), and one a metre behind it.
  // False without lines: both points are zero.
  bool GetPosAt(float distance, float lateral, DVector3& position, DVector3& behind) const;
  // The first n lines go to the end, or for a negative n the last to the front.
  void Roll(int n);
  // From one line to the other, both included, changing evenly. False when out of range (reported).
  bool SetMaxVelocity(int fromSpline, int toSpline, float fromVelocity, float toVelocity);
  void SetMaxVelocity(float velocity);
  // The curve of an edge in x, y or z (0, 1, 2) over the distance. Never null after BuildSpline, null before.
  DNonUniformHermiteSpline* Curve(Side side, int axis) const;

private:
  void LoadHead(const QInfo& info, int& count);
  void LoadLines(const QInfo& info, int count);
  void WarnOfLoop(Side side, int axis) const;

  int lineCapacity = 0;
  int64_t reservedTris = 0;
  std::array<std::array<std::unique_ptr<DNonUniformHermiteSpline>, 3>, 2> curves;
};
