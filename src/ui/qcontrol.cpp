#include "ui/qcontrol.h"

#include "ui/qapp.h"

void QControl::Start(bool takesFocus)
{
  if (takesFocus)
    SetTabStop(-2);
  Create();
}

QFont* QControl::GetFont() const
{
  return font ? font : app->GetSystemFont();
}

void QControl::SetText(std::string_view newText)
{
  if (text == newText)
    return;
  text = newText;
  Invalidate();
}

void QControl::TakeFocus()
{
  clicked = true;
  app->GetWindowManager()->SetKeyboardFocus(this);
}

bool QControl::EvKeyRelease(int key, int x, int y)
{
  // The tab key that came here is let go.
  if (QKeyOf(key) == QKEY_TAB)
    clicked = false;
  return QWindow::EvKeyRelease(key, x, y);
}

bool QControl::EvEnter(QEvent* event)
{
  pointerOver = true;
  Invalidate();
  return QWindow::EvEnter(event);
}

bool QControl::EvLeave(QEvent* event)
{
  pointerOver = false;
  Invalidate();
  return QWindow::EvLeave(event);
}

// Asks more than the crossings: of those that happen behind a dialog, or while it is disabled, it isn't told.
bool QControl::IsHot() const
{
  const QWindowManager* wm = app->GetWindowManager();
  return pointerOver && IsEnabled() && wm->IsInActiveGroup(this) && (!wm->GetGrabbed() || wm->GetGrabbed() == this) &&
         RootRect().Contains(app->GetMouseX(), app->GetMouseY());
}

void QControl::GrabPointer()
{
  app->GetWindowManager()->Grab(this);
}

void QControl::ReleasePointer()
{
  if (app->GetWindowManager()->GetGrabbed() == this)
    app->GetWindowManager()->Ungrab();
}
