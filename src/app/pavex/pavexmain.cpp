// The editor's entry: one copy at a time, settings, data root, application and window, and then the run loop.

#include "editor/editshell.h"
#include "foundation/qdbgsetup.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "platform/qcgcache.h"
#include "platform/qcgcompiler.h"
#include "platform/qcrashhandler.h"
#include "platform/qopenalsound.h"
#include "platform/qopendocument.h"
#include "platform/qsdldisplay.h"
#include "platform/qsingleinstance.h"
#include "runtime/qsample.h"
#include "ui/qapp.h"

#include <cstdlib>
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

void RunCommand(const std::string& command)
{
  if (std::system(command.c_str()) != 0)
    QWARN("dev.run_first: '%s' failed", command.c_str());
}

void TellOfCrash(const std::string& directory)
{
  const std::string text = "The last run was ended by a fault in the program.\n"
                           "What is on the disk is as it was saved last. The report for the developers stands in " +
                           directory + "/QLOG.txt.";
  static_cast<void>(QSystemMessage("Crash report", text, true));
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
  const std::string lastCrash = QReportLastCrash(programDirectory.Str());
  if (!QInstallCrashHandler(programDirectory.Str(), "pavex"))
    QWARN("No report will be left when the program crashes");
  QFileHooks().openDocument = QOpenDocument;
  auto settings = std::make_unique<QInfo>(programDirectory.Str() + "/pavex.ini");
  qdbg_setup(*settings, {RunCommand, nullptr, nullptr});
  QSetCurrentDirectory("..");

  QTheSoundHooks().createSystem = [] { return QOpenALSound::Open(); };
  DGlobals().programCompiler = QCgCompiler(QCgCache::UserDirectory());

  QApp application("pavex", "Pavex", std::make_unique<QSDLDisplay>());
  application.SetInfo(std::make_unique<QInfo>("torvik.ini", QInfo::NO_OPEN_WARNING));
  EditShell shell(application, std::move(settings));
  shell.Configure();
  if (!application.Create())
    return 1;
  shell.Setup();
  if (!lastCrash.empty())
    TellOfCrash(programDirectory.Str());
  if (shell.Settings().GetInt("dev.test_asecut_ms")) {
    shell.CutTestScene();
    application.Exit(0);
  }
  application.Run();
  return 0;
}
