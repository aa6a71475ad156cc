#include "ui/qtoggle.h"

#include "ui/qapp.h"

void QToggle::SetState(bool on)
{
  if (state == on)
    return;
  state = on;
  Invalidate();
}

void QToggle::SetEdgeColor()
{
  if (!IsEnabled())
    cv.SetColor(PX_FACE, 128);
  else if (HasFocus())
    cv.SetColor(PX_FOCUS);
  else
    cv.SetColor(IsHot() ? PX_PALETEAL : PX_FACE, 255);
}

bool QToggle::EvButtonPress(int button, int, int)
{
  if (button != 1)
    return false;
  TakeFocus();
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
  if (key != QKEY_SPACE || !TakesKeys())
    return QControl::EvKeyPress(key, x, y);
  Operate();
  return true;
}
