#pragma once

#include "geometry/dvector.h"

// Where a car stands: its position, and a second point that gives its heading.
struct RCarPos
{
  DVector3 from{0.0f};
  DVector3 to{0.0f};
};
