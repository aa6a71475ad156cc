#pragma once

#include "geometry/daabbtree.h"

#include <string>

// A collision tree's file: "NTRE", the library's version 3 and 10, "DATA", and a block of the tree's triangles with a
// checksum. Little-endian.

// False (reported), with triangles as they were, when the file isn't just that.
[[nodiscard]] bool PLoadTriangles(const std::string& file, DArray<DAABBPolyInfo>& triangles);
// False when the file couldn't be written (reported).
[[nodiscard]] bool PSaveTriangles(const std::string& file, const DArray<DAABBPolyInfo>& triangles);
