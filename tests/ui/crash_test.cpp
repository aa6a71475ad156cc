// Faults of a child process, and what they leave.

#include "foundation/qappcore.h"
#include "foundation/qreport.h"
#include "platform/qcrashhandler.h"
#include "support/tempdir.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::HasSubstr;

// Seen by name in the report, so outside of any unnamed namespace.
[[gnu::noinline, gnu::no_sanitize_undefined]] int CrashTestDivide(volatile int* by)
{
  return 7 / *by;
}

[[gnu::noinline]] int CrashTestRecurse(int depth)
{
  volatile char room[1000];
  room[0] = static_cast<char>(depth);
  return depth < 0 ? 0 : CrashTestRecurse(depth + 1) + room[0]; // until the stack is full
}

[[gnu::noinline, gnu::no_sanitize_undefined]] void CrashTestWrite(volatile int* nowhere)
{
  *nowhere = 1;
}

namespace {

class Crash : public testing::Test
{
protected:
  // The signal that ended the child.
  int Run(void (*fault)(), QAppCore::CrashProc procedure = nullptr)
  {
    const pid_t child = fork();
    if (child == 0) {
      const rlimit none{0, 0};
      setrlimit(RLIMIT_CORE, &none);
      const int nowhere = open("/dev/null", O_WRONLY);
      dup2(nowhere, STDERR_FILENO);
      QReports().logDirectory = dir.Path();
      QAppCore application("unit");
      if (procedure)
        application.AddCrashProc(procedure);
      if (QInstallCrashHandler(dir.Path(), "unit", true))
        fault();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    log = FileText(dir.Path("QLOG.txt"));
    std::remove(dir.Path("QLOG.txt").c_str());
    QReports().logDirectory = dir.Path();
    report = QReportLastCrash(dir.Path()).substr(0, 3000);
    QReports().logDirectory.clear();
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }
  TempDir dir;
  std::string log, report;
};

TEST_F(Crash, LeavesTheStackOfEachKindOfFault)
{
  const struct
  {
    void (*fault)();
    int signal;
    const char* function;
  } cases[] = {{[] { CrashTestWrite(nullptr); }, SIGSEGV, "CrashTestWrite()"},
#ifndef __SANITIZE_ADDRESS__ // which takes these for itself
               {[] {
                  volatile int zero = 0;
                  CrashTestDivide(&zero);
                },
                SIGFPE, "CrashTestDivide()"},
#endif
               {[] { std::abort(); }, SIGABRT, "crash_test.cpp"},
               {[] { raise(SIGILL); }, SIGILL, "crash_test.cpp"},
               {[] { QCrash("test"); }, SIGSEGV, "QCrash()"},
               {[] { CrashTestRecurse(0); }, SIGSEGV, "CrashTestRecurse()"}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.signal, Run(c.fault)) << c.function;
    char head[64];
    std::snprintf(head, sizeof head, " (FATAL): [unit] Exception 0x%8.8X, flags ", static_cast<unsigned>(c.signal));
    EXPECT_THAT(log, HasSubstr(head));
    EXPECT_THAT(log, HasSubstr("(this dialog text is stored in QLOG.txt)\n\n0x"));
    EXPECT_THAT(report, HasSubstr(c.function));
    EXPECT_EQ("", QReportLastCrash(dir.Path())); // once
  }
  EXPECT_THAT(report, testing::ContainsRegex("crash_test.cpp .line [1-9]"));
}

TEST_F(Crash, CallsTheProceduresFirstAndOutlivesTheirFaults)
{
  static std::string mark;
  mark = dir.Path("mark");
  const int signal = Run([] { CrashTestWrite(nullptr); },
                         [] {
                           static_cast<void>(open(mark.c_str(), O_CREAT | O_WRONLY, 0666));
                           std::abort();
                         });
  EXPECT_EQ(SIGABRT, signal); // of the second fault; the report is the first one's
  EXPECT_EQ(0, access(mark.c_str(), F_OK));
  EXPECT_THAT(report, HasSubstr("CrashTestWrite()"));
  EXPECT_THAT(log, HasSubstr("Exception 0x0000000B"));
}

TEST_F(Crash, ANoteThatLiesIsHarmless)
{
  dir.Write("QCRASH.tmp", "head\n0xFFFFFFFFFFFFFFFFFF\n0x1234\n0x\nmaps\nnot a map\n");
  const std::string text = QReportLastCrash(dir.Path());
  EXPECT_THAT(text, HasSubstr("head"));
  EXPECT_THAT(text, HasSubstr("000000001234"));
}

} // namespace
