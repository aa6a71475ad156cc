#pragma once

#include "foundation/qbitmap.h"

#include <cstddef>
#include <span>
#include <string>

// Targa pictures in memory.

// Fills the picture from a file's bytes: true colour of 24 or 32 bits, plain or run-length, and grey of 8 bits. Nothing
// is allocated before it is known that the bytes fill the picture. False when they don't; reported with the name.
bool QReadTGA(std::span<const std::byte> file, QBitMap& picture, const char* name);

// The bytes of a file: 32 bits, or the red byte as grey. Empty, with a report, for a picture that is too wide, too
// high, or not of 32 bits.
std::string QWriteTGA(const QBitMap& picture, int format);
