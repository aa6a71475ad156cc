#include "ui/qlabel.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

#include <algorithm>

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
  const bool fits = text.find('\n') == std::string::npos && f->GetWidth(text) <= static_cast<float>(rect.wid);
  const std::string lines = fits ? text : QWrapText(*f, text, rect.wid, true);
  // From the top on: what doesn't fit below would otherwise push the first line out of sight.
  const int height = static_cast<int>(f->GetHeight(lines.c_str()));
  const QRect room{0, 0, rect.wid, fits ? std::max(rect.hgt, height) : height};
  cv.SetColor(0, 0, 0, 160);
  cv.TextML(lines, {room.x + 1, room.y + 1, room.wid, room.hgt}, align);
  cv.SetColor(color.GetR(), color.GetG(), color.GetB(), IsEnabled() ? color.GetA() : 110);
  cv.TextML(lines, room, align);
  cv.End();
}
