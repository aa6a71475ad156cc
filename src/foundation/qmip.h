#pragma once

#include "foundation/qbitmap.h"

#include <cstddef>
#include <span>

// Fills the picture from the bytes of a "PIM " file: four bits a pixel, an index into 16 colours. False, reported with
// the name, when the bytes aren't such a file, are of another type, or don't fill the picture.
bool QReadMIP(std::span<const std::byte> file, QBitMap& picture, const char* name);
