#include "foundation/qarg.h"
#include "foundation/qassert.h"
#include "foundation/qdbgsetup.h"
#include "foundation/qinfo.h"
#include "foundation/qlog.h"
#include "foundation/qreport.h"
#include "foundation/qtrace.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <arpa/inet.h>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using testing::HasSubstr;
using testing::Not;

namespace {

class LogTest : public testing::Test
{
protected:
  LogTest() : before(QReports())
  {
    QReports().logDirectory = dir.Path();
    QReports().applicationName = "unit";
    testing::internal::CaptureStderr();
  }
  ~LogTest() override
  {
    testing::internal::GetCapturedStderr();
    QLogCloseLast();
    QLogCloseUdp();
    QDebugOptions() = 0;
    QReports() = before;
  }
  QInfo Settings(const char* dev) const { return QInfo(dir.Write("dev.ini", std::string("dev\n{\n") + dev + "\n}\n")); }
  std::string Last() const { return FileText(dir.Path("QLOG_LAST.txt")); }
  TempDir dir;

private:
  QReportSettings before;
};

TEST_F(LogTest, ProblemsAreCollectedAndMayEndTheRun)
{
  std::string title, text;
  EXPECT_FALSE(QProblemsEndRun(title, text));
  for (const char* dev : {"  log_last=1", "  strict=1"}) {
    dir.Write("QLOG_LAST.txt", "of an older run");
    QInfo settings = Settings(dev);
    qdbg_setup(settings);
    EXPECT_EQ("", Last());
    qlog("a.cpp", "F", 1, "a note before %s", dev);
    EXPECT_FALSE(QLogHasProblems());
    qwarn("a.cpp", "F", 2, "a warning with %s", dev);
    qlog(QLOG_PROBLEM | QLOG_NO_CONSOLE, "ctx", "an info that counts, %s", dev);
    EXPECT_THAT(Last(), HasSubstr(std::string(" (WARN): a warning with ") + dev + " [WARN,a.cpp:2,F]\n"));
    EXPECT_THAT(Last(), HasSubstr(std::string(" (INFO): an info that counts, ") + dev + " [ctx]\n"));
    EXPECT_THAT(Last(), Not(HasSubstr("a note")));
    ASSERT_TRUE(QProblemsEndRun(title, text));
    const bool strict = std::string_view(dev) == "  strict=1";
    EXPECT_EQ(strict ? "Strict mode" : "Errors", title);
    EXPECT_EQ(std::string("Errors and/or warnings occurred, program will exit and display problems.\n") +
                  (strict ? "This is due to strict mode; see dev.strict in torvik.ini."
                          : "See also dev.log_last in torvik.ini."),
              text);
  }
}

TEST_F(LogTest, AToolKeepsItsProblemsToItself)
{
  ASSERT_TRUE(QLogOpenLast());
  qwarn("a", "f", 1, "told twice");
  {
    const QLogRedirect redirect(dir.Path("own.txt"));
    ASSERT_TRUE(redirect.IsOpen());
    EXPECT_FALSE(QLogHasProblems());
    qlog("a", "f", 1, "only a note");
    EXPECT_FALSE(QLogHasProblems());
    qwarn("a", "f", 1, "told twice"); // news for this file
    EXPECT_TRUE(QLogHasProblems());
  }
  EXPECT_TRUE(QLogHasProblems());
  EXPECT_THAT(FileText(dir.Path("own.txt")), HasSubstr("told twice"));
  qerr("a", "f", 1, "after it");
  EXPECT_THAT(Last(), HasSubstr("after it"));
  EXPECT_THAT(FileText(dir.Path("own.txt")), Not(HasSubstr("after it")));
}

TEST_F(LogTest, GoesOutOverTheNetwork)
{
  const int receiver = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(0, bind(receiver, reinterpret_cast<sockaddr*>(&address), sizeof address));
  socklen_t size = sizeof address;
  ASSERT_EQ(0, getsockname(receiver, reinterpret_cast<sockaddr*>(&address), &size));
  QInfo settings = Settings(("  udp_out=127.0.0.1:" + std::to_string(ntohs(address.sin_port))).c_str());
  qdbg_setup(settings);
  const auto received = [&] {
    std::array<char, 4000> bytes;
    const ssize_t n = recv(receiver, bytes.data(), bytes.size(), MSG_DONTWAIT);
    return n < 0 ? std::string("nothing") : std::string(bytes.data(), static_cast<size_t>(n));
  };
  qlog(QLOG_ERR | QLOG_NO_CONSOLE, "place", "first");
  std::string message = received();
  if (message.find("application start") != std::string::npos)
    message = received();
  EXPECT_EQ("[place] ERR: first\n", message);
  qlog(QLOG_ERR | QLOG_NO_CONSOLE, "place", "first");
  EXPECT_EQ("ERR: first\n", received());
  qlog(QLOG_ERR | QLOG_NO_CONSOLE | QLOG_NO_UDP, "place", "second");
  EXPECT_EQ("nothing", received());
  qlog(QLOG_ERR | QLOG_NO_CONSOLE, "place", "%s", std::string(5000, 'x').c_str());
  EXPECT_EQ(1400u, received().size());
  close(receiver);
}

TEST_F(LogTest, AnAddressThatIsNoneIsReported)
{
  ReportCapture reports;
  for (const char* address : {"host", ":80", "host:", "host:x", "host:70000"}) {
    QInfo settings = Settings((std::string("  udp_out=") + address).c_str());
    qdbg_setup(settings);
    EXPECT_TRUE(reports.Contains(std::string("qdbg_setup: need host:port in dev_udpout (now '") + address + "')"));
  }
}

TEST_F(LogTest, TheLastRunIsFound)
{
  EXPECT_EQ(nullptr, QLogOpenLastRun());
  dir.Write("QLOG.txt", "x --- application start ---\nold\ny --- application start ---\nnew\n");
  std::FILE* f = QLogOpenLastRun();
  ASSERT_TRUE(f);
  std::array<char, 100> rest{};
  static_cast<void>(std::fread(rest.data(), 1, rest.size() - 1, f));
  std::fclose(f);
  EXPECT_STREQ("y --- application start ---\nnew\n", rest.data());
}

TEST_F(LogTest, ArgumentNotesStayBalanced)
{
  ReportCapture reports;
  qargPush("a.cpp", "F", 1, "not traced");
  QInfo settings = Settings("  argument_tracing=1");
  qdbg_setup(settings);
  qargPrint("empty", true);
  EXPECT_TRUE(reports.Contains("<empty stack> (is dev.argument_tracing set to 1?)"));
  for (int i = 0; i < 103; ++i)
    qargPush("a.cpp", "F", 1, "note %d of %s", i, std::string(300, 'y').c_str());
  EXPECT_EQ(1, reports.Count("qargPush overflow; verify your qargPush/qargPop calls"));
  EXPECT_TRUE(reports.Contains("qargPush overflow state"));
  for (int i = 0; i < 103; ++i)
    qargPop();
  EXPECT_FALSE(reports.Contains("underflow"));
  qargPop();
  qargPop();
  EXPECT_EQ(1, reports.Count("qargPop underflow; verify your qargPush/qargPop calls"));
  const auto push = [] { qargPush("a.cpp", "F", 1, "of a thread"); };
  std::thread second([&] {
    push();
    EXPECT_FALSE(reports.Contains("No space"));
    std::thread(push).join();
  });
  second.join();
  EXPECT_TRUE(reports.Contains("No space for qarg thread 2"));
}

TEST_F(LogTest, TracesCallsByDepth)
{
  ASSERT_TRUE(QTraceOpen(dir.Path("trace.txt").c_str(), 0x2, 3));
  {
    const QTraceCall outer("a.cpp", "Outer", "Run");
    const QTraceCall inner("a.cpp", "Inner", "Go");
    QTraceLine(0x2, 3, "seen\n");
    QTraceLine(0x1, 3, "of another class\n");
    QTraceLine(0x2, 4, "too fine\n");
  }
  QTraceClose();
  EXPECT_EQ("     1 a.cpp>Outer::Run\n"
            "     2   a.cpp>Inner::Go\n"
            "     3     seen\n"
            "     4   a.cpp<Inner::Go\n"
            "     5 a.cpp<Outer::Run\n",
            FileText(dir.Path("trace.txt")));
}

TEST_F(LogTest, AnAssertionShowsItsSourceAndEndsTheProgram)
{
  testing::internal::GetCapturedStderr();
  const auto ended = [](int status) { return WIFSIGNALED(status) || WEXITSTATUS(status) != 0; };
  EXPECT_EXIT(QASSERT(1 + 1 == 3), ended, "Going to crash, reason: qasserterr");
  EXPECT_EXIT(QAssertFailed("one", PAVEX_SOURCE_DIR "/tests/foundation/qlog_test.cpp", 1), ended, ">    1 #include ");
  testing::internal::CaptureStderr();
}

} // namespace
