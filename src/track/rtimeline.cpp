#include "track/rtimeline.h"

namespace {

float DistanceSq(const DVector3& a, const DVector3& b)
{
  return glm::dot(a - b, a - b);
}

} // namespace

void RTimeLine::SetPoints(const DVector3& newFrom, const DVector3& newTo)
{
  from = newFrom;
  to = newTo;
  const DVector3 raised = (from + to) * 0.5f + DVector3(0, 1, 0);
  plane.normal = DNormalized(glm::cross(from - to, raised - to));
  plane.distance = -glm::dot(plane.normal, from);
  lengthSq = DistanceSq(from, to);
}

bool RTimeLine::IsCrossed(const DVector3& a, const DVector3& b) const
{
  const bool aInFront = glm::dot(plane.normal, a) + plane.distance >= 0;
  const bool bInFront = glm::dot(plane.normal, b) + plane.distance >= 0;
  return aInFront != bInFront && DistanceSq(a, from) <= lengthSq && DistanceSq(b, from) <= lengthSq &&
         DistanceSq(a, to) <= lengthSq && DistanceSq(b, to) <= lengthSq;
}
