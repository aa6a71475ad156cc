#pragma once

#include "foundation/qobject.h"

#include <cstdint>

// Where time comes from. A test hands in its own and never sleeps.
class QClock
{
public:
  virtual ~QClock() = default;
  // A counter that never runs backward, and its steps a second.
  virtual int64_t Ticks() const = 0;
  virtual int64_t Frequency() const = 0;
  virtual int64_t MilliSeconds() const = 0;
};
// The machine's monotonic clock, in nanoseconds.
const QClock& QSystemClock();

// A stopwatch. Reading it doesn't stop it.
class QTimer : public QObject
{
public:
  enum Flag : uint32_t
  {
    MILLISECONDS = 0x01
  }; // counts the coarse ticks instead of the fine ones
  // The clock must outlive the timer.
  explicit QTimer(uint32_t flags = 0, const QClock& clock = QSystemClock());
  const char* GetClassName() const override { return "QTimer"; }

  void Start(); // goes on where Stop left it
  void Stop();
  void Reset(); // to 0; a running timer stays running
  void Restart();
  bool IsRunning() const { return running; }
  int64_t GetTicks();
  int64_t GetMilliSeconds();
  int64_t GetMicroSeconds();
  double GetSeconds();

private:
  int64_t Now() const;
  int64_t Scaled(int64_t unitsPerSecond);

  const QClock& clock;
  uint32_t flags;
  int64_t frequency; // ticks a second
  bool running = false;
  int64_t base = 0; // of the clock, when the total was last brought up to date
  int64_t total = 0;
};
