#include "track/rsurfacetype.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "track/rinfokeys.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<const char*, 10> TYPE_NAMES = {"road", "grass", "gravel", "stone", "water",
                                                    "kerb", "ice",   "snow",   "mud",   "sand"};

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
  steerNoise = info.GetFloat(key + ".steer_noise");
  dustColor = GetVector(info, key + ".dust_color", DVector3(1.0f));
  const bool skidSound = info.GetInt(key + ".skid_sound", 1) != 0;
  const bool skidMarks = info.GetInt(key + ".skidmark", 1) != 0;
  const bool forbidden = info.GetInt(key + ".forbidden") != 0;
  flags = static_cast<uint8_t>((skidSound ? 0 : NO_SKID_SOUND) | (skidMarks ? 0 : NO_SKID_MARKS) |
                               (forbidden ? FORBIDDEN : 0));
  return known;
}

const char* RSurfaceType::SurfaceTypeName(int type)
{
  if (type >= 0 && type < static_cast<int>(TYPE_NAMES.size()))
    return TYPE_NAMES[static_cast<size_t>(type)];
  QWARN("RSurfaceType:SurfaceTypeName(%d) out of range", type);
  return "unknownsurf";
}
