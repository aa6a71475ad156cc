#include "foundation/qreport.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t MAX_TEXT = 10240;
constexpr off_t MAX_LOG_SIZE = 10'000'000;

// The entry that a repeat is folded into.
struct LogMemory
{
  bool started = false;
  std::string text;
  std::string context;
  unsigned flags = 0;
  int repeats = 0;
};

LogMemory& Memory()
{
  static LogMemory memory;
  return memory;
}

std::string Format(const char* format, va_list args)
{
  std::array<char, MAX_TEXT> buffer;
  buffer[0] = 0;
  std::vsnprintf(buffer.data(), buffer.size(), format, args);
  return buffer.data();
}

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  return text;
}

const char* SeverityName(unsigned flags)
{
  static constexpr struct
  {
    unsigned bit;
    const char* name;
  } names[] = {{QLOG_ERR, "ERR"},   {QLOG_WARN, "WARN"},   {QLOG_CRIT, "CRIT"},   {QLOG_NOTE, "NOTE"},
               {QLOG_INFO, "INFO"}, {QLOG_FATAL, "FATAL"}, {QLOG_PROBLEM, "INFO"}};
  for (const auto& n : names)
    if (flags & n.bit)
      return n.name;
  return "?";
}

// Text and context as they stand between the square brackets of the console's forms.
std::string Place(const char* mark, std::string_view file, int line, std::string_view func)
{
  return Format("%s,%.*s:%d,%.*s", mark, int(file.size()), file.data(), line, int(func.size()), func.data());
}

bool Tapped(std::string_view severity, std::string_view text, std::string_view context)
{
  return QReports().tap && QReports().tap(severity, text, context);
}

void Console(std::string_view text)
{
  std::fwrite(text.data(), 1, text.size(), stderr);
}

// Opens QLOG.txt for append, rotated when it has grown past its size. Null when it can't be opened.
std::FILE* OpenLog()
{
  const std::string path = QReports().logDirectory + "/QLOG.txt";
  struct stat info;
  if (stat(path.c_str(), &info) == 0 && info.st_size > MAX_LOG_SIZE) {
    const std::string old = QReports().logDirectory + "/QLOG_OLD.txt";
    std::remove(old.c_str());
    std::rename(path.c_str(), old.c_str());
  }
  return std::fopen(path.c_str(), "ae"); // e: not inherited by programs that are started
}

void AppendToLog(unsigned flags, std::string_view text, std::string_view context)
{
  if (QReports().logDirectory.empty())
    return;
  const std::string name = QReports().applicationName.empty() ? "-" : QReports().applicationName;
  std::FILE* f = OpenLog();
  if (!f) {
    Console(Format("** [%s/%d] Can't open log file (QLOG)\n", name.c_str(), int(getpid())));
    return;
  }
  std::array<char, 64> stamp{};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::strftime(stamp.data(), stamp.size(), "%a %b %d %H:%M:%S", &local);
  std::fprintf(f, "%s (%-5s): [%s] %.*s", stamp.data(), SeverityName(flags), name.c_str(), int(text.size()),
               text.data());
  if (!context.empty())
    std::fprintf(f, " [%.*s]", int(context.size()), context.data());
  std::fputc('\n', f);
  std::fclose(f);
}

void LogCore(unsigned flags, std::string_view context, std::string text)
{
  static std::recursive_mutex mutex; // reports come from any thread; the first entry of a run calls this once more
  const std::lock_guard lock(mutex);
  LogMemory& memory = Memory();
  if (!memory.started) {
    memory.started = true;
    LogCore((flags & (QLOG_NO_UDP | QLOG_NO_CONSOLE)) | QLOG_INFO | QLOG_NO_CONSOLE, context,
            "--- application start ---\n");
  }
  if (!text.empty() && text.back() == '\n')
    text.pop_back();
  if (text == memory.text) {
    ++memory.repeats;
    return;
  }
  if (memory.repeats > 0)
    AppendToLog(memory.flags, Format("[%dx repeat] %s", memory.repeats, memory.text.c_str()), memory.context);
  memory.repeats = 0;
  memory.text = text;
  memory.context = context;
  memory.flags = flags;
  constexpr unsigned SERIOUS = QLOG_ERR | QLOG_WARN | QLOG_CRIT | QLOG_FATAL | QLOG_PROBLEM;
  if (!(flags & QLOG_NO_CONSOLE) && (!QReports().quiet || flags & SERIOUS))
    Console(text + "\n");
  if ((flags & QLOG_MESSAGE_BOX) && QReports().messageBox)
    QReports().messageBox(flags & QLOG_FATAL ? "Fatal error - the program will exit" : "Error", text);
  AppendToLog(flags, text, context);
}

