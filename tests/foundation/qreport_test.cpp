#include "foundation/qreport.h"

#include "support/tempdir.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A log of the test's own; the settings are put back behind it.
class QReportLog : public testing::Test
{
protected:
  QReportLog() : before(QReports())
  {
    QReports().logDirectory = dir.Path();
    QReports().mask = 0x0F;
    QReports().applicationName = "unit";
    static int number = 0;
    qlog(QLOG_NOTE | QLOG_NO_CONSOLE, {}, "test %d", ++number); // no entry of another test is repeated
    std::remove(dir.Path("QLOG.txt").c_str());
    testing::internal::CaptureStderr();
  }
  ~QReportLog() override { QReports() = before; }

  std::string Console() { return testing::internal::GetCapturedStderr(); }
  // The lines of the log behind their time.
  std::vector<std::string> Log() const
  {
    std::vector<std::string> lines;
    std::istringstream log(FileText(dir.Path("QLOG.txt")));
    for (std::string line; std::getline(log, line);)
      lines.push_back(line.substr(line.find('(')));
    return lines;
  }
  TempDir dir;

private:
  QReportSettings before;
};

} // namespace

TEST_F(QReportLog, EachCallGoesWhereItBelongs)
{
  qdbg("a.cpp", "F", 1, "debug %d\n", 7);
  qlog("a.cpp", "F", 2, "note\n");
  qwarn("a.cpp", "F", 3, "warning without end");
  qerr("a.cpp", "F", 4, "error\n");
  qinfo("info\n");
  EXPECT_EQ("[DBG,a.cpp:1,F] debug 7\n"
            "[WARN,a.cpp:3,F] warning without end\n"
            "[ERR,a.cpp:4,F] error\n"
            "info\n",
            Console());
  EXPECT_THAT(Log(), testing::ElementsAre("(INFO ): [unit] note [a.cpp:2 / F]",
                                          "(WARN ): [unit] warning without end [WARN,a.cpp:3,F]",
                                          "(ERR  ): [unit] error [ERR,a.cpp:4,F]", "(INFO ): [unit] info"));
}

TEST_F(QReportLog, MaskAndQuietLeaveOut)
{
  const struct
  {
    unsigned mask;
    size_t lines;
  } cases[] = {{0, 0}, {0x01, 1}, {0x02, 1}, {0x04, 1}, {0x08, 1}, {0x0E, 3}};
  QReports().quiet = true;
  int n = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mask);
    std::remove(dir.Path("QLOG.txt").c_str());
    QReports().mask = c.mask;
    ++n;
    qinfo("info %d\n", n);
    qerr("a", "f", 1, "error %d", n);
    qwarn("a", "f", 1, "warning %d", n);
    qlog("a", "f", 1, "note %d", n);
    qdbg("a", "f", 1, "debug %d", n);
    EXPECT_EQ(c.lines, Log().size());
  }
  qlog(QLOG_NOTE, {}, "quiet note");
  qlog(QLOG_CRIT, {}, "loud note");
  const std::string console = Console();
  EXPECT_THAT(console, testing::HasSubstr("loud note"));
  EXPECT_THAT(console, testing::Not(testing::HasSubstr("quiet note")));
  EXPECT_THAT(console, testing::HasSubstr("error 1"));
  EXPECT_THAT(console, testing::HasSubstr("warning 1"));
  EXPECT_THAT(console, testing::Not(testing::HasSubstr("info")));
  EXPECT_THAT(console, testing::Not(testing::HasSubstr("debug")));
}

TEST_F(QReportLog, RepeatsAreFolded)
{
  for (int i = 0; i < 5; ++i)
    qwarn("a.cpp", "F", 3, i % 2 ? "same\n" : "same");
  qwarn("a.cpp", "F", 9, "other");
  Console();
  EXPECT_THAT(Log(), testing::ElementsAre("(WARN ): [unit] same [WARN,a.cpp:3,F]",
                                          "(WARN ): [unit] [4x repeat] same [WARN,a.cpp:3,F]",
                                          "(WARN ): [unit] other [WARN,a.cpp:9,F]"));
}

