#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "track/rinfokeys.h"
#include "track/rsaveset.h"
#include "track/rtrack.h"

#include <algorithm>
#include <span>

namespace {

std::string Key(const char* base, int i)
{
  return base + std::to_string(i);
}

void SavePositions(QInfo& info, const std::string& section, std::span<const RCarPos> positions)
{
  info.SetInt(section + ".count", static_cast<int>(positions.size()));
  int i = 0;
  for (const RCarPos& p : positions) {
    const std::string key = section + ".pos" + std::to_string(i++);
    SetVectorKeys(info, key + ".from", p.from);
    SetVectorKeys(info, key + ".to", p.to);
  }
}

void SaveLine(QInfo& info, const std::string& key, const RTimeLine& line)
{
  SetVectorKeys(info, key + ".from", line.from);
  SetVectorKeys(info, key + ".to", line.to);
}

void SaveWayPoint(QInfo& info, const std::string& key, const RWayPoint& w)
{
  SetVector(info, key + ".pos", w.pos);
  SetVector(info, key + ".posdir", w.posDir);
  SetVector(info, key + ".left", w.left);
  SetVector(info, key + ".right", w.right);
  info.SetFloat(key + ".lon", w.lon);
}

std::span<const RCarPos> Used(const std::array<RCarPos, RTrack::MAX_POSITIONS>& positions, int count)
{
  return std::span(positions).first(static_cast<size_t>(std::clamp(count, 0, RTrack::MAX_POSITIONS)));
}

} // namespace

void RTrack::NoteUnreadable(const QInfo& info)
{
  if (info.IsUnreadable())
    unreadable.push_back(info.FileName());
}

bool RTrack::AddToSave(RSaveSet& set) const
{
  for (const std::string& path : unreadable)
    QWARN("QInfo:Write(); file (%s) can't be written; it couldn't be read when the track was loaded", path.c_str());
  if (!unreadable.empty())
    return false;
  trafficGrid.Save(set.Open(PathOf("traffic.ini")));
  SaveSpecial(set.Open(PathOf("special.ini")));
  splines.Save(set.Open(PathOf("spline.ini")));
  return true;
}

void RTrack::SaveSpecial(QInfo& info) const
{
  SetVectorKeys(info, "endless.min", endlessMin);
  SetVectorKeys(info, "endless.max", endlessMax);
  SavePositions(info, "grid", Used(gridPos, gridCount));
  SavePositions(info, "pit", Used(pitPos, pitCount));
  info.SetInt("pit.side", pitSide);
  SaveLines(info);
  SaveStanding(info);
  info.SetFloats("gfx.sky", &sky.x, 4);
  info.SetInt("gfx.night", flags & NIGHT ? 1 : 0);
  marshalPosts.Save(info, "marshal_posts");
}

void RTrack::SaveLines(QInfo& info) const
{
  info.SetInt("timeline.count", timeLines.Count());
  for (int i = 0; i < timeLines.Count(); ++i)
    SaveLine(info, Key("timeline.line", i), **timeLines.At(i));
  info.SetInt("timeline.point_to_point", flags & POINT_TO_POINT ? 1 : 0);
  info.SetInt("timeline.auto_return", flags & AUTO_RETURN ? 1 : 0);
  info.SetInt("triggerline.count", triggerLines.Count());
  for (int i = 0; i < triggerLines.Count(); ++i) {
    const std::string key = Key("triggerline.line", i);
    const RTriggerLine& line = **triggerLines.At(i);
    SaveLine(info, key, line);
    info.SetString(key + ".command", line.command);
  }
  for (int i = 0; i < PITLINES; ++i) {
    const std::string key = Key("pit.inout_line", i);
    const RTimeLine& line = pitInOutLines[static_cast<size_t>(i)];
    SetVector(info, key + ".from", line.from);
    SetVector(info, key + ".to", line.to);
  }
}

void RTrack::SaveStanding(QInfo& info) const
{
  info.SetInt("tcam.count", trackCams.Count());
  for (int i = 0; i < trackCams.Count(); ++i)
    (*trackCams.At(i))->Save(info, Key("tcam.cam", i));
  info.SetInt("waypoint.count", wayPoints.Count());
  for (int i = 0; i < wayPoints.Count(); ++i)
    SaveWayPoint(info, Key("waypoint.wp", i), **wayPoints.At(i));
  info.SetInt("audio.count", audio.Count());
  for (int i = 0; i < audio.Count(); ++i) {
    const std::string key = Key("audio.source", i);
    const RTrackAudio& source = **audio.At(i);
    SetVector(info, key + ".pos", source.pos);
    info.SetString(key + ".sample", source.sample);
    info.SetFloat(key + ".radius", source.radius);
  }
}

// What is read later sees what was written.
void RTrack::RereadSpecial()
{
  special = std::make_unique<QInfo>(PathOf("special.ini"));
}
