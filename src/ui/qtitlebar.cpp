#include "ui/qtitlebar.h"

#include "ui/qapp.h"
#include "ui/qfont.h"

QTitleBar::QTitleBar(QWindow* owner, std::string_view caption, bool closable) :
    QControl(owner, {0, 0, owner->rect.wid, HEIGHT}, caption)
{
  Start(false);
  if (closable) {
    closeButton = std::make_unique<QButton>(this, QRect{rect.wid - 24, 3, 20, 20}, "x");
    closeButton->SetTabStop(-1);
  }
}

QTitleBar::~QTitleBar() = default;

bool QTitleBar::MovesShell() const
{
  return parent && parent->flags & X;
}

bool QTitleBar::Event(QEvent* event)
{
  if (event->type == QEvent::CLICK && closeButton && event->win == closeButton.get() && parent) {
    parent->SendEvent(QEvent::CLOSE);
    return true;
  }
  return QControl::Event(event);
}

// A dialog drags itself; the real window is moved on the screen.
bool QTitleBar::EvButtonPress(int button, int x, int y)
{
  if (button != 1 || !MovesShell())
    return QControl::EvButtonPress(button, x, y);
  app->GetDisplay().PointerPosition(dragX, dragY);
  dragging = true;
  GrabPointer();
  return true;
}

bool QTitleBar::EvMotionNotify(int x, int y)
{
  if (!dragging)
    return QControl::EvMotionNotify(x, y);
  int nowX = 0, nowY = 0;
  app->GetDisplay().PointerPosition(nowX, nowY);
  const QRect window = app->GetDisplay().WindowRect();
  app->GetDisplay().MoveWindow(window.x + nowX - dragX, window.y + nowY - dragY);
  dragX = nowX;
  dragY = nowY;
  return true;
}

bool QTitleBar::EvButtonRelease(int button, int x, int y)
{
  if (button != 1 || !dragging)
    return QControl::EvButtonRelease(button, x, y);
  dragging = false;
  ReleasePointer();
  return true;
}

void QTitleBar::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  const int room = rect.wid - 8 - (closeButton ? 28 : 8);
  QFont* f = GetFont()->FittingFont(text, room);
  cv.Begin();
  cv.SetBlending(true);
  const QColor left(39, 73, 78), right(68, 126, 142);
  cv.Rectfill({0, 0, rect.wid, rect.hgt}, {left, right, right, left});
  cv.SetColor(PX_FOCUS, 90);
  cv.Rectfill(0, rect.hgt - 1, rect.wid, 1);
  cv.SetFont(f);
  cv.SetClipRect(0, 0, 8 + room, rect.hgt);
  cv.SetColor(PX_WHITE);
  cv.Text(text, 8, (rect.hgt - static_cast<int>(f->GetHeight())) / 2);
  cv.DisableClipping();
  cv.End();
}
