#pragma once

#include "geometry/dbox.h"

#include <cstdint>
#include <span>
#include <vector>

class DGeob;

// A triangle in the cell that holds its centre.
struct RSplitTriangle
{
  uint32_t column = 0; // along x
  uint32_t row = 0;    // along z
  uint32_t geob = 0;   // in the list
  uint32_t corner = 0; // first of three in its indices
  bool operator==(const RSplitTriangle&) const = default;
};

// Sorts triangles into square cells on the ground that start at the box's least corner, as many as it takes to cover
// the box. Ordered by column, then row; within a cell as the list has them. A centre may lie between two cells by the
// rounding of their bounds, or in both, or nowhere (NaN): the triangle is left out, or there twice.
// join: all triangles in the one cell 0, 0.
std::vector<RSplitTriangle> RSplitIntoCells(std::span<const DGeob* const> geobs, const DBox& box, float cellSize,
                                            bool join);
