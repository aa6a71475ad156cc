#pragma once

#include <string>
#include <string_view>

class QFont;

// The text with line ends put in at blanks, so that no line is wider than that many pixels. A word that is too wide by
// itself, such as a path, stays whole, or is broken where it must be.
std::string QWrapText(const QFont& font, std::string_view text, int wid, bool breakWords = false);

// As much of the text as the width in pixels holds, with "..." behind it when that isn't all.
std::string QCutText(const QFont& font, std::string_view text, int wid);

// How a text goes into a room without being cut: as it is, in a somewhat smaller form of the font, in two lines, or
// very small.
struct QFittedText
{
  QFont* font;
  std::string lines;
};
QFittedText QFitText(QFont& font, std::string_view text, int wid, int hgt);

// The text, or as much of its beginning and its end as is that wide together with dots between them.
std::string QShortenText(const QFont& font, std::string_view text, int wid);
