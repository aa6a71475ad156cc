#pragma once

#include "geometry/dvector.h"

#include <glm/gtc/quaternion.hpp>

// w, x, y, z in the constructor; angles are radians.
using DQuaternion = glm::quat;

// About y by a, then about x by b, then about z by c: yaw, pitch, roll.
DQuaternion DQuaternionFromAngles(float a, float b, float c);
// An axis shorter than 0.00001 counts as zero.
DQuaternion DQuaternionFromAxis(const DVector3& axis, float angle);
// A squared length below 0.00001 gives the turn by nothing.
DQuaternion DNormalized(const DQuaternion& q);
// For column vectors, of a unit quaternion; translation 0.
DMatrix4 DMatrixOf(const DQuaternion& q);
