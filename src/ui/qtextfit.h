#pragma once

#include <string>
#include <string_view>

class QFont;

// The text with line ends put in at blanks, so that no line is wider than that many pixels, if words allow it.
std::string QWrapText(const QFont& font, std::string_view text, int wid);

// How a text goes into a room without being cut: as it is, in a somewhat smaller form of the font, in two lines, or
// very small.
struct QFittedText
{
  QFont* font;
  std::string lines;
};
QFittedText QFitText(QFont& font, std::string_view text, int wid, int hgt);
