#pragma once

#include "foundation/qbitmap.h"

#include <cstddef>
#include <span>
#include <string>

// SGI pictures in memory: planes of red, green, blue and alpha, plain or run-length, of either byte order.

// Channels that the file doesn't have are 255. False, reported with the name, when the bytes aren't such a file or
// don't fill the picture.
bool QReadRGB(std::span<const std::byte> file, QBitMap& picture, const char* name);

// The bytes of a little-endian, plain file of four channels with the name in its header. Empty, with a report, for a
// picture that is too wide, too high, or not of 32 bits.
std::string QWriteRGB(const QBitMap& picture, const std::string& name);
