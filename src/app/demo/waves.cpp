#include "app/demo/trackfiles.h"

#include "foundation/qbytes.h"

#include <functional>

namespace {

constexpr uint32_t RATE = 22050;

// A repeatable second: the formula gets the time in seconds and gives -1 to 1.
std::string Wave(const std::function<double(double)>& formula)
{
  QByteWriter out;
  out.PutText("RIFF");
  out.PutU32(36 + RATE * 2);
  out.PutText("WAVEfmt ");
  out.PutU32(16);
  out.PutU16(1); // plain samples
  out.PutU16(1); // one channel
  out.PutU32(RATE);
  out.PutU32(RATE * 2);
  out.PutU16(2);
  out.PutU16(16);
  out.PutText("data");
  out.PutU32(RATE * 2);
  for (uint32_t i = 0; i < RATE; ++i)
    out.PutU16(static_cast<uint16_t>(
        static_cast<int16_t>(std::lround(std::clamp(formula(i / double(RATE)), -1.0, 1.0) * 32000))));
  const auto bytes = out.Bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Noise of about that pitch that ends as it begins.
double Hum(double t, int pitch, uint32_t salt)
{
  return DemoNoise(t * pitch, 0.5, salt, pitch) * 2 - 1;
}

} // namespace

std::string DemoCrowdWave()
{
  return Wave([](double t) {
    double sum = 0;
    for (uint32_t voice = 0; voice < 6; ++voice)
      sum += Hum(t, 500 + 170 * static_cast<int>(voice), voice) *
             (0.5 + 0.5 * Hum(t, 5 + static_cast<int>(voice), voice + 40));
    return sum * 0.16;
  });
}

std::string DemoWaterWave()
{
  return Wave([](double t) { return (Hum(t, 1900, 7) * 0.5 + Hum(t, 700, 8)) * (0.35 + 0.25 * Hum(t, 3, 9)) * 0.4; });
}
