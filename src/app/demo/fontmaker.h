#pragma once

#include <string>

// Draws the characters 32 to 126 and 160 to 255 of an outline font, 12 pixels to the em, and writes them as
// root/data/fonts/eurostile11.tga with its table eurostile11.dtf, and twice as large, for finer screens, as
// eurostile11@2x. False, reported, when the font can't be used or a
// file can't be written; what stood there stays.
[[nodiscard]] bool DemoMakeFont(const std::string& root, const std::string& fontFile);
