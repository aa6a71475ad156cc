#pragma once

#include "foundation/qlanguage.h"
#include "foundation/qobject.h"
#include "foundation/qsystemnode.h"
#include "foundation/qtable.h"
#include "foundation/qvirtualfilesystem.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

class QInfo;

// The part of the application that needs no window: its name, settings, texts, and what runs when it ends.
// One in a process; the windowed application derives from it.
class QAppCore : public QObject
{
public:
  static constexpr int MAX_CLEANUP_PROC = 100;
  static constexpr int MAX_CRASH_PROC = 10;
  using CleanupProc = std::function<void()>;
  using CrashProc = void (*)(); // called while the process is dying: async-signal-safe calls only
  using ExitProc = std::function<void(int status)>;

  explicit QAppCore(std::string_view appName, std::string_view title = "Tessel");
  ~QAppCore() override;
  QAppCore(const QAppCore&) = delete;
  QAppCore& operator=(const QAppCore&) = delete;
  const char* GetClassName() const override { return "QAppCore"; }

  // The one that lives; null without one.
  static QAppCore* Get();

  const std::string& GetAppName() const { return appName; }
  const std::string& GetTitle() const { return title; }
  virtual void SetTitle(std::string_view newTitle) { title = newTitle; }
  // The program's own file.
  const std::string& GetExePath() const { return exePath; }

  // The application's settings. False, with a report, while others are open: those stay, newInfo is freed.
  bool SetInfo(std::unique_ptr<QInfo> newInfo);
  QInfo* GetInfo() const { return info.get(); } // null when there are none
  void CloseInfo();                             // frees them, which writes what was changed

  // The archives whose members are there as files.
  QVirtualFileSystem& GetArchives() { return archives; }

  // The root of the values that the parts of the program show to each other.
  QSystemNode& GetSystem() { return system; }

  QLanguage& GetLanguage() { return language; }
  bool SetLanguage(const std::string& path) { return language.Load(path); }

  // False, with a report, when there is no place for one more; a null crash procedure is refused too.
  bool AddCleanupProc(CleanupProc func);
  bool AddCrashProc(CrashProc func);
  void SetExitProc(ExitProc func) { exitProc = std::move(func); }
  // All of them, in the order in which they were added.
  void RunCrashProcs() const;

  // The exit procedure, then each cleanup procedure once, then the end of the process. A call from inside one of them
  // does nothing.
  void Exit(int status);
  // What ends the process; it destroys the application first. std::exit while nothing is set.
  void SetLeave(ExitProc func) { leave = std::move(func); }
  // The next Exit returns to its caller.
  void SetNonStoppingExit() { nonStoppingExit = true; }

private:
  std::string appName;
  std::string title;
  std::string exePath;
  std::unique_ptr<QInfo> info;
  QVirtualFileSystem archives;
  QSystemNode system{"system"};
  QLanguage language;
  DTable<CleanupProc, MAX_CLEANUP_PROC> cleanupProcs;
  DTable<CrashProc, MAX_CRASH_PROC> crashProcs;
  ExitProc exitProc;
  ExitProc leave;
  bool exiting = false;
  bool nonStoppingExit = false;
};