// The part that qwarn and qerr share.
void ReportProblem(const char* mark, unsigned maskBit, unsigned flags, const std::string& context, std::string text)
{
  if (Tapped(mark, text, context))
    return;
  if (text.empty() || text.back() != '\n')
    text += '\n';
  Console("[" + context + "] " + text);
  if (QReports().mask & maskBit)
    LogCore(flags, context, std::move(text));
}

} // namespace

QReportSettings& QReports()
{
  static QReportSettings settings;
  return settings;
}

void qdbg(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  const std::string text = Format(format, args);
  va_end(args);
  const std::string context = Place("DBG", file, line, func);
  if (!Tapped("DBG", text, context) && !QReports().quiet)
    Console("[" + context + "] " + text);
}

void qlog(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  const std::string context =
      Format("%.*s:%d / %.*s", int(file.size()), file.data(), line, int(func.size()), func.data());
  if (!Tapped("LOG", text, context) && (QReports().mask & 0x08))
    LogCore(QLOG_INFO | QLOG_NO_CONSOLE, context, std::move(text));
}

void qwarn(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  ReportProblem("WARN", 0x04, QLOG_WARN | QLOG_NO_CONSOLE, Place("WARN", file, line, func), std::move(text));
}

void qerr(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  ReportProblem("ERR", 0x02, QLOG_ERR | QLOG_NO_CONSOLE, Place("ERR", file, line, func), std::move(text));
}

void qinfo(const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  if (Tapped("INFO", text, {}))
    return;
  if (!QReports().quiet)
    Console(text.empty() || text.back() != '\n' ? text + "\n" : text);
  if (QReports().mask & 0x01)
    LogCore(QLOG_INFO | QLOG_NO_CONSOLE, {}, std::move(text));
}

void qlog(unsigned flags, std::string_view context, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  if (!Tapped(SeverityName(flags), text, context))
    LogCore(flags, context, std::move(text));
}

namespace {

// A tap can't keep this from anyone: the program ends here.
void ReportFatal(const std::string& text)
{
  Tapped("FATAL", text, {});
  LogCore(QLOG_FATAL | QLOG_MESSAGE_BOX, {}, text);
}

[[noreturn]] void Leave(int status)
{
  if (QReports().exitPath)
    QReports().exitPath(status);
  std::exit(status);
}

} // namespace

void qfatal(const char* format, ...)
{
  va_list args;
  va_start(args, format);
  const std::string text = Format(format, args);
  va_end(args);
  ReportFatal(text);
  if (QReports().fatalExits)
    Leave(QReports().exitStatus);
  QCrash("qfatal");
}

void qexit(const char* format, ...)
{
  va_list args;
  va_start(args, format);
  const std::string text = Format(format, args);
  va_end(args);
  ReportFatal(text);
  Leave(QReports().exitStatus);
}

void QCrash(const char* reason)
{
  qlog(QLOG_NOTE, {}, "Going to crash, reason: %s", reason);
  std::raise(SIGSEGV);
  std::abort(); // a handler that returns must not let the program run on
}

bool QSystemMessage(std::string_view title, std::string_view text, bool okOnly)
{
  if (QReports().systemMessage)
    return QReports().systemMessage(title, text, okOnly);
  Console(Format("%.*s: %.*s%s\n", int(title.size()), title.data(), int(text.size()), text.data(),
                 okOnly ? "" : " (answered with Cancel)"));
  return !okOnly;
}
