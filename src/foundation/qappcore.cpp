#include "foundation/qappcore.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace {

QAppCore* current = nullptr;

std::string ExePath()
{
  std::string path(PATH_MAX, '\0');
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  path.resize(length > 0 ? static_cast<size_t>(length) : 0);
  return path;
}

} // namespace

QAppCore* QAppCore::Get()
{
  return current;
}

QAppCore::QAppCore(std::string_view newAppName, std::string_view newTitle) :
    appName(newAppName), title(newTitle), exePath(ExePath())
{
  current = this;
  QReports().applicationName = appName;
  QReports().exitPath = [this](int status) { Exit(status); };
}

QAppCore::~QAppCore()
{
  if (current != this)
    return;
  current = nullptr;
  QReports().applicationName.clear();
  QReports().exitPath = nullptr;
}

bool QAppCore::SetInfo(std::unique_ptr<QInfo> newInfo)
{
  if (info) {
    QERR("QApp::SetInfo(); info is already open; call CloseInfo() first");
    return false;
  }
  info = std::move(newInfo);
  return true;
}

void QAppCore::CloseInfo()
{
  info.reset();
}

bool QAppCore::AddCleanupProc(CleanupProc func)
{
  if (cleanupProcs.Add(std::move(func)))
    return true;
  QERR("QApp::AddCleanupProc(); out of space - memory leaks WILL occur!");
  return false;
}

bool QAppCore::AddCrashProc(CrashProc func)
{
  if (!func)
    QERR("QApp:AddCrashProc(); func=0");
  else if (crashProcs.Add(func))
    return true;
  else
    QERR("QApp::AddCrashProc(); out of space");
  return false;
}

void QAppCore::RunCrashProcs() const
{
  for (const CrashProc proc : crashProcs)
    proc();
}

void QAppCore::Exit(int status)
{
  if (exiting)
    return;
  exiting = true;
  if (exitProc)
    exitProc(status);
  for (int i = 0; i < cleanupProcs.Count(); ++i) { // by number: a procedure may add another
    QLOG("QApp: calling cleanup proc %d...\n", i);
    if (const CleanupProc proc = *cleanupProcs.At(i))
      proc();
    QLOG("  cleanup %d returned.\n", i);
  }
  if (nonStoppingExit) {
    nonStoppingExit = exiting = false;
    return;
  }
  const ExitProc end = leave; // outlives this object, which it destroys
  if (end)
    end(status);
  else
    std::exit(status);
}
