#include "track/rsurfacetype.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "track/rfindfile.h"
#include "track/rinfokeys.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr std::array<const char*, 10> TYPE_NAMES = {"road", "grass", "gravel", "stone", "water",
                                                    "kerb", "ice",   "snow",   "mud",   "sand"};

constexpr uint8_t KERB = 5;

using Octaves = std::array<float, RRoadNoise::MAX_OCTAVES>;

int UpToZero(const Octaves& values)
{
  return static_cast<int>(std::find(values.begin(), values.end(), 0.0f) - values.begin());
}

void LoadNoise(const QInfo& info, const std::string& key, RSurfaceType& surface)
{
  Octaves frequencies{}, amplitudes{}, thresholds{};
  info.GetFloats(key + ".road_noise_frequency", RRoadNoise::MAX_OCTAVES, frequencies.data());
  const int count = UpToZero(frequencies);
  if (count == 0)
    return;
  info.GetFloats(key + ".road_noise_amplitude", RRoadNoise::MAX_OCTAVES, amplitudes.data());
  info.GetFloats(key + ".road_noise_threshold", RRoadNoise::MAX_OCTAVES, thresholds.data());
  const int amplitudeCount = UpToZero(amplitudes);
  if (amplitudeCount != count)
    QWARN("Surfacetype %d road_noise_frequency and road_noise_amplitude don't have the same parameter count.",
          surface.index);
  surface.noise.octaveCount = count;
  for (size_t i = 0; i < frequencies.size(); ++i) {
    RRoadNoise::Octave& octave = surface.noise.octaves[i];
    if (static_cast<int>(i) < count)
      octave.frequency = frequencies[i];
    if (static_cast<int>(i) < amplitudeCount)
      octave.amplitude = amplitudes[i];
    octave.threshold = thresholds[i];
  }
}

} // namespace

bool RSurfaceType::Load(const QInfo& info, const std::string& key, bool useRoadNoise)
{
  name = key.substr(key.find('.') + 1);
  qstring typeName;
  info.GetString(key + ".type", typeName);
  qstring lower = typeName;
  lower.ToLower();
  const auto found = std::find(TYPE_NAMES.begin(), TYPE_NAMES.end(), lower.View());
  const bool known = found != TYPE_NAMES.end();
  if (known)
    type = static_cast<uint8_t>(found - TYPE_NAMES.begin());
  else
    QWARN("RTrack:LoadSurfaceTypes(); type '%s' not recognized", typeName.c_str());
  subtype = static_cast<uint8_t>(info.GetInt(key + ".subtype"));
  gripFactor = info.GetFloat(key + ".grip_factor", 1.0f);
  gripDeclineDriveline = info.GetFloat(key + ".grip_decline_driveline");
  rollingResistanceFactor = info.GetFloat(key + ".rolling_resistance_factor", 1.0f);
  viscosity = info.GetFloat(key + ".viscosity");
  roadNoise = useRoadNoise ? info.GetFloat(key + ".road_noise") : 0;
  LoadNoise(info, key, *this);
  steerNoise = info.GetFloat(key + ".steer_noise");
  dustColor = GetVector(info, key + ".dust_color", DVector3(1.0f));
  const bool skidSound = info.GetInt(key + ".skid_sound", 1) != 0;
  const bool skidMarks = info.GetInt(key + ".skidmark", 1) != 0;
  const bool forbidden = info.GetInt(key + ".forbidden") != 0;
  flags = static_cast<uint8_t>((skidSound ? 0 : NO_SKID_SOUND) | (skidMarks ? 0 : NO_SKID_MARKS) |
                               (forbidden ? FORBIDDEN : 0));
  info.GetString(key + ".pattern", pattern);
  return known;
}

void RSurfaceType::LoadSound(const QInfo& info, const std::string& key, const std::string& trackDir, RAudio& audio)
{
  std::string sample;
  info.GetString(key + ".audio.sample", sample);
  const std::string path = sample.empty() ? "" : RFindSample(sample, trackDir);
  if (path.empty())
    return;
  sound = audio.MakeProducer(path, "track_surface_" + name);
  sound->Start(true, 0);
}

float RSurfaceType::NoiseAt(float x, float z) const
{
  constexpr float TWO_PI = 6.2831855f;
  if (type == KERB)
    return (std::sin(std::fmod(z, TWO_PI)) + std::sin(std::fmod(x, TWO_PI))) * roadNoise;
  if (type == WATER || !(roadNoise > 0))
    return 0;
  return noise.Get(x, z) * roadNoise;
}

const char* RSurfaceType::SurfaceTypeName(int type)
{
  if (type >= 0 && type < static_cast<int>(TYPE_NAMES.size()))
    return TYPE_NAMES[static_cast<size_t>(type)];
  QWARN("RSurfaceType:SurfaceTypeName(%d) out of range", type);
  return "unknownsurf";
}
