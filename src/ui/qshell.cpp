#include "ui/qshell.h"

#include "ui/qapp.h"

QShell::QShell(const QRect& area) : QWindow(nullptr, area)
{
  MakeRealX();
}

void QShell::Paint(const QRect* r)
{
  app->GetWindowManager()->PaintBackground(this, r);
}

bool QShell::EvButtonPress(int, int, int)
{
  app->GetWindowManager()->SetKeyboardFocus(nullptr);
  return false;
}

bool QShell::EvResize(int wid, int hgt)
{
  rect.wid = relPos.wid = wid;
  rect.hgt = relPos.hgt = hgt;
  Invalidate();
  return false;
}

void QShell::SetText(std::string_view text)
{
  title = text;
  if (IsCreated())
    app->GetDisplay().SetTitle(title);
}

QBC::QBC(QWindow* owner, const QRect& area) : QWindow(owner, area)
{
  Create();
}
