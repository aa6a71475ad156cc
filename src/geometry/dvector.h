#pragma once

#include <glm/glm.hpp>

// World space has y up and metres as its unit. Equality is exact in all components, and a NaN equals nothing.
using DVector2 = glm::vec2;
using DVector3 = glm::vec3;
using DVector4 = glm::vec4;
// OpenGL's column order, translation in elements 12 to 14; a * b applies b first.
using DMatrix4 = glm::mat4;

// A vector shorter than 0.00001 gives the fallback.
inline DVector3 DNormalized(const DVector3& v, const DVector3& fallback = {0, 1, 0})
{
  const float length = glm::length(v);
  return length < 0.00001f ? fallback : v / length;
}
