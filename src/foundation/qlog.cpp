#include "foundation/qlog.h"

#include "foundation/qreport.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr size_t MAX_TEXT = 10239;
constexpr off_t MAX_LOG_SIZE = 10'000'000;
constexpr size_t MAX_DATAGRAM = 1400;
constexpr unsigned PROBLEM = QLOG_ERR | QLOG_WARN | QLOG_CRIT | QLOG_FATAL | QLOG_PROBLEM;

// All that the log remembers. One lock guards it: reports come from any thread, and are rare enough for that.
struct LogState
{
  std::recursive_mutex mutex; // a report on the way of a report is an entry as well
  bool started = false;
  // The entry that a repeat is folded into.
  std::string text;
  std::string context;
  unsigned flags = 0;
  int repeats = 0;
  std::FILE* problems = nullptr; // the log of problems, or what stands in for it
  bool hasProblems = false;
  int udp = -1;
  bool udpBusy = false; // the network itself may have something to report
};

LogState& State()
{
  static LogState state;
  return state;
}

std::string Now()
{
  std::array<char, 64> stamp{};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::strftime(stamp.data(), stamp.size(), "%a %b %d %H:%M:%S", &local);
  return stamp.data();
}

void Console(const std::string& text)
{
  std::fwrite(text.data(), 1, text.size(), stderr);
}

void Send(const std::string& message)
{
  LogState& log = State();
  if (log.udp < 0 || log.udpBusy)
    return;
  log.udpBusy = true;
  const size_t size = std::min(message.size(), MAX_DATAGRAM);
  // Nobody may listen: that is no reason to say so.
  static_cast<void>(send(log.udp, message.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL) < 0);
  log.udpBusy = false;
}

std::string LogPath(const char* name)
{
  return QReports().logDirectory + "/" + name;
}

// Opens QLOG.txt for append, rotated when it has grown past its size. Null when it can't be opened.
std::FILE* OpenLog()
{
  const std::string path = LogPath("QLOG.txt");
  struct stat info;
  if (stat(path.c_str(), &info) == 0 && info.st_size > MAX_LOG_SIZE) {
    const std::string old = LogPath("QLOG_OLD.txt");
    std::remove(old.c_str());
    std::rename(path.c_str(), old.c_str());
  }
  return std::fopen(path.c_str(), "ae"); // e: not inherited by programs that are started
}

void AppendToLog(unsigned flags, const std::string& text, const std::string& context)
{
  if (QReports().logDirectory.empty())
    return;
  const std::string name = QReports().applicationName.empty() ? "-" : QReports().applicationName;
  std::FILE* f = OpenLog();
  if (!f) {
    Console("** [" + name + "/" + std::to_string(getpid()) + "] Can't open log file (QLOG)\n");
    return;
  }
  std::fprintf(f, "%s (%-5s): [%s] %s%s%s%s\n", Now().c_str(), QLogSeverityName(flags), name.c_str(), text.c_str(),
               context.empty() ? "" : " [", context.c_str(), context.empty() ? "" : "]");
  std::fclose(f);
}

void AppendToProblems(unsigned flags, const std::string& text, const std::string& context)
{
  LogState& log = State();
  if (!log.problems || !(flags & PROBLEM))
    return;
  log.hasProblems = true;
  std::fprintf(log.problems, "%s (%s): %s%s%s%s\n", Now().c_str(), QLogSeverityName(flags), text.c_str(),
               context.empty() ? "" : " [", context.c_str(), context.empty() ? "" : "]");
  std::fflush(log.problems);
}

std::FILE* OpenTruncated(const std::string& path)
{
  return std::fopen(path.c_str(), "we");
}

// A text that comes again is news to another file.
void ForgetLastText()
{
  State().text.clear();
  State().repeats = 0;
}

} // namespace

const char* QLogSeverityName(unsigned flags)
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

