#include "ui/qlabel.h"

#include "ui/qapp.h"
#include "ui/qfont.h"

#include <sstream>

namespace {

// The text with line ends put in, so that no line is wider than the room if words allow that.
std::string Wrapped(const QFont& font, const std::string& text, int room)
{
  std::string out;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::string current;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const std::string longer = current.empty() ? word : current + ' ' + word;
      if (!current.empty() && font.GetWidth(longer) > static_cast<float>(room)) {
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

} // namespace

QLabel::QLabel(QWindow* owner, const QRect& area, std::string_view caption, QAlign alignment) :
    QControl(owner, area, caption), align(alignment)
{
  Start(false);
}

bool QLabel::EvButtonPress(int button, int, int)
{
  if (button != 1)
    return false;
  SendEvent(QEvent::CLICK);
  return false; // a dialog can be dragged by its texts
}

void QLabel::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  QFont* f = GetFont();
  cv.Begin();
  cv.SetBlending(true);
  cv.SetFont(f);
  const bool fits = f->GetWidth(text) <= static_cast<float>(rect.wid) && text.find('\n') == std::string::npos;
  const std::string lines = fits ? text : Wrapped(*f, text, rect.wid);
  // From the top on: what doesn't fit below would otherwise push the first line out of sight.
  const int height = static_cast<int>(f->GetHeight(lines.c_str()));
  const QRect room{0, 0, rect.wid, fits ? std::max(rect.hgt, height) : height};
  cv.SetColor(0, 0, 0, 160);
  cv.TextML(lines, {room.x + 1, room.y + 1, room.wid, room.hgt}, align);
  cv.SetColor(color.GetR(), color.GetG(), color.GetB(), IsEnabled() ? color.GetA() : 110);
  cv.TextML(lines, room, align);
  cv.End();
}
