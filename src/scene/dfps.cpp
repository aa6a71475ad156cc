#include "scene/dfps.h"

#include "foundation/qreport.h"

#include <algorithm>

DFPS::DFPS(int countMethod, const QClock& ticking) : method(countMethod), clock(ticking), start(ticking.Ticks())
{
  if (method != COUNT_FRAMES && method != AVERAGE_INTERVALS)
    QERR("DFPS: unknown method (%d)", method);
  if (method == AVERAGE_INTERVALS)
    start = -1;
}

void DFPS::FrameDone()
{
  const int64_t now = clock.Ticks();
  if (method == COUNT_FRAMES) {
    if (++frames > MAX_FRAMES) { // so that the figure follows the recent past
      frames /= 2;
      start = now - (now - start) / 2;
    }
  } else if (method == AVERAGE_INTERVALS) {
    if (start >= 0) {
      const auto milliseconds = static_cast<double>(now - start) * 1000.0 / static_cast<double>(clock.Frequency());
      intervals[static_cast<size_t>(frames++ % INTERVALS)] = static_cast<float>(milliseconds);
      if (frames >= 2 * INTERVALS)
        frames -= INTERVALS;
    }
    start = now;
  }
}

float DFPS::GetFPS()
{
  if (method == COUNT_FRAMES) {
    const auto seconds = static_cast<double>(clock.Ticks() - start) / static_cast<double>(clock.Frequency());
    return seconds > 0 ? static_cast<float>(frames / seconds) : 0.0f;
  }
  const int count = std::min(frames, INTERVALS);
  float sum = 0;
  for (int i = 0; i < count; ++i)
    sum += intervals[static_cast<size_t>(i)];
  return sum > 0 ? 1000.0f * static_cast<float>(count) / sum : 0.0f;
}
