#include "runtime/qsample.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

std::unique_ptr<QSoundSystem> theSystem;

struct Settings
{
  bool enable;
  std::string type;
  int driver, voices, frequency, bufferSize, buffers;
  std::string speakerMode;
};

Settings ReadSettings(const QInfo& info, const std::string& prefix)
{
  Settings s;
  s.enable = info.GetBool(prefix + ".enable", true);
  info.GetString(prefix + ".type", s.type);
  s.driver = info.GetInt(prefix + ".driver");
  s.voices = std::clamp(info.GetInt(prefix + ".voices", 128), 1, 1024);
  s.frequency = info.GetInt(prefix + ".frequency");
  if (s.frequency != 0)
    s.frequency = std::clamp(s.frequency, 8000, 192000);
  s.bufferSize = std::clamp(info.GetInt(prefix + ".buffersize", 1024), 64, 8192);
  s.buffers = std::clamp(info.GetInt(prefix + ".buffers", 4), 2, 16);
  info.GetString(prefix + ".speakermode", s.speakerMode, "stereo");
  return s;
}

// False: no sound is wanted.
bool CheckType(const std::string& type)
{
  constexpr std::array<std::string_view, 5> DEVICES = {"", "dsound", "winmm", "asio", "wasapi"};
  if (type == "nosound")
    return false;
  if (type == "wav")
    qfatal("FMOD outputtype WAVWRITER is NYI due to setSoftwareFormat() problem");
  if (std::find(DEVICES.begin(), DEVICES.end(), type) == DEVICES.end())
    QLOG("Audio output '%s' not recognized", type.c_str());
  return true;
}

QSpeakerMode SpeakerMode(const std::string& word)
{
  constexpr std::pair<std::string_view, QSpeakerMode> MODES[] = {{"mono", QSpeakerMode::MONO},
                                                                 {"stereo", QSpeakerMode::STEREO},
                                                                 {"quad", QSpeakerMode::QUAD},
                                                                 {"5.1", QSpeakerMode::SURROUND_5_1},
                                                                 {"7.1", QSpeakerMode::SURROUND_7_1}};
  for (const auto& [name, mode] : MODES)
    if (name == word)
      return mode;
  QWARN("Speaker mode '%s' not recognized; using stereo", word.c_str());
  return QSpeakerMode::STEREO;
}

void ChooseDriver(QSoundSystem& system, Settings& s)
{
  const int count = system.GetNumDrivers();
  QLOG("FMOD: %d drivers found\n", count);
  for (int i = 0; i < count; ++i)
    QLOG("Driver %d: '%s'\n", i, system.GetDriverName(i).c_str());
  if (s.driver < 0 || s.driver >= count)
    s.driver = 0;
  if (system.IsAccelerated(s.driver))
    return;
  QLOG("FMOD: audio hardware acceleration is OFF. This is really bad for latency; adjusting audio buffers.");
  s.bufferSize = 1024;
  s.buffers = 10;
}

// Once more in stereo when what was asked for is too much for the device.
bool InitSystem(QSoundSystem& system, int voices)
{
  if (system.Init(voices))
    return true;
  QLOG("FMOD init() error; failed to create output buffer - trying stereo");
  system.SetSpeakerMode(QSpeakerMode::STEREO);
  return system.Init(voices);
}

} // namespace

QSoundHooks& QTheSoundHooks()
{
  static QSoundHooks hooks;
  return hooks;
}

QSoundSystem* QSampleSystem()
{
  return theSystem.get();
}

void QSampleCloseSystem()
{
  theSystem.reset();
}

void QSampleCreateSystem(const QInfo& info, const std::string& prefix)
{
  if (theSystem || !QTheSoundHooks().createSystem)
    return;
  Settings s = ReadSettings(info, prefix);
  if (!s.enable || !CheckType(s.type))
    return;
  // A machine without sound is no reason to refuse the work on a track, so neither failure ends the program.
  std::unique_ptr<QSoundSystem> system = QTheSoundHooks().createSystem();
  if (!system) {
    QERR("Can't create FMOD system");
    return;
  }
  if (system->GetVersion() < QSoundSystem::NEEDED_VERSION)
    qfatal("The sound library is of version %08x; %08x is needed", system->GetVersion(), QSoundSystem::NEEDED_VERSION);
  ChooseDriver(*system, s);
  system->SetDriver(s.driver);
  system->SetDSPBufferSize(s.bufferSize, s.buffers);
  system->SetSoftwareFormat(s.frequency);
  system->SetSpeakerMode(SpeakerMode(s.speakerMode));
  if (InitSystem(*system, s.voices))
    theSystem = std::move(system);
  else
    QERR("Can't init FMOD (audio system)");
}

QSample::~QSample()
{
  if (theSystem && sound)
    theSystem->ReleaseSound(sound);
}

bool QSample::Load(const std::string& file)
{
  if (theSystem && sound)
    theSystem->ReleaseSound(sound);
  sound = 0;
  path = file;
  if (!theSystem)
    return true;
  std::string reason;
  sound = theSystem->CreateSound(path, reason);
  if (!sound)
    QWARN("QSample:Load(); can't load '%s': %s", path.c_str(), reason.c_str());
  return sound != 0;
}

float QSample::GetFrequency() const
{
  return theSystem && sound ? theSystem->GetFrequency(sound) : 0;
}

int QSample::Play(uint32_t mode, float volume, const DVector3& position)
{
  if (!theSystem || !sound)
    return 0;
  int error = 0;
  const int channel = theSystem->PlaySound(sound, true, error);
  if (!channel) {
    QWARN("QSample:Play(%s); can't play sound [fmod_err %d]", path.c_str(), error);
    return 0;
  }
  theSystem->SetMode(channel, mode);
  theSystem->SetVolume(channel, volume);
  theSystem->Set3DAttributes(channel, position, DVector3(0.0f));
  theSystem->SetPaused(channel, false);
  return channel;
}
