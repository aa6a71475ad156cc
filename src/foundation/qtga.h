#pragma once

#include "foundation/qbitmap.h"
#include "foundation/qpiecereader.h"

#include <cstddef>
#include <span>
#include <string>

// Targa pictures, from a file as it arrives or in memory.

// Fills the picture from a file's bytes: true colour of 24 or 32 bits, plain or run-length, and grey of 8 bits. Nothing
// is allocated for more pixels than so many bytes can hold. False, reported with the name, when the bytes don't fill
// the picture; it is as it was or, when that showed only at the data's end, empty.
bool QReadTGA(QPieceReader& file, QBitMap& picture, const char* name);
bool QReadTGA(std::span<const std::byte> file, QBitMap& picture, const char* name);

// The bytes of a file: 32 bits, or the red byte as grey. Empty, with a report, for a picture that is too wide, too
// high, or not of 32 bits.
std::string QWriteTGA(const QBitMap& picture, int format);
