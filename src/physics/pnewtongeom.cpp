#include "physics/pnewtongeom.h"

#include "foundation/qreport.h"
#include "physics/pcollision.h"
#include "physics/pnewtoncache.h"
#include "physics/pnewtonworld.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr float HULL_TOLERANCE = 0.002f; // metres

// By the farthest of the points from a point, from a line and from a plane, one after the other.
bool SpanVolume(std::span<const DVector3> points)
{
  const auto farthest = [&](auto distance) {
    return *std::max_element(points.begin(), points.end(),
                             [&](const DVector3& a, const DVector3& b) { return distance(a) < distance(b); });
  };
  if (points.size() < 4)
    return false;
  const DVector3 a = points.front();
  const DVector3 b = farthest([&](const DVector3& p) { return glm::distance(a, p); });
  const DVector3 line = DNormalized(b - a);
  const auto fromLine = [&](const DVector3& p) { return glm::length(glm::cross(line, p - a)); };
  const DVector3 c = farthest(fromLine);
  const DVector3 normal = DNormalized(glm::cross(line, c - a));
  const auto fromPlane = [&](const DVector3& p) { return std::abs(glm::dot(normal, p - a)); };
  return glm::distance(a, b) > HULL_TOLERANCE && fromLine(c) > HULL_TOLERANCE &&
         fromPlane(farthest(fromPlane)) > HULL_TOLERANCE;
}

} // namespace

PNewtonGeom::PNewtonGeom(PNewtonWorld* newWorld) : world(newWorld)
{}

PNewtonGeom::~PNewtonGeom() = default;

void PNewtonGeom::BeginTree()
{
  auto shape = std::make_unique<PTreeShape>();
  PTreeShape* const tree = shape.get();
  collision = std::make_shared<PCollision>(PCollision{std::move(shape), tree});
  flags &= ~static_cast<uint32_t>(FINISHED);
}

void PNewtonGeom::AddFace(int count, const float* vertices, size_t stride, int material)
{
  if (!collision || !collision->tree || flags & FINISHED)
    return;
  const auto corner = [&](int i) {
    DVector3 v;
    std::memcpy(&v, reinterpret_cast<const std::byte*>(vertices) + static_cast<size_t>(i) * stride, sizeof(v));
    return v;
  };
  for (int i = 2; i < count; ++i)
    collision->tree->AddTriangle(corner(0), corner(i - 1), corner(i), material);
}

void PNewtonGeom::EndTreeBuild(bool optimize)
{
  QDBG("PNewtonGeom:EndTreeBuild(optimize=%d)", static_cast<int>(optimize));
  flags |= FINISHED;
}

bool PNewtonGeom::LoadTree(const std::string& file)
{
  DArray<DAABBPolyInfo> triangles;
  if (!PLoadTriangles(file, triangles))
    return false;
  if (collision)
    QDBG("PNewtonGeom:LoadTree(%s); note that a geom was already created", file.c_str());
  BeginTree();
  collision->tree->SetTriangles(std::move(triangles));
  flags |= FINISHED;
  return true;
}

bool PNewtonGeom::SaveTree(const std::string& file) const
{
  const DArray<DAABBPolyInfo> none;
  return PSaveTriangles(file, collision && collision->tree ? collision->tree->Triangles() : none);
}

int PNewtonGeom::TriangleCount() const
{
  return collision && collision->tree ? static_cast<int>(collision->tree->Triangles().size()) : 0;
}

bool PNewtonGeom::CreateConvexHull(std::span<const DVector3> points)
{
  if (!SpanVolume(points)) {
    QWARN("PNewtonGeom:CreateConvexHull() failed to create geom");
    return false;
  }
  auto hull = std::make_unique<btConvexHullShape>();
  for (const DVector3& point : points)
    hull->addPoint(PTo(point), false);
  hull->recalcLocalAabb();
  hull->optimizeConvexHull();
  hull->setMargin(HULL_TOLERANCE);
  collision = std::make_shared<PCollision>(PCollision{std::move(hull), nullptr});
  return true;
}

void PNewtonGeom::CreateBox(const DVector3& size)
{
  collision = std::make_shared<PCollision>(PCollision{std::make_unique<btBoxShape>(PTo(size * 0.5f)), nullptr});
}

void PNewtonGeom::CreateSphere(float)
{
  QWARN("NewtonCreateSphere NYI in Newton3");
}
