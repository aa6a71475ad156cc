#pragma once

#include "foundation/qbitmap.h"

#include <cstddef>
#include <span>

// Fills the picture from the bytes of a Windows bitmap: 24 bits, or 8 bits as grey without a look at the palette. Rows
// are taken padded to four bytes when the file is long enough for that, else tight. Another kind is reported, leaves
// the picture black and counts as read. False, reported with the name, when the bytes aren't such a file or don't fill
// it.
bool QReadBMP(std::span<const std::byte> file, QBitMap& picture, const char* name);
// Is it of a kind whose pixels QReadBMP reads?
bool QIsReadableBMP(std::span<const std::byte> file);
