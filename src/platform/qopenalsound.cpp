#include "platform/qopenalsound.h"

#include "foundation/qfile.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "platform/qsoundfile.h"

#include <AL/alext.h>
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <dlfcn.h>

namespace {

constexpr int MAX_FILE = 256 << 20;            // bytes
constexpr size_t MAX_MEMORY = size_t{1} << 29; // of all sounds together, bytes
constexpr int DEFAULT_FREQUENCY = 44100;       // hertz
constexpr float SPEED_OF_SOUND = 343.3f;       // metres a second

// A list of texts, each ended by 0, the whole by one more.
std::vector<std::string> Texts(const ALCchar* list)
{
  std::vector<std::string> texts;
  for (; list && *list; list += texts.back().size() + 1)
    texts.emplace_back(list);
  return texts;
}

// The library for sound cards tells of a missing one in many lines on stderr. While this lives it is still: one report
// of ours is enough.
class QuietCards
{
public:
  using Handler = void (*)(const char* file, int line, const char* function, int error, const char* format, ...);
  QuietCards() { Set(Ignore); }
  ~QuietCards() { Set(nullptr); }
  QuietCards(const QuietCards&) = delete;
  QuietCards& operator=(const QuietCards&) = delete;

private:
  static void Ignore(const char*, int, const char*, int, const char*, ...) {}
  static void Set(Handler handler)
  {
    using Setter = int (*)(Handler);
    if (const auto set = reinterpret_cast<Setter>(dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler")))
      set(handler);
  }
};

// Between the two kinds of axes; the library refuses what is no number.
void Convert(const DVector3& v, float* out)
{
  out[0] = v.x;
  out[1] = v.y;
  out[2] = -v.z;
}

} // namespace

QOpenALSound::QOpenALSound(ALCdevice* openedDevice, bool isInMemory) : device(openedDevice), inMemory(isInMemory)
{
  drivers.emplace_back();
  if (inMemory || !alcIsExtensionPresent(nullptr, "ALC_ENUMERATE_ALL_EXT"))
    return;
  for (std::string& name : Texts(alcGetString(nullptr, ALC_ALL_DEVICES_SPECIFIER)))
    drivers.push_back(std::move(name));
}

QOpenALSound::~QOpenALSound()
{
  while (!sounds.empty())
    ReleaseSound(sounds.begin()->first);
  alcMakeContextCurrent(nullptr);
  if (context)
    alcDestroyContext(context);
  if (device)
    alcCloseDevice(device);
}

std::unique_ptr<QOpenALSound> QOpenALSound::Open()
{
  const QuietCards quiet;
  ALCdevice* device = alcOpenDevice(nullptr);
  return device ? std::unique_ptr<QOpenALSound>(new QOpenALSound(device, false)) : nullptr;
}

std::unique_ptr<QOpenALSound> QOpenALSound::OpenMemory()
{
  const auto open =
      reinterpret_cast<LPALCLOOPBACKOPENDEVICESOFT>(alcGetProcAddress(nullptr, "alcLoopbackOpenDeviceSOFT"));
  ALCdevice* device = open ? open(nullptr) : nullptr;
  return device ? std::unique_ptr<QOpenALSound>(new QOpenALSound(device, true)) : nullptr;
}

uint32_t QOpenALSound::GetVersion() const
{
  ALCint major = 0, minor = 0;
  alcGetIntegerv(device, ALC_MAJOR_VERSION, 1, &major);
  alcGetIntegerv(device, ALC_MINOR_VERSION, 1, &minor);
  return static_cast<uint32_t>(major) << 16 | static_cast<uint32_t>(minor);
}

std::string QOpenALSound::GetDriverName(int driver) const
{
  if (driver > 0 && driver < GetNumDrivers())
    return drivers[static_cast<size_t>(driver)];
  const ALCchar* name = device ? alcGetString(device, ALC_DEVICE_SPECIFIER) : nullptr;
  return name ? name : "";
}

void QOpenALSound::SetDriver(int driver)
{
  if (driver <= 0 || driver >= GetNumDrivers())
    return; // the default one is open already
  if (ALCdevice* other = alcOpenDevice(drivers[static_cast<size_t>(driver)].c_str())) {
    alcCloseDevice(device);
    device = other;
  }
}

// The number of buffers is the library's own.
void QOpenALSound::SetDSPBufferSize(int length, int)
{
  bufferLength = length;
}

std::vector<ALCint> QOpenALSound::Attributes(int newVoices) const
{
  std::vector<ALCint> list = {ALC_MONO_SOURCES, newVoices};
  const auto add = [&list](ALCint key, ALCint value) { list.insert(list.end(), {key, value}); };
  const int rate = frequency > 0 ? frequency : DEFAULT_FREQUENCY;
  if (inMemory) {
    add(ALC_FREQUENCY, rate);
    add(ALC_FORMAT_CHANNELS_SOFT, ALC_STEREO_SOFT);
    add(ALC_FORMAT_TYPE_SOFT, ALC_FLOAT_SOFT);
  } else if (!hasFailed) {
    if (frequency > 0)
      add(ALC_FREQUENCY, frequency);
    add(ALC_REFRESH, rate / std::max(bufferLength, 1));
  }
  list.push_back(0);
  return list;
}

bool QOpenALSound::Init(int newVoices)
{
  const std::vector<ALCint> list = Attributes(newVoices);
  context = alcCreateContext(device, list.data());
  if (!context || !alcMakeContextCurrent(context)) {
    if (context)
      alcDestroyContext(context);
    context = nullptr;
    hasFailed = true;
    return false;
  }
  voices = static_cast<size_t>(std::max(newVoices, 1));
  alDistanceModel(AL_INVERSE_DISTANCE_CLAMPED);
  return alGetError() == AL_NO_ERROR;
}

int QOpenALSound::CreateSound(const std::string& path, std::string& reason)
{
  std::vector<std::byte> content;
  if (QFileSize(path) > MAX_FILE) {
    reason = "the file is too big";
    return 0;
  }
  if (!QReadFile(path, content, true)) {
    reason = std::strerror(errno);
    return 0;
  }
  QSoundData data;
  if (!QDecodeSound(content, data, reason))
    return 0;
  const size_t size = data.samples.size() * sizeof(int16_t);
  if (size > MAX_MEMORY - usedMemory) {
    reason = "the sounds together are too big";
    return 0;
  }
  if (data.cut)
    QWARN("'%s' was cut short; what is there will be played", path.c_str());
  ALuint buffer = 0;
  alGetError();
  alGenBuffers(1, &buffer);
  alBufferData(buffer, AL_FORMAT_MONO16, data.samples.data(), static_cast<ALsizei>(size), data.frequency);
  if (const ALenum error = alGetError(); error != AL_NO_ERROR) {
    alDeleteBuffers(1, &buffer);
    reason = alGetString(error);
    return 0;
  }
  usedMemory += size;
  sounds[++lastNumber] = {buffer, data.frequency, size};
  return lastNumber;
}

void QOpenALSound::ReleaseSound(int sound)
{
  const auto found = sounds.find(sound);
  if (found == sounds.end())
    return;
  for (auto it = channels.begin(); it != channels.end();) {
    const int channel = it->first;
    const bool uses = it->second.sound == sound;
    ++it;
    if (uses)
      Stop(channel);
  }
  alDeleteBuffers(1, &found->second.buffer);
  usedMemory -= found->second.size;
  sounds.erase(found);
}

int QOpenALSound::PlaySound(int sound, bool paused, int& error)
{
  const auto found = sounds.find(sound);
  error = AL_INVALID_NAME;
  if (found == sounds.end())
    return 0;
  Update(); // what has ended makes room
  error = AL_OUT_OF_MEMORY;
  if (channels.size() >= voices)
    return 0;
  ALuint source = 0;
  alGetError();
  alGenSources(1, &source);
  error = alGetError();
  if (error != AL_NO_ERROR)
    return 0;
  alSourcei(source, AL_BUFFER, static_cast<ALint>(found->second.buffer));
  channels[++lastNumber] = {source, sound, 0, paused};
  SetMode(lastNumber, 0);
  SetPaused(lastNumber, paused);
  return lastNumber;
}

ALuint QOpenALSound::SourceOf(int channel) const
{
  const auto found = channels.find(channel);
  return found == channels.end() ? 0 : found->second.source;
}

void QOpenALSound::ApplyRolloff(const Channel& channel) const
{
  alSourcef(channel.source, AL_ROLLOFF_FACTOR, channel.mode & POSITIONED ? rolloff : 0.0f);
}

void QOpenALSound::SetMode(int channel, uint32_t mode)
{
  const auto found = channels.find(channel);
  if (found == channels.end())
    return;
  Channel& c = found->second;
  c.mode = mode;
  alSourcei(c.source, AL_LOOPING, mode & LOOP ? AL_TRUE : AL_FALSE);
  alSourcei(c.source, AL_SOURCE_RELATIVE, mode & POSITIONED ? AL_FALSE : AL_TRUE);
  if (!(mode & POSITIONED))
    alSource3f(c.source, AL_POSITION, 0, 0, 0);
  ApplyRolloff(c);
}

void QOpenALSound::SetPaused(int channel, bool paused)
{
  const auto found = channels.find(channel);
  if (found == channels.end())
    return;
  found->second.paused = paused;
  if (paused)
    alSourcePause(found->second.source);
  else
    alSourcePlay(found->second.source);
}

void QOpenALSound::SetVolume(int channel, float volume)
{
  if (const ALuint source = SourceOf(channel))
    alSourcef(source, AL_GAIN, volume > 0 ? std::min(volume, 1.0f) : 0.0f);
}

void QOpenALSound::SetFrequency(int channel, float newFrequency)
{
  const auto found = channels.find(channel);
  if (found == channels.end())
    return;
  const float pitch = newFrequency / GetFrequency(found->second.sound);
  alSourcef(found->second.source, AL_PITCH, pitch > 0.01f ? std::min(pitch, 100.0f) : 0.01f);
}

void QOpenALSound::Set3DAttributes(int channel, const DVector3& position, const DVector3& velocity)
{
  const auto found = channels.find(channel);
  if (found == channels.end() || !(found->second.mode & POSITIONED))
    return;
  float v[3];
  Convert(position, v);
  alSourcefv(found->second.source, AL_POSITION, v);
  Convert(velocity, v);
  alSourcefv(found->second.source, AL_VELOCITY, v);
}

void QOpenALSound::Stop(int channel)
{
  const auto found = channels.find(channel);
  if (found == channels.end())
    return;
  alSourceStop(found->second.source);
  alDeleteSources(1, &found->second.source);
  channels.erase(found);
}

float QOpenALSound::GetFrequency(int sound) const
{
  const auto found = sounds.find(sound);
  return found == sounds.end() ? 0 : static_cast<float>(found->second.frequency);
}

void QOpenALSound::Set3DSettings(float doppler, float distanceFactor, float newRolloff)
{
  alDopplerFactor(doppler);
  alSpeedOfSound(SPEED_OF_SOUND * distanceFactor);
  const float kept = newRolloff > 0 && std::isfinite(newRolloff) ? newRolloff : 0.0f;
  if (kept == rolloff)
    return;
  rolloff = kept;
  for (const auto& [number, channel] : channels)
    ApplyRolloff(channel);
}

void QOpenALSound::Set3DListenerAttributes(const DVector3& position, const DVector3& velocity, const DVector3& forward,
                                           const DVector3& up)
{
  float v[6];
  Convert(position, v);
  alListenerfv(AL_POSITION, v);
  Convert(velocity, v);
  alListenerfv(AL_VELOCITY, v);
  Convert(forward, v);
  Convert(up, v + 3);
  alListenerfv(AL_ORIENTATION, v);
}

void QOpenALSound::Update()
{
  for (auto it = channels.begin(); it != channels.end();) {
    const auto& [number, channel] = *it++;
    ALint state = AL_PLAYING;
    alGetSourcei(channel.source, AL_SOURCE_STATE, &state);
    if (!channel.paused && state == AL_STOPPED)
      Stop(number);
  }
  CheckDevice();
}

// A headset that was pulled out, said once.
void QOpenALSound::CheckDevice()
{
  if (lost || inMemory)
    return;
  ALCint connected = ALC_TRUE;
  if (alcIsExtensionPresent(device, "ALC_EXT_disconnect"))
    alcGetIntegerv(device, ALC_CONNECTED, 1, &connected);
  if (connected)
    return;
  lost = true;
  QWARN("The sound device has gone; the editor goes on without it");
}

void QOpenALSound::Render(std::span<float> stereo)
{
  const auto render = reinterpret_cast<LPALCRENDERSAMPLESSOFT>(alcGetProcAddress(device, "alcRenderSamplesSOFT"));
  if (inMemory && context && render)
    render(device, stereo.data(), static_cast<ALCsizei>(stereo.size() / 2));
}
