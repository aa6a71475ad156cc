#include "ui/qgroup.h"

#include "ui/qapp.h"
#include "ui/qfont.h"

#include <algorithm>
#include <cmath>

namespace {

// The frame and the background are to keep quiet behind the controls.
constexpr int FRAME_ALPHA = 110, BACKGROUND_ALPHA = 28;
constexpr int PLATE_X = 6;

} // namespace

QGroup::QGroup(QWindow* owner, const QRect& area, std::string_view caption) : QControl(owner, area, caption)
{
  cv.SetColor(PX_FACE, 255); // opaque, so that the frame doesn't run through the caption
  plate = cv.GetColor();
  Start(false);
}

void QGroup::SetTransparent(bool on)
{
  transparent = on;
  Invalidate();
}

void QGroup::SetPlateColor(const QColor& color)
{
  plate = color;
  Invalidate();
}

void QGroup::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  QFont* f = GetFont();
  const int textHgt = static_cast<int>(f->GetHeight());
  const int top = text.empty() ? 0 : textHgt / 2;
  const QRect frame{0, top, rect.wid, rect.hgt - top};
  cv.Begin();
  cv.SetBlending(true);
  if (!transparent) {
    cv.SetColor(PX_PALETEAL, BACKGROUND_ALPHA);
    cv.Rectfill(frame);
  }
  cv.SetColor(PX_OVERLAY, FRAME_ALPHA);
  cv.Rectangle(frame);
  cv.SetColor(PX_OVERLAY, FRAME_ALPHA / 3);
  cv.Rectangle(frame.x + 1, frame.y + 1, frame.wid - 2, frame.hgt - 2);
  if (!text.empty()) {
    QFont* fitting = f->FittingFont(text, rect.wid - 2 * PLATE_X - 8);
    const int wid = static_cast<int>(std::ceil(fitting->GetWidth(text))) + 8;
    cv.SetColor(plate);
    cv.Rectfill(PLATE_X, 0, std::min(wid, rect.wid - PLATE_X), textHgt);
    cv.SetFont(fitting);
    cv.SetColor(PX_WHITE, IsEnabled() ? 255 : 110);
    cv.Text(text, PLATE_X + 4, 0);
  }
  cv.End();
}
