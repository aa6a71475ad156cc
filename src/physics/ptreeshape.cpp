#include "physics/ptreeshape.h"

PTreeShape::PTreeShape()
{
  m_shapeType = FAST_CONCAVE_MESH_PROXYTYPE; // a plain concave one; the custom number is taken by distance fields
}

void PTreeShape::AddTriangle(const DVector3& a, const DVector3& b, const DVector3& c, int material)
{
  triangles.push_back({{a, b, c}, material});
  for (const DVector3& corner : triangles.back().corner)
    box.Include(corner);
}

void PTreeShape::SetTriangles(DArray<DAABBPolyInfo> records)
{
  triangles = std::move(records);
  box = DAABB::Nothing();
  for (const DAABBPolyInfo& record : triangles)
    for (const DVector3& corner : record.corner)
      box.Include(corner);
}

void PTreeShape::processAllTriangles(btTriangleCallback* callback, const btVector3& from, const btVector3& to) const
{
  std::call_once(built, [this] {
    tree.TakePolys(std::move(triangles));
    tree.Finish();
  });
  tree.Query(DBox{PFrom(from), PFrom(to)}, [&](const DAABBPolyInfo& record) {
    btVector3 corners[3] = {PTo(record.corner[0]), PTo(record.corner[1]), PTo(record.corner[2])};
    callback->processTriangle(corners, 0, record.user);
    return true;
  });
}

void PTreeShape::getAabb(const btTransform& place, btVector3& from, btVector3& to) const
{
  if (box.min.x > box.max.x) {
    from = to = place.getOrigin();
    return;
  }
  const btVector3 margin(m_collisionMargin, m_collisionMargin, m_collisionMargin);
  btTransformAabb(PTo(box.min), PTo(box.max), 0, place, from, to);
  from -= margin;
  to += margin;
}
