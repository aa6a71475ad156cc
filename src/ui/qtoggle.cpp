#include "ui/qtoggle.h"

#include "ui/qapp.h"

void QToggle::SetState(bool on)
{
  if (state == on)
    return;
  state = on;
  Invalidate();
}

bool QToggle::EvButtonPress(int button, int, int)
{
  if (button != 1)
    return false;
  app->GetWindowManager()->SetKeyboardFocus(this);
  pressed = true;
  GrabPointer();
  Invalidate();
  return true;
}

bool QToggle::EvButtonRelease(int button, int, int)
{
  if (button != 1 || !pressed)
    return false;
  pressed = false;
  ReleasePointer();
  Invalidate();
  Operate();
  return true;
}

bool QToggle::EvKeyPress(int key, int x, int y)
{
  if (key != QKEY_SPACE || !HasFocus())
    return QControl::EvKeyPress(key, x, y);
  Operate();
  return true;
}
