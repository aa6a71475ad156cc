#pragma once

#include <cstdint>

// The system's number for a key symbol of SDL; 0 for a key that it has no number for.
int QKeyFromSDL(int32_t symbol, int scanCode = 0, bool numLock = true);
// The number of the key that stands for a punctuation mark, on whatever key it was typed; 0 for other characters.
int QKeyOfCharacter(char c);
