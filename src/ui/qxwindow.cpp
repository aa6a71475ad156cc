#include "ui/qxwindow.h"

#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "ui/qglerrors.h"

#include <epoxy/gl.h>

QXWindow::~QXWindow()
{
  DGlobals().hasContext = DGlobals().ddsOn = false;
  display.DestroyWindow();
}

bool QXWindow::Create(const QDisplayWindow& wanted)
{
  if (!display.CreateWindow(wanted))
    return false;
  DGlobals().hasContext = display.CreateContext();
  DGlobals().ddsOn = DGlobals().hasContext && epoxy_has_gl_extension("GL_EXT_texture_compression_s3tc");
  DThePipe().Invalidate();
  if (DGlobals().hasContext)
    QInstallGLErrorCallback();
  return true;
}
