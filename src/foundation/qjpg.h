#pragma once

#include "foundation/qbitmap.h"

#include <cstddef>
#include <span>
#include <string>

// JPEG pictures in memory, by libjpeg. Its errors, and a file that ends early, are reported and answer false.

// Fills the picture: alpha is 255, grey becomes red, green and blue, of four components the first three are taken.
bool QReadJPG(std::span<const std::byte> file, QBitMap& picture, const char* name);

// The bytes of a file, without alpha; quality from 0 to 100. Empty, reported with the name, on failure.
std::string QWriteJPG(const QBitMap& picture, int quality, const char* name);
