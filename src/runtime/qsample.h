#pragma once

#include "runtime/qsoundsystem.h"

#include <functional>
#include <memory>
#include <string>

class QInfo;

// What the program around hands down: how a sound system is made. Null from the call: the machine has no device.
struct QSoundHooks
{
  std::function<std::unique_ptr<QSoundSystem>()> createSystem; // none: the program has no sound, which is no fault
};
QSoundHooks& QTheSoundHooks();

// Makes the system of this process from the settings below the prefix, such as "audio". Without a device, or when it
// can't be started, that is reported once and there is no system; one that exists already stays.
void QSampleCreateSystem(const QInfo& info, const std::string& prefix);
void QSampleCloseSystem();
// Null: nothing is heard, and all that follows works all the same.
QSoundSystem* QSampleSystem();

// A sound in memory. Freed before or after the system, in any order.
class QSample
{
public:
  QSample() = default;
  ~QSample();
  QSample(const QSample&) = delete;
  QSample& operator=(const QSample&) = delete;

  // False, with a report, when the file can't be played. Without a system true, and the file isn't looked at.
  bool Load(const std::string& path);
  bool IsLoaded() const { return sound != 0; }
  const std::string& GetPath() const { return path; }
  float GetFrequency() const; // hertz; 0 while not loaded
  // The channel that it is heard on; 0 when nothing is loaded, or (reported) when it can't be played.
  int Play(uint32_t mode, float volume, const DVector3& position);

private:
  int sound = 0;
  std::string path;
};
