#include "foundation/qarg.h"

#include "foundation/qreport.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

namespace {

constexpr int MAX_THREAD = 2;
constexpr int MAX_ARG = 100;
constexpr size_t MAX_TEXT = 200;

struct Note
{
  std::array<char, MAX_TEXT> text;
  std::string_view file; // of the macros, so it lives as long as the program
  std::string_view func;
  int line;
};

struct Stack
{
  std::thread::id owner;
  int depth = 0; // goes on counting past the last place, so that pops stay balanced
  bool overflowReported = false, underflowReported = false;
  std::array<Note, MAX_ARG> notes;
};

struct Stacks
{
  std::mutex mutex;
  std::array<Stack, MAX_THREAD> all;
  int used = 0;
};

Stacks& All()
{
  static Stacks stacks;
  return stacks;
}

// Of this thread; index 0 when there is none left for it. outOfSpace is set then.
Stack& Own(Stacks& stacks, bool& outOfSpace)
{
  const std::thread::id self = std::this_thread::get_id();
  for (int i = 0; i < stacks.used; ++i)
    if (stacks.all[static_cast<size_t>(i)].owner == self)
      return stacks.all[static_cast<size_t>(i)];
  outOfSpace = stacks.used == MAX_THREAD;
  Stack& stack = stacks.all[outOfSpace ? 0 : static_cast<size_t>(stacks.used++)];
  if (!outOfSpace)
    stack.owner = self;
  return stack;
}

void Print(const std::string& line, bool toLog)
{
  if (toLog)
    QLOG("%s", line.c_str());
  else
    std::fputs(line.c_str(), stderr);
}

} // namespace

unsigned& QDebugOptions()
{
  static unsigned options = 0;
  return options;
}

void qargPush(std::string_view file, std::string_view func, int line, const char* format, ...)
{
  if (!(QDebugOptions() & QDEBUG_ARGUMENTS))
    return;
  Stacks& stacks = All();
  std::unique_lock lock(stacks.mutex);
  bool outOfSpace = false;
  Stack& stack = Own(stacks, outOfSpace);
  const bool full = stack.depth >= MAX_ARG;
  if (!full) {
    Note& note = stack.notes[static_cast<size_t>(stack.depth)];
    va_list args;
    va_start(args, format);
    std::vsnprintf(note.text.data(), note.text.size(), format, args);
    va_end(args);
    note.file = file;
    note.func = func;
    note.line = line;
  }
  ++stack.depth;
  const bool tell = full && !stack.overflowReported;
  stack.overflowReported |= full;
  const int depth = stacks.used;
  lock.unlock();
  if (outOfSpace)
    QERR("No space for qarg thread %d\n", depth);
  if (tell) {
    QERR("qargPush overflow; verify your qargPush/qargPop calls");
    qargPrint("qargPush overflow state", true);
  }
}

void qargPop()
{
  if (!(QDebugOptions() & QDEBUG_ARGUMENTS))
    return;
  Stacks& stacks = All();
  std::unique_lock lock(stacks.mutex);
  bool outOfSpace = false;
  Stack& stack = Own(stacks, outOfSpace);
  if (stack.depth > 0) {
    --stack.depth;
    return;
  }
  const bool tell = !stack.underflowReported;
  stack.underflowReported = true;
  lock.unlock();
  if (tell)
    QERR("qargPop underflow; verify your qargPush/qargPop calls");
}

void qargPrint(const char* title, bool toLog)
{
  std::string lines = std::string(title) + "\n";
  {
    Stacks& stacks = All();
    const std::lock_guard lock(stacks.mutex);
    bool any = false;
    for (int t = 0; t < stacks.used; ++t) {
      const Stack& stack = stacks.all[static_cast<size_t>(t)];
      for (int i = std::min(stack.depth, MAX_ARG) - 1; i >= 0; --i) {
        const Note& note = stack.notes[static_cast<size_t>(i)];
        lines += "  thread " + std::to_string(t) + ": " + note.text.data() + " [" + std::string(note.file) + ":" +
                 std::to_string(note.line) + ", " + std::string(note.func) + "]\n";
        any = true;
      }
    }
    if (!any)
      lines += "<empty stack> (is dev.argument_tracing set to 1?)\n";
  }
  Print(lines, toLog);
}
