#pragma once

#include <string_view>

// Notes about what the program is doing, so that a crash report can tell. A stack for each of two threads, 100 notes
// of 200 characters; a thread gets one with its first push, and a third shares the first one's (reported).
// Nothing is noted unless argument tracing is on (QDebugOptions).

// Pushed around long work, and popped behind it.
[[gnu::format(printf, 4, 5)]] void qargPush(std::string_view file, std::string_view func, int line, const char* format,
                                            ...);
void qargPop();
// All stacks on the console, or in the log.
void qargPrint(const char* title, bool toLog);

// What is looked at closely, at the cost of speed.
enum QDebugOption : unsigned
{
  QDEBUG_OPENGL = 0x01,
  QDEBUG_ARGUMENTS = 0x04,
};
unsigned& QDebugOptions();
