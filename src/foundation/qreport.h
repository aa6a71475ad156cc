#pragma once

#include <cstdarg>
#include <functional>
#include <string>
#include <string_view>

// The report calls: every message of the system goes through one of these.
// The macros QDBG, QLOG, QWARN and QERR add source file, function and line, and are what code calls.

// "src/track/rtrack.cpp" gives "rtrack.cpp".
constexpr std::string_view QFileNameOf(std::string_view path)
{
  return path.substr(path.find_last_of('/') + 1); // npos + 1 is 0
}

// "bool QInfo::Write(const char*, bool)" gives "QInfo::Write", without the mark of an unnamed namespace.
constexpr std::string_view QFunctionName(std::string_view signature)
{
  for (std::string_view mark : {"(anonymous namespace)::", "{anonymous}::"})
    if (const auto at = signature.find(mark); at <= signature.find('('))
      signature.remove_prefix(at == std::string_view::npos ? 0 : at + mark.size());
  const auto head = signature.substr(0, signature.find('('));
  return head.substr(head.find_last_of(" *&") + 1); // npos + 1 is 0: nothing in front
}

// Each formats into 10,240 characters; what is longer is cut. qwarn and qerr end the console line with a line feed.
[[gnu::format(printf, 4, 5)]] void qdbg(std::string_view file, std::string_view func, int line, const char* format,
                                        ...);
[[gnu::format(printf, 4, 5)]] void qlog(std::string_view file, std::string_view func, int line, const char* format,
                                        ...);
[[gnu::format(printf, 4, 5)]] void qwarn(std::string_view file, std::string_view func, int line, const char* format,
                                         ...);
[[gnu::format(printf, 4, 5)]] void qerr(std::string_view file, std::string_view func, int line, const char* format,
                                        ...);
[[gnu::format(printf, 1, 2)]] void qinfo(const char* format, ...);
// Reports, shows the message box and ends the process through QCrash.
[[noreturn, gnu::format(printf, 1, 2)]] void qfatal(const char* format, ...);
// Reports, shows the message box and takes the program's exit path.
[[noreturn, gnu::format(printf, 1, 2)]] void qexit(const char* format, ...);
// Logs the reason and raises a fault, so that each such stop leaves the same trail.
[[noreturn]] void QCrash(const char* reason);

#define QDBG(...) qdbg(QFileNameOf(__FILE__), QFunctionName(__PRETTY_FUNCTION__), __LINE__, __VA_ARGS__)
#define QLOG(...) qlog(QFileNameOf(__FILE__), QFunctionName(__PRETTY_FUNCTION__), __LINE__, __VA_ARGS__)
#define QWARN(...) qwarn(QFileNameOf(__FILE__), QFunctionName(__PRETTY_FUNCTION__), __LINE__, __VA_ARGS__)
#define QERR(...) qerr(QFileNameOf(__FILE__), QFunctionName(__PRETTY_FUNCTION__), __LINE__, __VA_ARGS__)

// Flags of a log entry. The first severity bit that is set, in this order, names the entry.
enum QLogFlag : unsigned
{
  QLOG_ERR = 0x001,
  QLOG_WARN = 0x002,
  QLOG_CRIT = 0x004,
  QLOG_NOTE = 0x008,
  QLOG_INFO = 0x010,
  QLOG_FATAL = 0x040,
  QLOG_PROBLEM = 0x800,
  QLOG_NO_UDP = 0x080,
  QLOG_NO_CONSOLE = 0x100,
  QLOG_MESSAGE_BOX = 0x400,
};

// The log core: one entry, folded with the one before when the text is the same.
[[gnu::format(printf, 3, 4)]] void qlog(unsigned flags, std::string_view context, const char* format, ...);

// What the reports need of the program around them. Owned by the process, one instance.
struct QReportSettings
{
  unsigned mask = 0x0E;        // classes that reach the log file: 1 info, 2 errors, 4 warnings, 8 notes
  std::string logDirectory;    // where QLOG.txt is kept; empty: no log file (tests, tools)
  std::string applicationName; // "-" stands in the log while this is empty
  int debugLevel = 0;          // how much is told of the inside; from 4 on each block that is painted
  bool quiet = false;          // the console gets warnings and worse only
  int exitStatus = 0;          // of qexit
  bool fatalExits = false;     // qfatal leaves with exitStatus instead of a fault (command-line tool)
  std::function<void(std::string_view title, std::string_view text)> messageBox; // none: the console has it
  std::function<void(int status)> exitPath; // the application's orderly exit; none: the process ends
  // The platform's plain OK/Cancel box. Without one the answer is Cancel, said on the console.
  std::function<bool(std::string_view title, std::string_view text, bool okOnly)> systemMessage;
  // Sees each report before it goes anywhere, with its class ("DBG", "LOG", "WARN", "ERR", "INFO", "FATAL", "NOTE",
  // "CRIT") and context; true keeps it from all other targets. For tests and for tools that gather problems.
  std::function<bool(std::string_view severity, std::string_view text, std::string_view context)> tap;
};
QReportSettings& QReports();

// True when anything but OK was chosen.
[[nodiscard]] bool QSystemMessage(std::string_view title, std::string_view text, bool okOnly);
