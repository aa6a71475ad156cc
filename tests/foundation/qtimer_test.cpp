#include "foundation/qtimer.h"

#include "foundation/qdate.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

class FakeClock : public QClock
{
public:
  int64_t ticks = 1000;
  int64_t frequency = 2'000'000; // half a microsecond a tick
  int64_t milliSeconds = 50;
  int64_t Ticks() const override { return ticks; }
  int64_t Frequency() const override { return frequency; }
  int64_t MilliSeconds() const override { return milliSeconds; }
};

} // namespace

TEST(QTimer, CountsWhileItRuns)
{
  FakeClock clock;
  QTimer timer(0, clock);
  clock.ticks += 500;
  EXPECT_EQ(0, timer.GetTicks()); // not started
  timer.Start();
  clock.ticks += 3'000'000;
  EXPECT_EQ(1'500'000, timer.GetMicroSeconds());
  EXPECT_TRUE(timer.IsRunning());
  timer.Start(); // runs already: nothing is lost
  clock.ticks += 1'000'000;
  EXPECT_EQ(2000, timer.GetMilliSeconds());
  EXPECT_EQ(2.0, timer.GetSeconds());
  timer.Stop();
  clock.ticks += 777;
  EXPECT_EQ(4'000'000, timer.GetTicks());
  timer.Start();
  clock.ticks += 10;
  EXPECT_EQ(4'000'010, timer.GetTicks());
  timer.Reset();
  clock.ticks += 20;
  EXPECT_EQ(20, timer.GetTicks()); // still running
  timer.Stop();
  timer.Restart();
  EXPECT_EQ(0, timer.GetTicks());
  EXPECT_TRUE(timer.IsRunning());
}

TEST(QTimer, MillisecondModeReadsTheCoarseClock)
{
  FakeClock clock;
  QTimer timer(QTimer::MILLISECONDS, clock);
  timer.Start();
  clock.ticks += 99999;
  clock.milliSeconds += 1500;
  EXPECT_EQ(1500, timer.GetMilliSeconds());
  EXPECT_EQ(1'500'000, timer.GetMicroSeconds());
  EXPECT_EQ(1.5, timer.GetSeconds());
}

TEST(QTimer, YearsDoNotOverflow)
{
  FakeClock clock;
  clock.frequency = 1'000'000'000;
  QTimer timer(0, clock);
  timer.Start();
  clock.ticks += int64_t{100} * 365 * 86400 * 1'000'000'000;
  EXPECT_EQ(int64_t{100} * 365 * 86400 * 1'000'000, timer.GetMicroSeconds());
}

TEST(QDate, FormatsAndReads)
{
  setenv("TZ", "UTC-2", 1); // two hours ahead of universal time
  tzset();
  QDate date(1'000'000'000); // 9 September 2001, 01:46:40 universal time
  EXPECT_STREQ("09-09-01/03:46:40", date.Format());
  EXPECT_STREQ("09-09-2001", date.FormatDate());
  EXPECT_STREQ("[09/Sep/2001:01:46:40 +0000]", date.FormatWebLog());
  EXPECT_STREQ("<QDate bad fmt>", date.Format(""));
  EXPECT_STREQ("<QDate bad fmt>", date.Format(std::string(300, 'x').c_str()));
  EXPECT_EQ(2001, date.GetYear());
  EXPECT_EQ(9, date.GetMonth());
  EXPECT_EQ(0, date.GetWeekDay()); // a Sunday
  EXPECT_EQ(1'000'000'000, date.GetTime());

  const struct
  {
    const char* text;
    const char* read; // null: refused
  } cases[] = {{"22-11-26", "22-11-2026/00:00:00"},
               {"1-2-1999/03:04:05", "01-02-1999/03:04:05"},
               {"22-11-26/10:20", nullptr},
               {"32-1-20", nullptr},
               {"22/11/26", nullptr},
               {"", nullptr},
               {nullptr, nullptr}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text ? c.text : "null");
    QDate read(1'000'000'000);
    EXPECT_EQ(c.read != nullptr, read.Read(c.text));
    EXPECT_STREQ(c.read ? c.read : "09-09-2001/03:46:40", read.Format("%d-%m-%Y/%H:%M:%S"));
  }
}
