#pragma once

#include <array>
#include <cstdint>

// The picture of the program in task bars: a road that runs to the horizon.
constexpr int EDIT_ICON_SIZE = 32;
// Rows from the top, red in the lowest byte.
std::array<uint32_t, EDIT_ICON_SIZE * EDIT_ICON_SIZE> EditIcon();
