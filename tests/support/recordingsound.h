#pragma once

#include "runtime/qsample.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

// What a sound system was told, and how it is to answer.
struct SoundRecord
{
  struct Channel
  {
    int sound = 0;
    uint32_t mode = 0;
    bool paused = true;
    bool ended = false;
    float volume = -1;
    float frequency = 0;
    DVector3 position{0.0f};
  };
  bool noDevice = false;
  bool accelerated = true;
  int failingInits = 0;
  uint32_t version = QSoundSystem::NEEDED_VERSION;
  std::set<std::string> badFiles; // by path
  bool playFails = false;

  std::vector<std::string> calls; // "Name arguments", of set-up, sounds and channels' beginnings
  std::map<int, std::string> sounds;
  std::map<int, Channel> channels;
  DVector3 listener{0.0f}, forward{0.0f}, up{0.0f};
  float doppler = 0, distanceFactor = 0, rolloff = -1;
  int updates = 0;

  int Calls(const std::string& call) const { return static_cast<int>(std::count(calls.begin(), calls.end(), call)); }
  // The channel of a file that was started last; null: never started.
  const Channel* LastOf(const std::string& path) const
  {
    const Channel* last = nullptr;
    for (const auto& [number, channel] : channels)
      if (const auto sound = sounds.find(channel.sound); sound != sounds.end() && sound->second == path)
        last = &channel;
    return last;
  }
};

class RecordingSound : public QSoundSystem
{
public:
  explicit RecordingSound(SoundRecord& target) : record(target) {}
  ~RecordingSound() override { Note("Close"); }
  uint32_t GetVersion() const override { return record.version; }
  int GetNumDrivers() const override { return 2; }
  std::string GetDriverName(int driver) const override { return driver ? "Headset" : "Speakers"; }
  bool IsAccelerated(int) const override { return record.accelerated; }
  void SetDriver(int driver) override { Note("SetDriver " + std::to_string(driver)); }
  void SetDSPBufferSize(int length, int count) override
  {
    Note("SetDSPBufferSize " + std::to_string(length) + " " + std::to_string(count));
  }
  void SetSoftwareFormat(int frequency) override { Note("SetSoftwareFormat " + std::to_string(frequency)); }
  void SetSpeakerMode(QSpeakerMode mode) override { Note("SetSpeakerMode " + std::to_string(static_cast<int>(mode))); }
  bool Init(int voices) override
  {
    Note("Init " + std::to_string(voices));
    return record.failingInits-- <= 0;
  }
  int CreateSound(const std::string& path, std::string& reason) override
  {
    Note("CreateSound " + path);
    reason = "no such sound";
    if (record.badFiles.count(path))
      return 0;
    record.sounds[++number] = path;
    return number;
  }
  void ReleaseSound(int sound) override { Note("ReleaseSound " + record.sounds[sound]); }
  int PlaySound(int sound, bool paused, int& error) override
  {
    Note(paused ? "PlaySound paused" : "PlaySound");
    error = 77;
    if (record.playFails)
      return 0;
    record.channels[++number] = {};
    record.channels[number].sound = sound;
    record.channels[number].paused = paused;
    return number;
  }
  void SetMode(int channel, uint32_t mode) override
  {
    Note("SetMode " + std::to_string(mode));
    record.channels[channel].mode = mode;
  }
  void SetPaused(int channel, bool paused) override
  {
    Note(paused ? "SetPaused" : "SetPaused not");
    record.channels[channel].paused = paused;
  }
  void SetVolume(int channel, float volume) override
  {
    if (record.channels[channel].paused)
      Note("SetVolume");
    record.channels[channel].volume = volume;
  }
  void SetFrequency(int channel, float frequency) override { record.channels[channel].frequency = frequency; }
  void Set3DAttributes(int channel, const DVector3& position, const DVector3&) override
  {
    record.channels[channel].position = position;
  }
  void Stop(int channel) override
  {
    Note("Stop");
    record.channels[channel].ended = true;
  }
  float GetFrequency(int) const override { return 22050; }
  void Set3DSettings(float doppler, float distanceFactor, float rolloff) override
  {
    record.doppler = doppler;
    record.distanceFactor = distanceFactor;
    record.rolloff = rolloff;
  }
  void Set3DListenerAttributes(const DVector3& position, const DVector3&, const DVector3& forward,
                               const DVector3& up) override
  {
    record.listener = position;
    record.forward = forward;
    record.up = up;
  }
  void Update() override { ++record.updates; }

private:
  void Note(const std::string& call) { record.calls.push_back(call); }

  SoundRecord& record;
  int number = 0;
};

// While it lives, a sound system is made of a record, in the place of the machine's.
class RecordedSound : public SoundRecord
{
public:
  RecordedSound()
  {
    QTheSoundHooks().createSystem = [this]() -> std::unique_ptr<QSoundSystem> {
      return noDevice ? nullptr : std::make_unique<RecordingSound>(*this);
    };
  }
  ~RecordedSound()
  {
    QSampleCloseSystem();
    QTheSoundHooks().createSystem = nullptr;
  }
  RecordedSound(const RecordedSound&) = delete;
  RecordedSound& operator=(const RecordedSound&) = delete;
};
