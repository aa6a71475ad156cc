#pragma once

#include "geometry/dvector.h"

class QInfo;

struct RWind
{
  bool present = false; // false without a direction or any power
  DVector3 direction{1, 0, 0};
  float power = 2;
  float powerVariance = 0.2f;
  float powerChangeRate = 0.5f;
  float directionChangeRate = 10;
  int directionVariance = 10;
};

// The air over a track, and what falls from it.
class REnvironment
{
public:
  // The keys below "environment" and "env.wind" of a track's special.ini. Grip factors outside 0 to 1 are capped
  // (reported); a track without wind is reported.
  void LoadSettings(const QInfo& special);
  // 0 to 1, what is outside is clamped. There is rain or snow: one above 0 ends the other.
  void SetRain(float amount);
  void SetSnow(float amount);
  float GetRain() const { return rain; }
  float GetSnow() const { return snow; }

  float airDensity = 1.225f;   // kg/m3
  float gravity = 9.81f;       // m/s2
  float temperature = 20;      // degrees Celsius
  float rainGripFactor = 1.0f; // what a surface's grip is multiplied by
  float snowGripFactor = 1.0f;
  RWind wind;

private:
  void LoadWind(const QInfo& special);
  float rain = 0;
  float snow = 0;
};
