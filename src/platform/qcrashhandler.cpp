#include "platform/qcrashhandler.h"

#include "foundation/qappcore.h"
#include "foundation/qlog.h"
#include "foundation/qreport.h"
#include "platform/stackwalker.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int MAX_FRAMES = 1000;
constexpr size_t MAX_REPORT = 100 << 10;
constexpr size_t MAX_PATH = 1100;
constexpr size_t STACK_SIZE = 256 << 10;
constexpr std::array SIGNALS = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr const char* NOTE_NAME = "QCRASH.tmp";

// Text in a fixed place, put together without the C library.
class Buffer
{
public:
  void Text(const char* more)
  {
    while (*more && used < bytes.size())
      bytes[used++] = *more++;
  }
  void Decimal(long value, size_t digits = 1)
  {
    std::array<char, 24> reversed;
    size_t n = 0;
    for (auto rest = value < 0 ? 0ul - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
         rest > 0 || n < digits; rest /= 10)
      reversed[n++] = static_cast<char>('0' + rest % 10);
    if (value < 0)
      reversed[n++] = '-';
    Reversed(reversed.data(), n);
  }
  void Hex(uintptr_t value, size_t digits)
  {
    std::array<char, 24> reversed;
    size_t n = 0;
    for (; value > 0 || n < digits; value >>= 4)
      reversed[n++] = "0123456789ABCDEF"[value & 15];
    Reversed(reversed.data(), n);
  }
  void WriteTo(int handle) const
  {
    for (size_t done = 0; done < used;) {
      const ssize_t n = write(handle, bytes.data() + done, used - done);
      if (n < 0 && errno != EINTR)
        return;
      done += static_cast<size_t>(std::max<ssize_t>(n, 0));
    }
  }
  void Clear() { used = 0; }

private:
  void Reversed(const char* digits, size_t n)
  {
    while (n > 0 && used < bytes.size())
      bytes[used++] = digits[--n];
  }
  std::array<char, MAX_REPORT> bytes;
  size_t used = 0;
};

// All that the handler touches, made before. The one thing of its kind that can't be handed down: a handler gets no
// argument.
struct CrashState
{
  std::array<char, MAX_PATH> logPath{}, notePath{};
  std::array<char, 64> name{};
  long utcOffset = 0; // seconds
  volatile sig_atomic_t entered = 0;
  volatile sig_atomic_t written = 0;
  int signal = 0, code = 0;
  uintptr_t address = 0;
  std::array<void*, MAX_FRAMES> frames{};
  int count = 0;
  Buffer text;
  void* stack = nullptr;
};

CrashState& State()
{
  static CrashState state;
  return state;
}

// "Mon Nov 23 03:04:05". Days by the civil calendar of 400 years.
void PutTime(Buffer& out, long seconds)
{
  constexpr const char* DAYS[] = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};
  constexpr const char* MONTHS[] = {"Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec", "Jan", "Feb"};
  const long days = seconds / 86400, rest = seconds % 86400;
  const long ofEra = (days + 719468) % 146097;
  const long yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
  const long dayOfYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const long month = (5 * dayOfYear + 2) / 153;
  out.Text(DAYS[days % 7]);
  out.Text(" ");
  out.Text(MONTHS[month]);
  out.Text(" ");
  out.Decimal(dayOfYear - (153 * month + 2) / 5 + 1, 2);
  for (const auto& [mark, value] : {std::pair{" ", rest / 3600}, {":", rest / 60 % 60}, {":", rest % 60}}) {
    out.Text(mark);
    out.Decimal(value, 2);
  }
}

void PutReport(CrashState& crash)
{
  Buffer& out = crash.text;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  PutTime(out, now.tv_sec + crash.utcOffset);
  out.Text(" (FATAL): [");
  out.Text(crash.name.data());
  out.Text("] Exception 0x");
  out.Hex(static_cast<uintptr_t>(crash.signal), 8);
  out.Text(", flags ");
  out.Decimal(crash.code);
  out.Text(", Address 0x");
  out.Hex(crash.address, 8);
  out.Text("\n(this dialog text is stored in QLOG.txt)\n\n");
  for (int i = 0; i < crash.count; ++i) {
    out.Text("0x");
    out.Hex(reinterpret_cast<uintptr_t>(crash.frames[static_cast<size_t>(i)]), 12);
    out.Text("\n");
  }
}

