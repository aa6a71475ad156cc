#pragma once

#include "geometry/daabbtree.h"
#include "physics/pinside.h"

#include <mutex>

// Many triangles that don't move, as the physics library asks for them. The tree over them is built when something
// first comes near: a scene that is only looked at never pays for it. A record's user number is the face's material,
// which the library hands on as the triangle's number.
class PTreeShape : public btConcaveShape
{
public:
  PTreeShape();
  void AddTriangle(const DVector3& a, const DVector3& b, const DVector3& c, int material);
  // All at once, in place of what there was.
  void SetTriangles(DArray<DAABBPolyInfo> records);
  const DArray<DAABBPolyInfo>& Triangles() const { return triangles; } // empty once the tree was built

  void processAllTriangles(btTriangleCallback* callback, const btVector3& from, const btVector3& to) const override;
  void getAabb(const btTransform& place, btVector3& from, btVector3& to) const override;
  void setLocalScaling(const btVector3&) override {} // a scenery isn't scaled
  const btVector3& getLocalScaling() const override { return scaling; }
  void calculateLocalInertia(btScalar, btVector3& inertia) const override { inertia.setZero(); }
  const char* getName() const override { return "PTreeShape"; }

private:
  const btVector3 scaling{1, 1, 1};
  DAABB box = DAABB::Nothing();
  mutable std::once_flag built; // the library may ask from its threads
  mutable DArray<DAABBPolyInfo> triangles;
  mutable DAABBTree tree;
};
