#include "ui/qxwindow.h"

#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "ui/qglerrors.h"

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
  DThePipe().Invalidate();
  if (DGlobals().hasContext)
    QInstallGLErrorCallback();
  return true;
}
