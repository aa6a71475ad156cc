#include "ui/qcheck.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

#include <algorithm>

QCheck::QCheck(QWindow* owner, const QRect& area, std::string_view caption, bool on) : QToggle(owner, area, caption, on)
{
  Start(true);
}

void QCheck::Operate()
{
  SetState(!GetState());
  SendEvent(QEvent::CLICK);
}

void QCheck::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  const int h = rect.hgt;
  cv.Begin();
  if (checkFlags & FILLED) {
    cv.SetColor(PX_FACE);
    cv.Rectfill(0, 0, rect.wid, h);
  }
  // In a high control the box would grow under its caption, so there it stops and stays in the middle.
  const int boxWid = std::min((h - 8) * 3 / 2, 18);
  const int boxHgt = std::min(h - 10, 12);
  const QRect box{3, 4 + (h - 10 - boxHgt) / 2, boxWid, boxHgt};
  cv.SetBlending(true);
  cv.SetColor(GetState() ? PX_OVERLAY : PX_DKTEAL, IsPressed() ? 160 : IsEnabled() ? 255 : 110);
  cv.Rectfill(box);
  SetEdgeColor();
  cv.Rectangle(box);
  const QFittedText fitted = QFitText(*GetFont(), text, rect.wid - 26, h);
  cv.SetFont(fitted.font);
  cv.SetColor(IsEnabled() ? PX_WHITE : PX_DKTEAL);
  cv.TextML(fitted.lines, {24, 0, rect.wid - 26, h}, QAlign::LEFT);
  cv.End();
}
