#pragma once

#include "geometry/dblock.h"
#include "geometry/dvector.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

class PNewtonWorld;
struct DAABBPolyInfo;
struct PCollision;

// The shape of a body while it is made. Bodies that were made from it keep it alive.
class PNewtonGeom
{
public:
  enum Flag : uint32_t
  {
    FINISHED = 1 // the tree takes no more faces
  };
  explicit PNewtonGeom(PNewtonWorld* newWorld);
  ~PNewtonGeom();
  PNewtonGeom(const PNewtonGeom&) = delete;
  PNewtonGeom& operator=(const PNewtonGeom&) = delete;

  uint32_t flags = 0;

  // A tree of faces: begin, add, end.
  void BeginTree();
  // A convex polygon of count vertices, stride bytes apart; three floats are read of each. Ignored without BeginTree
  // and once the tree is finished.
  void AddFace(int count, const float* vertices, size_t stride, int material);
  // The tree is the same with optimize or without.
  void EndTreeBuild(bool optimize);
  // False (reported) when the file can't be read, or isn't such a file, of another version, or damaged; what was there
  // before stays.
  [[nodiscard]] bool LoadTree(const std::string& file);
  // False when the file can't be written (reported).
  [[nodiscard]] bool SaveTree(const std::string& file) const;
  // Triangles of the tree, until something came near it.
  int TriangleCount() const;

  // False (reported) when the points span no volume.
  [[nodiscard]] bool CreateConvexHull(std::span<const DVector3> points);
  // Full side lengths.
  void CreateBox(const DVector3& size);
  // Only reports that it can't be done.
  void CreateSphere(float radius);

  PNewtonWorld* GetWorld() const { return world; } // that it is made for
  bool HasCollision() const { return collision != nullptr; }
  const std::shared_ptr<PCollision>& Collision() const { return collision; }

private:
  PNewtonWorld* world;
  std::shared_ptr<PCollision> collision;
};
