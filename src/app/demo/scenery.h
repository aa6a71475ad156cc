#pragma once

#include "app/demo/demomath.h"

#include <array>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

// The scenery in memory, before it becomes files of one format or another.

struct DemoVertex
{
  DVector3 position{0.0f};
  DVector3 normal{0, 1, 0};
  DVector2 uv{0.0f};
  DVector3 color{1.0f}; // light and shade, baked: models with vertex colours are painted without lighting
};

// Triangles of one material; corners anticlockwise as seen from the front.
struct DemoMesh
{
  std::string material;
  std::vector<DemoVertex> vertices;
  std::vector<uint16_t> indices;

  int Add(const DemoVertex& v);
  // Leaves out what has no area.
  void Triangle(int a, int b, int c);
  // Two triangles; corners in order round the quad.
  void Quad(int a, int b, int c, int d);
  // A flat quad with its own corners: uv runs from (u0, v0) at a to (u1, v1) at c, u along a-b. tint is multiplied with
  // the light that the quad gets from the sun.
  void Plane(const std::array<DVector3, 4>& corners, const DVector2& uv0, const DVector2& uv1,
             const DVector3& tint = DVector3(1.0f));
  // The five sides of a box that can be seen: along is its local x. uvs repeat every scale metres.
  void Box(const DVector3& centreOfBase, const DVector3& along, double length, double depth, double height,
           double scale, const DVector3& tint = DVector3(1.0f));
};

// One level of detail of a node.
struct DemoModel
{
  std::deque<DemoMesh> meshes; // what Mesh gave holds while others are added
  // The mesh of that material, with room for some thousand vertices more.
  DemoMesh& Mesh(std::string_view material);
  int Triangles() const;
};

enum DemoNodeFlag
{
  DEMO_SKY = 1,
  DEMO_COLLIDE = 2,
  DEMO_SURFACE = 4,
  DEMO_INVISIBLE = 16, // until the simulator shows it
};

struct DemoNode
{
  std::string name;
  int flags = 0;
  std::vector<DemoModel> levels{1};
  std::vector<double> distances; // where each level ends; empty: one level, seen from everywhere
  DemoModel& Finest() { return levels.front(); }
};

struct DemoScenery
{
  std::vector<DemoNode> nodes;
  DemoNode& AddNode(std::string name, int flags);
  int Triangles() const; // of the finest levels
};

// What the sun and the sky leave of a surface's colour, 0 to 1 per channel.
DVector3 DemoLight(const DVector3& normal);
// Direction to the sun, length 1.
DVector3 DemoSun();
// Normals from the triangles, then light into the colours by factor.
void DemoShade(DemoMesh& mesh);
std::string DemoNumbered(std::string_view name, int number, int digits = 3);
