#include "foundation/qtrace.h"

#include <cstdarg>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int MAX_INDENT = 60;

struct Trace
{
  std::FILE* file = nullptr;
  pid_t owner = 0;
  unsigned classes = 0;
  int level = 0;
  int indent = 0;
  int lines = 0;
};

Trace& State()
{
  static Trace trace;
  return trace;
}

void Prefix(Trace& trace)
{
  std::fprintf(trace.file, "%6d %*s", ++trace.lines, 2 * (trace.indent < MAX_INDENT ? trace.indent : MAX_INDENT), "");
}

void MoveIndent(int by)
{
  if (State().owner == getpid())
    State().indent += by;
}

} // namespace

bool QTraceOpen(const char* path, unsigned classes, int level)
{
  QTraceClose();
  State() = {std::fopen(path, "we"), getpid(), classes, level};
  return State().file != nullptr;
}

void QTraceClose()
{
  if (State().file)
    std::fclose(State().file);
  State() = {};
}

void QTraceLine(unsigned kind, int level, const char* format, ...)
{
  Trace& trace = State();
  if (!trace.file || !(trace.classes & kind) || level > trace.level)
    return;
  Prefix(trace);
  va_list args;
  va_start(args, format);
  std::vfprintf(trace.file, format, args);
  va_end(args);
  std::fflush(trace.file); // what a crash leaves is what it is for
}

QTraceCall::QTraceCall(std::string_view fileName, std::string_view typeName, std::string_view funcName,
                       const void* instance) :
    file(fileName),
    type(typeName), func(funcName), object(instance)
{
  if (!State().file)
    return;
  Tell('>');
  MoveIndent(1);
}

QTraceCall::~QTraceCall()
{
  if (!State().file)
    return;
  MoveIndent(-1);
  Tell('<');
}

void QTraceCall::Tell(char mark) const
{
  Trace& trace = State();
  Prefix(trace);
  const auto size = [](std::string_view s) { return static_cast<int>(s.size()); };
  std::fprintf(trace.file, "%.*s%c%.*s::%.*s", size(file), file.data(), mark, size(type), type.data(), size(func),
               func.data());
  if (object)
    std::fprintf(trace.file, " (this=%p)", object);
  std::fputc('\n', trace.file);
  std::fflush(trace.file);
}
