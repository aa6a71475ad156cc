#pragma once

#include "foundation/qtimer.h"

#include <array>
#include <cstdint>

// Measures the frame rate: over all recent frames, or over the last ten intervals.
class DFPS
{
public:
  enum Method
  {
    COUNT_FRAMES = 0,
    AVERAGE_INTERVALS = 1
  };
  // An unknown method is reported and counts no frames. The clock must outlive this.
  explicit DFPS(int countMethod, const QClock& clock = QSystemClock());
  void FrameDone(); // once a frame
  float GetFPS();   // 0 when there is nothing to tell

private:
  static constexpr int MAX_FRAMES = 200;
  static constexpr int INTERVALS = 10;
  int method;
  const QClock& clock;
  int64_t start; // of the count, or of the running interval; -1: no frame yet
  int frames = 0;
  std::array<float, INTERVALS> intervals{}; // milliseconds
};
