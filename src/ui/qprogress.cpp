#include "ui/qprogress.h"

#include "ui/qapp.h"
#include "ui/qfont.h"

#include <algorithm>

QProgress::QProgress(QWindow* owner, const QRect& area) : QControl(owner, area, {})
{
  Start(false);
}

void QProgress::SetProgress(int newValue, int newTotal)
{
  value = newValue;
  total = newTotal;
  Invalidate();
}

int QProgress::FilledWidth() const
{
  const int64_t room = std::max(rect.wid - 8, 0);
  if (total == 0)
    return static_cast<int>(room);
  return static_cast<int>(std::clamp<int64_t>(room * value / total, 0, room));
}

void QProgress::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  QFont* f = GetFont();
  const int filled = FilledWidth();
  cv.Begin();
  cv.SetBlending(true);
  cv.Inline({0, 0, rect.wid, rect.hgt});
  cv.SetColor(140, 140, 140);
  cv.Rectfill(2, 2, rect.wid - 4, rect.hgt - 4);
  cv.SetColor(PX_WHITE);
  cv.Rectfill(4, 4, filled, rect.hgt - 8);
  cv.SetFont(f);
  const QRect room{6, 0, rect.wid - 12, rect.hgt};
  const int textWid = static_cast<int>(f->GetWidth(text));
  const int free = room.wid - textWid;
  const int x = room.x + (align == QAlign::LEFT ? 0 : align == QAlign::RIGHT ? free : free / 2);
  const int y = (rect.hgt - static_cast<int>(f->GetHeight())) / 2;
  // Black over the trough and over the fill: both are light.
  cv.SetColor(PX_BLACK);
  cv.Text(text, x, y);
  cv.End();
}
