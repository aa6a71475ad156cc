#include "track/renvironment.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <string>

namespace {

float ClampUnit(float value)
{
  return value > 0 ? (value < 1 ? value : 1) : 0; // no number is 0
}

float GripFactor(const QInfo& info, const char* key)
{
  const float factor = info.GetFloat(key, 1.0f);
  const float capped = ClampUnit(factor);
  if (factor > capped)
    QWARN("%s (%.2f) is too high (maximum=1); capped", key, static_cast<double>(factor));
  else if (factor != capped)
    QWARN("%s (%.2f) is too low (minimum=0); capped", key, static_cast<double>(factor));
  return capped;
}

} // namespace

void REnvironment::LoadSettings(const QInfo& special)
{
  airDensity = special.GetFloat("environment.air_density", airDensity);
  gravity = special.GetFloat("environment.gravity", gravity);
  temperature = special.GetFloat("environment.temperature", temperature);
  rainGripFactor = GripFactor(special, "environment.rain.grip_factor");
  snowGripFactor = GripFactor(special, "environment.snow.grip_factor");
  LoadWind(special);
}

void REnvironment::LoadWind(const QInfo& special)
{
  constexpr float ALONG_X[] = {1, 0, 0};
  special.GetFloats("env.wind.direction", 3, &wind.direction.x, ALONG_X);
  wind.direction = DNormalized(wind.direction, DVector3(0.0f));
  wind.power = special.GetFloat("env.wind.power", 2.0f);
  wind.powerVariance = special.GetFloat("env.wind.power_variance", 0.2f);
  wind.present = wind.direction != DVector3(0.0f) && (wind.power != 0 || wind.powerVariance != 0);
  if (!wind.present)
    QWARN("REnv: no wind available in this track. Particles will not have windinfluence.");
  wind.powerChangeRate = special.GetFloat("env.wind.power_changerate", 0.5f);
  wind.directionChangeRate = special.GetFloat("env.wind.direction_changerate", 10.0f);
  wind.directionVariance = special.GetInt("env.wind.direction_variance", 10);
}

void REnvironment::SetRain(float amount)
{
  rain = ClampUnit(amount);
  if (rain > 0)
    snow = 0;
}

void REnvironment::SetSnow(float amount)
{
  snow = ClampUnit(amount);
  if (snow > 0)
    rain = 0;
}
