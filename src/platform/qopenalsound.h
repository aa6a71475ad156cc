#pragma once

#include "runtime/qsoundsystem.h"

#include <AL/al.h>
#include <AL/alc.h>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

// The sound system by OpenAL, whose axes are right-handed: z changes its sign on the way there. Sounds fade by the
// inverse of the distance, clamped at 1 metre. One at a time in a process.
class QOpenALSound : public QSoundSystem
{
public:
  // Null when the machine has no device that can be opened; nothing is reported.
  static std::unique_ptr<QOpenALSound> Open();
  // Plays into memory, by calls of Render; null when the library can't do so.
  static std::unique_ptr<QOpenALSound> OpenMemory();
  ~QOpenALSound() override;

  uint32_t GetVersion() const override;
  int GetNumDrivers() const override { return static_cast<int>(drivers.size()); }
  std::string GetDriverName(int driver) const override;
  // The library mixes by itself with a latency of its own choice and doesn't tell of hardware.
  bool IsAccelerated(int) const override { return true; }
  void SetDriver(int driver) override;
  void SetDSPBufferSize(int length, int count) override;
  void SetSoftwareFormat(int newFrequency) override { frequency = newFrequency; }
  // What loudspeakers there are is the desktop's to know.
  void SetSpeakerMode(QSpeakerMode) override {}
  bool Init(int newVoices) override; // a second try leaves buffers and frequency to the device
  int CreateSound(const std::string& path, std::string& reason) override;
  void ReleaseSound(int sound) override;
  int PlaySound(int sound, bool paused, int& error) override;
  void SetMode(int channel, uint32_t mode) override;
  void SetPaused(int channel, bool paused) override;
  void SetVolume(int channel, float volume) override;
  void SetFrequency(int channel, float newFrequency) override;
  void Set3DAttributes(int channel, const DVector3& position, const DVector3& velocity) override;
  void Stop(int channel) override;
  float GetFrequency(int sound) const override;
  void Set3DSettings(float doppler, float distanceFactor, float newRolloff) override;
  void Set3DListenerAttributes(const DVector3& position, const DVector3& velocity, const DVector3& forward,
                               const DVector3& up) override;
  void Update() override;

  // The next pairs of left and right, of a system in memory.
  void Render(std::span<float> stereo);
  int GetChannelCount() const { return static_cast<int>(channels.size()); } // that are playing or paused

private:
  struct Sound
  {
    ALuint buffer;
    int frequency;
    size_t size; // bytes
  };
  struct Channel
  {
    ALuint source;
    int sound;
    uint32_t mode;
    bool paused;
  };

  QOpenALSound(ALCdevice* openedDevice, bool isInMemory);
  std::vector<ALCint> Attributes(int newVoices) const;
  ALuint SourceOf(int channel) const; // 0: none, or ended
  void ApplyRolloff(const Channel& channel) const;
  void CheckDevice();

  ALCdevice* device;
  ALCcontext* context = nullptr;
  bool inMemory;
  bool lost = false;
  std::vector<std::string> drivers; // the first is empty: the default
  int frequency = 0;
  int bufferLength = 1024;
  bool hasFailed = false; // the first Init
  size_t voices = 0;
  float rolloff = 1;
  size_t usedMemory = 0;
  int lastNumber = 0;
  std::map<int, Sound> sounds;
  std::map<int, Channel> channels;
};
