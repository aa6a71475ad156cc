#pragma once

#include "geometry/dvector.h"

#include <cstdint>
#include <string>

enum class QSpeakerMode
{
  MONO,
  STEREO,
  QUAD,
  SURROUND_5_1,
  SURROUND_7_1
};

// What makes sound, as small as the program needs it. One form plays, one records for tests. Axes are left-handed: x to
// the right, y up, z ahead. Sounds and channels are numbers above 0, never used twice; what is said to a channel that
// has ended is ignored. Destroying the system silences it and gives the device back.
class QSoundSystem
{
public:
  static constexpr uint32_t NEEDED_VERSION = 0x00010001; // of the library below: major in the high half
  enum Mode : uint32_t
  {
    LOOP = 1,      // from the start again, without end
    POSITIONED = 2 // heard from its place; without this as it is
  };
  virtual ~QSoundSystem() = default;

  // Set-up. Drivers are numbered from 0, which is the default one. Init closes it, once it has given true.
  virtual uint32_t GetVersion() const = 0;
  virtual int GetNumDrivers() const = 0;
  virtual std::string GetDriverName(int driver) const = 0;
  virtual bool IsAccelerated(int driver) const = 0;
  virtual void SetDriver(int driver) = 0;
  virtual void SetDSPBufferSize(int length, int count) = 0; // samples in a buffer, buffers
  virtual void SetSoftwareFormat(int frequency) = 0;        // hertz; 0: the device's own
  virtual void SetSpeakerMode(QSpeakerMode mode) = 0;
  [[nodiscard]] virtual bool Init(int voices) = 0; // channels that can be heard at once

  // 0, with the reason, when the file holds no sound that can be played.
  [[nodiscard]] virtual int CreateSound(const std::string& path, std::string& reason) = 0;
  virtual void ReleaseSound(int sound) = 0; // and its channels
  // 0 on failure, with the library's number for it.
  [[nodiscard]] virtual int PlaySound(int sound, bool paused, int& error) = 0;
  virtual void SetMode(int channel, uint32_t mode) = 0;
  virtual void SetPaused(int channel, bool paused) = 0;
  virtual void SetVolume(int channel, float volume) = 0;       // 0 to 1
  virtual void SetFrequency(int channel, float frequency) = 0; // hertz
  virtual void Set3DAttributes(int channel, const DVector3& position, const DVector3& velocity) = 0;
  virtual void Stop(int channel) = 0;
  virtual float GetFrequency(int sound) const = 0; // hertz; 0: no such sound

  // A rolloff of 0 keeps the distance out of it; else a sound fades as 1 / (1 + rolloff * (distance - 1)).
  virtual void Set3DSettings(float doppler, float distanceFactor, float rolloff) = 0;
  virtual void Set3DListenerAttributes(const DVector3& position, const DVector3& velocity, const DVector3& forward,
                                       const DVector3& up) = 0;
  // Once a frame.
  virtual void Update() = 0;
};
