#include "ui/qtextfit.h"

#include "ui/qfont.h"
#include "ui/qtext.h"

#include <algorithm>
#include <sstream>

namespace {

// As much of the word as the room holds, at least one character.
size_t FittingPart(const QFont& font, std::string_view word, int wid)
{
  size_t part = 0;
  QNextChar(word, part);
  for (size_t next = part; next < word.size(); part = next) {
    QNextChar(word, next);
    if (font.GetWidth(word.substr(0, next)) > static_cast<float>(wid))
      break;
  }
  return part;
}

} // namespace

std::string QWrapText(const QFont& font, std::string_view text, int wid, bool breakWords)
{
  std::string out;
  const auto tooWide = [&](const std::string& s) { return font.GetWidth(s) > static_cast<float>(wid); };
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::string current;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const std::string longer = current.empty() ? word : current + ' ' + word;
      if (!current.empty() && tooWide(longer)) {
        out += current + '\n';
        current = word;
      } else {
        current = longer;
      }
      while (breakWords && tooWide(current)) {
        const size_t part = FittingPart(font, current, wid);
        if (part == current.size())
          break;
        out += current.substr(0, part) + '\n';
        current.erase(0, part);
      }
    }
    out += current + '\n';
  }
  if (!out.empty())
    out.pop_back();
  return out;
}

std::string QCutText(const QFont& font, std::string_view text, int wid)
{
  const auto room = static_cast<float>(wid);
  if (font.GetWidth(text) <= room)
    return std::string(text);
  constexpr std::string_view DOTS = "...";
  const float dots = font.GetWidth(DOTS);
  size_t kept = 0;
  float width = 0;
  for (size_t next = 0; next < text.size(); kept = next) {
    QNextChar(text, next);
    width += font.GetWidth(text.substr(kept, next - kept));
    if (width + dots > room)
      break;
  }
  return std::string(text.substr(0, kept)) + std::string(DOTS);
}

QFittedText QFitText(QFont& font, std::string_view text, int wid, int hgt)
{
  constexpr int READABLE = 8; // points
  // A texture font doesn't get smaller but narrower, which hurts sooner.
  const auto readable = [&font](const QFont& f) {
    return font.IsTexFont() ? f.GetSize() * 5 >= font.GetSize() * 4 : f.GetSize() >= READABLE;
  };
  const auto fits = [=](const QFont& f, std::string_view line) { return f.GetWidth(line) <= static_cast<float>(wid); };
  QFont* fitting = font.FittingFont(text, wid);
  if (fits(*fitting, text) && (fitting == &font || readable(*fitting)))
    return {fitting, std::string(text)};
  // Two lines of a readable size beat one that nobody can read.
  for (QFont* f = &font; f && readable(*f); f = f->Smaller()) {
    const std::string lines = QWrapText(*f, text, wid);
    if (std::count(lines.begin(), lines.end(), '\n') != 1 || f->GetHeight(lines.c_str()) > static_cast<float>(hgt))
      continue;
    const size_t end = lines.find('\n');
    if (fits(*f, std::string_view(lines).substr(0, end)) && fits(*f, std::string_view(lines).substr(end + 1)))
      return {f, lines};
  }
  return {fitting, std::string(text)};
}

std::string QShortenText(const QFont& font, std::string_view text, int wid)
{
  std::string shown(text);
  // Taken out of the middle, a character from either side in turn; both ends stay between characters.
  size_t end = 0;
  while (end < text.size() / 2)
    QNextChar(text, end);
  for (size_t begin = end; font.GetWidth(shown) > static_cast<float>(wid) && begin - end < text.size();) {
    if (begin < text.size())
      QNextChar(text, begin);
    if (font.GetWidth(text.substr(0, end)) * 2 > static_cast<float>(wid) || begin == text.size())
      end = QPreviousChar(text, end);
    shown = std::string(text.substr(0, end)) + "..." + std::string(text.substr(begin));
  }
  return shown;
}
