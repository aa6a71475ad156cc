#pragma once

#include <cstdint>

// The system's number for a key symbol of SDL; 0 for a key that it has no number for.
int QKeyFromSDL(int32_t symbol);
