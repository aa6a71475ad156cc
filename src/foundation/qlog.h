#pragma once

#include <cstdio>
#include <string>
#include <string_view>

// The log behind the report calls: QLOG.txt, the log of problems, and the receiver at the network's other end.

// One entry, already formatted: folded with the one before when the text is the same, else on the console, in a box,
// over the network and in the files, as the flags (QLogFlag) say. From any thread.
void QLogEntry(unsigned flags, std::string_view context, std::string_view text);

// "ERR", "WARN" and so on, by the first severity bit of the flags; "?" without one.
const char* QLogSeverityName(unsigned flags);

// Problems also go to a file of their own, emptied now: QLOG_LAST.txt beside QLOG.txt. False when it can't be written.
bool QLogOpenLast();
void QLogCloseLast();
// Where QLOG_LAST.txt lies.
std::string QLogLastPath();
// Was there an error or a warning since the log of problems was opened? Always false without one.
bool QLogHasProblems();

// While it lives problems go to this file, emptied first, instead of the log of problems; for a tool that wants to
// know what happened during its own work. Behind it everything is as before.
class QLogRedirect
{
public:
  explicit QLogRedirect(const std::string& path);
  ~QLogRedirect();
  QLogRedirect(const QLogRedirect&) = delete;
  QLogRedirect& operator=(const QLogRedirect&) = delete;
  bool IsOpen() const { return own != nullptr; }

private:
  std::FILE* own;
  std::FILE* before;
  bool problemsBefore;
};

// Sends each entry as a datagram. False when the host isn't known.
bool QLogOpenUdp(const std::string& host, int port);
void QLogCloseUdp();

// QLOG.txt for reading, at the entries of the last run that was started: at the line with "--- application start". Null
// when there is none. The caller closes it.
std::FILE* QLogOpenLastRun();
