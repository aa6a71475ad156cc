#include "ui/qtextfit.h"

#include "ui/qfont.h"

#include <algorithm>
#include <sstream>

std::string QWrapText(const QFont& font, std::string_view text, int wid)
{
  std::string out;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::string current;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const std::string longer = current.empty() ? word : current + ' ' + word;
      if (!current.empty() && font.GetWidth(longer) > static_cast<float>(wid)) {
        out += current + '\n';
        current = word;
      } else {
        current = longer;
      }
    }
    out += current + '\n';
  }
  if (!out.empty())
    out.pop_back();
  return out;
}

QFittedText QFitText(QFont& font, std::string_view text, int wid, int hgt)
{
  constexpr int READABLE = 8; // points
  const auto fits = [=](const QFont& f, std::string_view line) { return f.GetWidth(line) <= static_cast<float>(wid); };
  QFont* fitting = font.FittingFont(text, wid);
  if (fits(*fitting, text) && (fitting == &font || fitting->GetSize() >= READABLE))
    return {fitting, std::string(text)};
  // Two lines of a readable size beat one that nobody can read.
  for (QFont* f = &font; f && f->GetSize() >= READABLE; f = f->Smaller()) {
    const std::string lines = QWrapText(*f, text, wid);
    if (std::count(lines.begin(), lines.end(), '\n') != 1 || f->GetHeight(lines.c_str()) > static_cast<float>(hgt))
      continue;
    const size_t end = lines.find('\n');
    if (fits(*f, std::string_view(lines).substr(0, end)) && fits(*f, std::string_view(lines).substr(end + 1)))
      return {f, lines};
  }
  return {fitting, std::string(text)};
}