// For the next start: the addresses, and what lay where.
void WriteNote(CrashState& crash)
{
  const int note = open(crash.notePath.data(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (note < 0)
    return;
  crash.text.WriteTo(note);
  crash.text.Clear();
  crash.text.Text("maps\n");
  crash.text.WriteTo(note);
  const int maps = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  std::array<char, 4096> piece;
  for (ssize_t n; maps >= 0 && (n = read(maps, piece.data(), piece.size())) > 0;)
    static_cast<void>(write(note, piece.data(), static_cast<size_t>(n)) < 0);
  close(maps);
  close(note);
}

void WriteReport(CrashState& crash)
{
  if (crash.written)
    return;
  crash.written = 1;
  PutReport(crash);
  crash.text.WriteTo(STDERR_FILENO);
  const int log = open(crash.logPath.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (log >= 0) {
    crash.text.WriteTo(log);
    close(log);
  }
  WriteNote(crash);
}

[[noreturn]] void Die(int signal)
{
  struct sigaction action
  {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  sigprocmask(SIG_UNBLOCK, &set, nullptr);
  raise(signal);
  _exit(128 + signal);
}

// The frames of the handler itself, which lie above the fault, are of no interest.
void DropOwnFrames(CrashState& crash, const void* context)
{
#if defined(__x86_64__)
  const auto at = static_cast<uintptr_t>(static_cast<const ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
  for (int i = 0; i < crash.count; ++i)
    if (reinterpret_cast<uintptr_t>(crash.frames[static_cast<size_t>(i)]) == at) {
      std::copy(crash.frames.begin() + i, crash.frames.begin() + crash.count, crash.frames.begin());
      crash.count -= i;
      return;
    }
#else
  static_cast<void>(crash);
  static_cast<void>(context);
#endif
}

void HandleFault(int signal, siginfo_t* info, void* context)
{
  CrashState& crash = State();
  if (crash.entered) { // a crash procedure, or this handler itself, is at fault as well
    WriteReport(crash);
    Die(signal);
  }
  crash.entered = 1;
  crash.signal = signal;
  crash.code = info->si_code;
  crash.address = reinterpret_cast<uintptr_t>(info->si_addr);
  crash.count = backtrace(crash.frames.data(), MAX_FRAMES);
  DropOwnFrames(crash, context);
  if (const QAppCore* application = QAppCore::Get())
    application->RunCrashProcs();
  WriteReport(crash);
  Die(signal);
}

bool SetPath(std::array<char, MAX_PATH>& path, const std::string& text)
{
  if (text.size() >= path.size())
    return false;
  std::copy(text.begin(), text.end(), path.begin());
  return true;
}

} // namespace

bool QInstallCrashHandler(const std::string& directory, const std::string& applicationName, bool always)
{
#ifdef __SANITIZE_ADDRESS__
  if (!always)
    return true; // its own report tells more
#else
  static_cast<void>(always);
#endif
  CrashState& crash = State();
  if (!SetPath(crash.logPath, directory + "/QLOG.txt") || !SetPath(crash.notePath, directory + "/" + NOTE_NAME))
    return false;
  std::copy_n(applicationName.begin(), std::min(applicationName.size(), crash.name.size() - 1), crash.name.begin());
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  crash.utcOffset = local.tm_gmtoff;
  // The first walk loads the unwinder, which no handler may do.
  crash.count = backtrace(crash.frames.data(), MAX_FRAMES);
  crash.stack = mmap(nullptr, STACK_SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  stack_t stack{};
  stack.ss_sp = crash.stack;
  stack.ss_size = STACK_SIZE;
  if (crash.stack == MAP_FAILED || sigaltstack(&stack, nullptr) != 0)
    return false;
  struct sigaction action
  {};
  action.sa_sigaction = HandleFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  return std::all_of(SIGNALS.begin(), SIGNALS.end(), [&](int s) { return sigaction(s, &action, nullptr) == 0; });
}

std::string QReportLastCrash(const std::string& directory)
{
  const std::string path = directory + "/" + NOTE_NAME;
  std::FILE* note = std::fopen(path.c_str(), "re");
  if (!note)
    return {};
  std::string head;
  std::vector<uintptr_t> addresses;
  std::array<char, 1024> line;
  while (std::fgets(line.data(), line.size(), note)) {
    const std::string_view text(line.data());
    if (text == "maps\n")
      break;
    uintptr_t address = 0;
    if (!text.starts_with("0x"))
      head += text;
    else if (addresses.size() < MAX_FRAMES &&
             std::from_chars(text.data() + 2, text.data() + text.size(), address, 16).ec == std::errc())
      addresses.push_back(address);
  }
  StackWalkerToString walker;
  walker.ShowCallstack(addresses, note);
  std::fclose(note);
  std::remove(path.c_str());
  // Behind the time, the severity and the program's name.
  const size_t mark = head.find("] ");
  const std::string report = (mark == std::string::npos ? head : head.substr(mark + 2)) + walker.GetText();
  qlog(QLOG_FATAL | QLOG_NO_CONSOLE, {}, "The last run ended by a fault:\n%s", report.c_str());
  return report;
}
