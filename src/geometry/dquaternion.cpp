#include "geometry/dquaternion.h"

#include <cmath>

DQuaternion DQuaternionFromAngles(float a, float b, float c)
{
  const float ca = std::cos(a / 2);
  const float sa = std::sin(a / 2);
  const float cb = std::cos(b / 2);
  const float sb = std::sin(b / 2);
  const float cc = std::cos(c / 2);
  const float sc = std::sin(c / 2);
  return {cb * ca * cc - sb * sa * sc, sb * ca * cc - cb * sa * sc, cb * sa * cc + sb * ca * sc,
          cb * ca * sc + sb * sa * cc};
}

DQuaternion DQuaternionFromAxis(const DVector3& axis, float angle)
{
  const DVector3 v = DNormalized(axis, DVector3(0.0f)) * std::sin(angle / 2);
  return {std::cos(angle / 2), v.x, v.y, v.z};
}

DQuaternion DNormalized(const DQuaternion& q)
{
  const float squared = glm::dot(q, q);
  if (squared < 0.00001f)
    return {1, 0, 0, 0};
  return q * (1 / std::sqrt(squared));
}

DMatrix4 DMatrixOf(const DQuaternion& q)
{
  return glm::mat4_cast(q);
}
