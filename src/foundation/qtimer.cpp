#include "foundation/qtimer.h"

#include <chrono>

namespace {

class SystemClock : public QClock
{
public:
  int64_t Ticks() const override
  {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  }
  int64_t Frequency() const override { return 1'000'000'000; }
  int64_t MilliSeconds() const override { return Ticks() / 1'000'000; }
};

} // namespace

const QClock& QSystemClock()
{
  static const SystemClock clock;
  return clock;
}

QTimer::QTimer(uint32_t timerFlags, const QClock& timeSource) :
    clock(timeSource), flags(timerFlags), frequency(timerFlags & MILLISECONDS ? 1000 : timeSource.Frequency())
{}

int64_t QTimer::Now() const
{
  return flags & MILLISECONDS ? clock.MilliSeconds() : clock.Ticks();
}

void QTimer::Start()
{
  if (running)
    return;
  base = Now();
  running = true;
}

void QTimer::Stop()
{
  GetTicks();
  running = false;
}

void QTimer::Reset()
{
  total = 0;
  base = Now();
}

void QTimer::Restart()
{
  Reset();
  Start();
}

int64_t QTimer::GetTicks()
{
  if (running) {
    const int64_t now = Now();
    total += now - base;
    base = now;
  }
  return total;
}

// In two parts, since ticks * 1,000,000 would leave 64 bits within hours.
int64_t QTimer::Scaled(int64_t unitsPerSecond)
{
  const int64_t ticks = GetTicks();
  return ticks / frequency * unitsPerSecond + ticks % frequency * unitsPerSecond / frequency;
}

int64_t QTimer::GetMilliSeconds()
{
  return Scaled(1000);
}

int64_t QTimer::GetMicroSeconds()
{
  return Scaled(1'000'000);
}

double QTimer::GetSeconds()
{
  return static_cast<double>(GetTicks()) / static_cast<double>(frequency);
}