void QLogEntry(unsigned flags, std::string_view context, std::string_view message)
{
  LogState& log = State();
  const std::lock_guard lock(log.mutex);
  if (!std::exchange(log.started, true))
    QLogEntry((flags & (QLOG_NO_UDP | QLOG_NO_CONSOLE)) | QLOG_INFO | QLOG_NO_CONSOLE, context,
              "--- application start ---\n");
  std::string text(message.substr(0, MAX_TEXT));
  if (!text.empty() && text.back() == '\n')
    text.pop_back();
  if (text == log.text) {
    ++log.repeats;
    if (!(flags & QLOG_NO_UDP))
      Send(std::string(QLogSeverityName(flags)) + ": " + text + "\n");
    return;
  }
  if (log.repeats > 0) {
    const std::string repeat = "[" + std::to_string(log.repeats) + "x repeat] " + log.text;
    AppendToLog(log.flags, repeat, log.context);
    AppendToProblems(log.flags, repeat, log.context);
  }
  log.repeats = 0;
  log.text = text;
  log.context = context;
  log.flags = flags;
  if (!(flags & QLOG_NO_CONSOLE) && (!QReports().quiet || flags & PROBLEM))
    Console(text + "\n");
  if ((flags & QLOG_MESSAGE_BOX) && QReports().messageBox)
    QReports().messageBox(flags & QLOG_FATAL ? "Fatal error - the program will exit" : "Error", text);
  if (!(flags & QLOG_NO_UDP))
    Send("[" + std::string(context) + "] " + QLogSeverityName(flags) + ": " + text + "\n");
  AppendToLog(flags, text, std::string(context));
  AppendToProblems(flags, text, std::string(context));
}

std::string QLogLastPath()
{
  return LogPath("QLOG_LAST.txt");
}

bool QLogOpenLast()
{
  QLogCloseLast();
  const std::lock_guard lock(State().mutex);
  State().problems = OpenTruncated(QLogLastPath());
  return State().problems != nullptr;
}

void QLogCloseLast()
{
  const std::lock_guard lock(State().mutex);
  if (State().problems)
    std::fclose(State().problems);
  State().problems = nullptr;
  State().hasProblems = false;
}

bool QLogHasProblems()
{
  const std::lock_guard lock(State().mutex);
  return State().hasProblems;
}

QLogRedirect::QLogRedirect(const std::string& path) : own(OpenTruncated(path))
{
  const std::lock_guard lock(State().mutex);
  before = std::exchange(State().problems, own);
  problemsBefore = std::exchange(State().hasProblems, false);
  ForgetLastText();
}

QLogRedirect::~QLogRedirect()
{
  const std::lock_guard lock(State().mutex);
  State().problems = before;
  State().hasProblems = problemsBefore;
  if (own)
    std::fclose(own);
}

bool QLogOpenUdp(const std::string& host, int port)
{
  QLogCloseUdp();
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
    return false;
  int handle = -1;
  for (const addrinfo* a = found; a && handle < 0; a = a->ai_next) {
    handle = socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC, a->ai_protocol);
    if (handle >= 0 && connect(handle, a->ai_addr, a->ai_addrlen) != 0) {
      close(handle);
      handle = -1;
    }
  }
  freeaddrinfo(found);
  const std::lock_guard lock(State().mutex);
  State().udp = handle;
  return handle >= 0;
}

void QLogCloseUdp()
{
  const std::lock_guard lock(State().mutex);
  if (State().udp >= 0)
    close(State().udp);
  State().udp = -1;
}

std::FILE* QLogOpenLastRun()
{
  std::FILE* f = std::fopen(LogPath("QLOG.txt").c_str(), "re");
  if (!f)
    return nullptr;
  long start = -1;
  char* line = nullptr;
  size_t room = 0;
  for (long at = 0; getline(&line, &room, f) >= 0; at = std::ftell(f))
    if (std::string_view(line).find("--- application start") != std::string_view::npos)
      start = at;
  std::free(line);
  if (start >= 0 && std::fseek(f, start, SEEK_SET) == 0)
    return f;
  std::fclose(f);
  return nullptr;
}
