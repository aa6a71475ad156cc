#pragma once

#include "geometry/dvector.h"

class DGeob;
class DGeode;

// Hit, also from inside. out, when given, gets the point.
bool IntersectRaySphere(const DVector3& origin, const DVector3& direction, const DVector3& centre, float radius,
                        DVector3* out = nullptr);
// What a determinant must reach for IntersectRayTriangle to take the ray as one across the triangle's plane.
constexpr float PICK_EPSILON = 0.00001f;
// Of both sides, and behind the origin too: t tells, in lengths of the direction.
bool IntersectRayTriangle(const DVector3& origin, const DVector3& direction, const DVector3& a, const DVector3& b,
                          const DVector3& c, float& t);

// What a determinant must reach for RayTriangle to take the ray as one across the triangle's plane.
constexpr float RAY_EPSILON = 1e-7f;
// The same by a finer test of parallels, and only from the origin on: 0 <= t < maxT.
bool RayTriangle(const DVector3& from, const DVector3& direction, const DVector3& a, const DVector3& b,
                 const DVector3& c, float& t, float maxT);
// And where on the triangle: a + u (b - a) + v (c - a).
bool RayTriangle(const DVector3& from, const DVector3& direction, const DVector3& a, const DVector3& b,
                 const DVector3& c, float& t, float& u, float& v, float maxT);

struct GeodeHit
{
  const DGeob* geob = nullptr;
  int triangle = -1; // of the geob's index array
  float t = 0;
  DVector3 point{0.0f};
  DVector3 corner[3] = {DVector3(0.0f), DVector3(0.0f), DVector3(0.0f)};

  // The corner nearest to the point; of equally near ones the first.
  const DVector3& NearestCorner() const;
};
// The nearest hit in front of the origin and below 99999 lengths of the direction, in the model's space. Of equally
// near ones the first in the order of geobs and triangles. False: nothing hit, and hit is as it was.
bool IntersectRayGeode(const DGeode& geode, const DVector3& origin, const DVector3& direction, GeodeHit& hit);
