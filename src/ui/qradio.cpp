#include "ui/qradio.h"

#include "ui/qapp.h"
#include "ui/qfont.h"

#include <cmath>

namespace {

constexpr int DISC = 12; // pixels across
constexpr int GAP = 4;

// Filled, row by row; the radius is in pixels and may end in a half.
void PaintDisc(QCanvas& cv, int x, int y, int size)
{
  const double radius = size / 2.0;
  for (int row = 0; row < size; ++row) {
    const double dy = row + 0.5 - radius;
    const int half = static_cast<int>(std::lround(std::sqrt(radius * radius - dy * dy)));
    cv.Rectfill(x + size / 2 - half, y + row, 2 * half, 1);
  }
}

} // namespace

QRadio::QRadio(QWindow* owner, const QRect& area, std::string_view caption, int groupNumber) :
    QToggle(owner, area, caption, false), group(groupNumber)
{
  FitToText();
  Start(true);
}

void QRadio::FitToText()
{
  // Without letters the given size is what can be hit.
  const float width = GetFont()->GetWidth(text);
  if (width <= 0)
    return;
  rect.wid = relPos.wid = static_cast<int>(std::ceil(width)) + GAP + 16;
  rect.hgt = relPos.hgt = static_cast<int>(std::ceil(GetFont()->GetHeight()));
}

void QRadio::SetText(std::string_view newText)
{
  QControl::SetText(newText);
  FitToText();
}

void QRadio::Operate()
{
  for (QWindow* w : app->GetWindowManager()->Windows())
    if (w != this && std::string_view(w->GetClassName()) == GetClassName()) {
      auto* other = static_cast<QRadio*>(w);
      if (other->group == group)
        other->SetState(false);
    }
  SetState(true);
  SendEvent(eventType);
}

void QRadio::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  const int y = (rect.hgt - DISC) / 2;
  cv.Begin();
  cv.SetBlending(true);
  SetEdgeColor();
  PaintDisc(cv, 1, y, DISC);
  cv.SetColor(IsPressed() ? PX_PRESSED : PX_DKTEAL);
  PaintDisc(cv, 2, y + 1, DISC - 2);
  if (GetState()) {
    cv.SetColor(PX_WHITE);
    PaintDisc(cv, 4, y + 3, DISC - 6);
  }
  cv.SetFont(GetFont());
  cv.SetColor(IsEnabled() ? PX_WHITE : PX_DKTEAL);
  cv.Text(text, GAP + 14, (rect.hgt - static_cast<int>(GetFont()->GetHeight())) / 2);
  cv.End();
}
