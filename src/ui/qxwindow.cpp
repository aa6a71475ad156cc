#include "ui/qxwindow.h"

#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "geometry/dpipe.h"
#include "ui/qglerrors.h"

#include <cstring>
#include <epoxy/gl.h>

namespace {

bool DrawsInSoftware()
{
  const char* name = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
  return name && (std::strstr(name, "llvmpipe") || std::strstr(name, "softpipe"));
}

} // namespace

QXWindow::~QXWindow()
{
  if (DGlobals().hasContext)
    DTheGPUShaders().Clear();
  DGlobals().hasContext = DGlobals().ddsOn = false;
  display.DestroyWindow();
}

bool QXWindow::Create(const QDisplayWindow& wanted)
{
  if (!display.CreateWindow(wanted))
    return false;
  DGlobals().hasContext = display.CreateContext();
  ++DGlobals().context;
  DGlobals().ddsOn = DGlobals().hasContext && epoxy_has_gl_extension("GL_EXT_texture_compression_s3tc");
  DGlobals().softwareRenderer = DGlobals().hasContext && DrawsInSoftware();
  DThePipe().Invalidate();
  if (DGlobals().hasContext)
    QInstallGLErrorCallback();
  return true;
}
