#include "ui/qxwindow.h"

#include "geometry/dglobal.h"

QXWindow::~QXWindow()
{
  DGlobals().hasContext = false;
  display.DestroyWindow();
}

bool QXWindow::Create(const QDisplayWindow& wanted)
{
  if (!display.CreateWindow(wanted))
    return false;
  DGlobals().hasContext = display.CreateContext();
  return true;
}