TEST_F(QReportLog, LongTextsAreCut)
{
  qwarn("a", "f", 1, "%s", std::string(20000, 'x').c_str());
  EXPECT_EQ(10239u, Log().at(0).size() - std::string("(WARN ): [unit]  [WARN,a:1,f]").size());
  EXPECT_TRUE(Console().ends_with("x\n"));
}

TEST_F(QReportLog, RotatesAboveTenMillionBytes)
{
  const std::string path = dir.Write("QLOG.txt", "old\n");
  ASSERT_EQ(0, truncate(path.c_str(), 10'000'000));
  qlog("a", "f", 1, "at the limit");
  EXPECT_FALSE(FileText(dir.Path("QLOG.txt")).empty());
  EXPECT_EQ("", FileText(dir.Path("QLOG_OLD.txt")));
  qlog("a", "f", 1, "above it");
  EXPECT_THAT(Log(), testing::ElementsAre("(INFO ): [unit] above it [a:1 / f]"));
  EXPECT_THAT(FileText(dir.Path("QLOG_OLD.txt")), testing::HasSubstr("at the limit"));
  Console();
}

TEST_F(QReportLog, ALogThatCannotBeOpenedIsToldOnTheConsole)
{
  QReports().logDirectory = dir.Path("none");
  QReports().applicationName.clear();
  qlog("a", "f", 1, "nowhere to go");
  EXPECT_EQ("** [-/" + std::to_string(getpid()) + "] Can't open log file (QLOG)\n", Console());
}

TEST_F(QReportLog, SeverityIsTheFirstThatIsSet)
{
  const struct
  {
    unsigned flags;
    const char* name;
  } cases[] = {{QLOG_ERR | QLOG_WARN, "ERR"},
               {QLOG_WARN | QLOG_FATAL, "WARN"},
               {QLOG_CRIT, "CRIT"},
               {QLOG_NOTE | QLOG_INFO, "NOTE"},
               {QLOG_FATAL, "FATAL"},
               {QLOG_PROBLEM, "INFO"},
               {0, "?"}};
  for (const auto& c : cases) {
    std::remove(dir.Path("QLOG.txt").c_str());
    qlog(c.flags | QLOG_NO_CONSOLE, "ctx", "flags %u", c.flags);
    char expected[100];
    std::snprintf(expected, sizeof expected, "(%-5s): [unit] flags %u [ctx]", c.name, c.flags);
    EXPECT_THAT(Log(), testing::ElementsAre(expected));
  }
  Console();
}

TEST_F(QReportLog, FatalShowsABoxAndEndsTheProgram)
{
  Console();
  QReports().messageBox = [](std::string_view title, std::string_view text) {
    std::fprintf(stderr, "<%.*s: %.*s>\n", int(title.size()), title.data(), int(text.size()), text.data());
  };
  // A sanitizer turns the fault into an exit of its own.
  const auto faulted = [](int status) {
    return WIFSIGNALED(status) ? WTERMSIG(status) == SIGSEGV : WEXITSTATUS(status);
  };
  EXPECT_EXIT(qfatal("no %s", "way"), faulted,
              "no way\n<Fatal error - the program will exit: no way>\nGoing to crash, reason: qfatal");
  EXPECT_EXIT(qexit("enough"), testing::ExitedWithCode(0), "<Fatal error - the program will exit: enough>");
  QReports().fatalExits = true;
  QReports().exitStatus = 1;
  EXPECT_EXIT(qfatal("tool"), testing::ExitedWithCode(1), "tool");
  testing::internal::CaptureStderr();
}

TEST(QReportPlace, FunctionAndFileNames)
{
  EXPECT_EQ("QInfo::Write", QFunctionName("bool QInfo::Write(const char*, bool)"));
  EXPECT_EQ("Helper", QFunctionName("int* {anonymous}::Helper(int)"));
  EXPECT_EQ("C::Run", QFunctionName("void (anonymous namespace)::C::Run()"));
  EXPECT_EQ("main", QFunctionName("main(int, char**)"));
  EXPECT_EQ("x.cpp", QFileNameOf("/src/a/x.cpp"));
}
