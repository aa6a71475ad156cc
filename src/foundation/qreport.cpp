#include "foundation/qreport.h"

#include "foundation/qlog.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr size_t MAX_TEXT = 10240;
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

// The part that qwarn and qerr share.
void ReportProblem(const char* mark, unsigned maskBit, unsigned flags, const std::string& context, std::string text)
{
  if (Tapped(mark, text, context))
    return;
  if (text.empty() || text.back() != '\n')
    text += '\n';
  Console("[" + context + "] " + text);
  if (QReports().mask & maskBit)
    QLogEntry(flags, context, text);
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
    QLogEntry(QLOG_INFO | QLOG_NO_CONSOLE, context, text);
}

void qwarn(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  ReportProblem("WARN", 0x04, QLOG_WARN | QLOG_NO_CONSOLE, Place("WARN", file, line, func), text);
}

void qerr(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  ReportProblem("ERR", 0x02, QLOG_ERR | QLOG_NO_CONSOLE, Place("ERR", file, line, func), text);
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
    QLogEntry(QLOG_INFO | QLOG_NO_CONSOLE, {}, text);
}

void qlog(unsigned flags, std::string_view context, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::string text = Format(format, args);
  va_end(args);
  if (!Tapped(QLogSeverityName(flags), text, context))
    QLogEntry(flags, context, text);
}

namespace {

// A tap can't keep this from anyone: the program ends here.
void ReportFatal(const std::string& text)
{
  Tapped("FATAL", text, {});
  QLogEntry(QLOG_FATAL | QLOG_MESSAGE_BOX, {}, text);
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
