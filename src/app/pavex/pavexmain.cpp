// The editor's entry: one copy at a time, settings, data root, application and window, and then the run loop.

#include "editor/editshell.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "platform/qsdldisplay.h"
#include "platform/qsingleinstance.h"
#include "ui/qapp.h"

#include <malloc.h>
#include <memory>
#include <string>

namespace {

// Freed memory is kept: getting fresh pages costs the graphics driver more than drawing does.
void KeepMemory()
{
  mallopt(M_MMAP_THRESHOLD, 512 << 20);
  mallopt(M_TRIM_THRESHOLD, 512 << 20);
}

} // namespace

int main()
{
  KeepMemory();
  QSingleInstance instance("pavex");
  if (!instance.IsFirst())
    return 0;
  qstring programDirectory;
  QCurrentDir(programDirectory);
  QReports().logDirectory = programDirectory.Str();
  QReports().applicationName = "pavex";
  auto settings = std::make_unique<QInfo>(programDirectory.Str() + "/pavex.ini");
  QSetCurrentDirectory("..");

  QApp application("pavex", "Pavex", std::make_unique<QSDLDisplay>());
  application.SetInfo(std::make_unique<QInfo>("torvik.ini", QInfo::NO_OPEN_WARNING));
  EditShell shell(application, std::move(settings));
  shell.Configure();
  if (!application.Create())
    return 1;
  shell.Setup();
  if (shell.Settings().GetInt("dev.test_asecut_ms")) {
    QERR("dev.test_asecut_ms is set, but the multi-sub ASE cutter isn't part of this version yet");
    application.Exit(0);
  }
  application.Run();
  return 0;
}
