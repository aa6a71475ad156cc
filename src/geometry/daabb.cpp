#include "geometry/daabb.h"

#include "foundation/qreport.h"

DAABB DAABB::FromOBB(const DVector3& center, const DMatrix4& matrix, const DVector3& half)
{
  const DVector3 middle(matrix * DVector4(center, 1));
  DVector3 reach(0.0f);
  for (int column = 0; column < 3; ++column)
    reach += glm::abs(DVector3(matrix[column])) * half[column];
  return {{middle - reach, middle + reach}};
}

DAABB DAABB::FromSegment(const DVector3& from, const DVector3& direction, float length)
{
  const DVector3 to = from + direction * length;
  return {{glm::min(from, to), glm::max(from, to)}};
}

void DAABB::DbgPrint(const char* name) const
{
  QDBG("%s: (%.2f,%.2f,%.2f)-(%.2f,%.2f,%.2f)\n", name, double(min.x), double(min.y), double(min.z), double(max.x),
       double(max.y), double(max.z));
}
