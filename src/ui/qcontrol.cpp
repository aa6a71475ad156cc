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

void QControl::GrabPointer()
{
  app->GetWindowManager()->Grab(this);
}

void QControl::ReleasePointer()
{
  if (app->GetWindowManager()->GetGrabbed() == this)
    app->GetWindowManager()->Ungrab();
}
