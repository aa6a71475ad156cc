#pragma once

#include <string_view>

// A file with the calls of the program, one inside the other; off unless it is opened. Lines are numbered and indented
// by a step for each open call. Only the process that opened it moves the indent.

// classes: which lines are kept (QTraceLine's mask); level: lines of a higher one are left out. False when the file
// can't be written.
bool QTraceOpen(const char* path, unsigned classes = ~0u, int level = 9);
void QTraceClose();
// A line of a class and a level.
[[gnu::format(printf, 3, 4)]] void QTraceLine(unsigned kind, int level, const char* format, ...);

// Tells of entering a function and, at the end of its block, of leaving it.
class QTraceCall
{
public:
  QTraceCall(std::string_view file, std::string_view type, std::string_view func, const void* object = nullptr);
  ~QTraceCall();
  QTraceCall(const QTraceCall&) = delete;
  QTraceCall& operator=(const QTraceCall&) = delete;

private:
  void Tell(char mark) const;
  std::string_view file, type, func;
  const void* object;
};
