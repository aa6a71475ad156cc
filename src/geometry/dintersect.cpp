#include "geometry/dintersect.h"

#include "geometry/dgeode.h"

#include <cmath>

bool IntersectRaySphere(const DVector3& origin, const DVector3& direction, const DVector3& centre, float radius,
                        DVector3* out)
{
  const DVector3 l = centre - origin;
  const float s = glm::dot(l, direction);
  const float l2 = glm::dot(l, l);
  const float r2 = radius * radius;
  const bool outside = l2 > r2;
  const float m2 = l2 - s * s;
  if ((s < 0 && outside) || m2 > r2)
    return false;
  if (!out)
    return true;
  const float q = std::sqrt(r2 - m2);
  *out = origin + (outside ? s - q : s + q) * direction;
  return true;
}

namespace {

// A determinant closer to 0 than epsilon is a ray along the triangle's plane.
bool MeetTriangle(const DVector3& origin, const DVector3& direction, const DVector3& a, const DVector3& b,
                  const DVector3& c, float epsilon, float& t, float& u, float& v)
{
  const DVector3 e1 = b - a;
  const DVector3 e2 = c - a;
  const DVector3 p = glm::cross(direction, e2);
  const float det = glm::dot(e1, p);
  if (det > -epsilon && det < epsilon)
    return false;
  const DVector3 s = origin - a;
  u = glm::dot(s, p) / det;
  if (!(u >= 0 && u <= 1))
    return false;
  const DVector3 q = glm::cross(s, e1);
  v = glm::dot(direction, q) / det;
  if (!(v >= 0 && u + v <= 1))
    return false;
  t = glm::dot(e2, q) / det;
  return true;
}

} // namespace

bool IntersectRayTriangle(const DVector3& origin, const DVector3& direction, const DVector3& a, const DVector3& b,
                          const DVector3& c, float& t)
{
  float u = 0;
  float v = 0;
  return MeetTriangle(origin, direction, a, b, c, PICK_EPSILON, t, u, v);
}

bool RayTriangle(const DVector3& from, const DVector3& direction, const DVector3& a, const DVector3& b,
                 const DVector3& c, float& t, float maxT)
{
  float u = 0;
  float v = 0;
  return RayTriangle(from, direction, a, b, c, t, u, v, maxT);
}

bool RayTriangle(const DVector3& from, const DVector3& direction, const DVector3& a, const DVector3& b,
                 const DVector3& c, float& t, float& u, float& v, float maxT)
{
  return MeetTriangle(from, direction, a, b, c, RAY_EPSILON, t, u, v) && t >= 0 && t < maxT;
}

const DVector3& GeodeHit::NearestCorner() const
{
  int best = 0;
  for (int i = 1; i < 3; ++i)
    if (glm::distance(corner[i], point) < glm::distance(corner[best], point))
      best = i;
  return corner[best];
}

bool IntersectRayGeode(const DGeode& geode, const DVector3& origin, const DVector3& direction, GeodeHit& hit)
{
  float best = DGeode::FAR;
  for (const auto& geob : geode.geob) {
    const size_t vertices = geob->vertex.size();
    for (size_t i = 0; i + 2 < geob->index.size(); i += 3) {
      const uint16_t* corner = &geob->index[i];
      if (corner[0] >= vertices || corner[1] >= vertices || corner[2] >= vertices)
        continue;
      const DVector3& a = geob->vertex[corner[0]];
      const DVector3& b = geob->vertex[corner[1]];
      const DVector3& c = geob->vertex[corner[2]];
      float t = 0;
      if (!IntersectRayTriangle(origin, direction, a, b, c, t) || !(t > 0 && t < best))
        continue;
      best = t;
      hit = {geob.get(), static_cast<int>(i / 3), t, origin + direction * t, {a, b, c}};
    }
  }
  return best < DGeode::FAR;
}
