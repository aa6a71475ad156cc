#include "track/rtrack.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "runtime/rcheckid.h"
#include "track/rfindfile.h"
#include "track/rlidar.h"
#include "track/rsaveset.h"

namespace {

constexpr const char* UNKNOWN_ID = "unknown_track";

} // namespace

RTrack::RTrack(const RTrackHost& newHost) : host(newHost)
{
  director.AddRail(&cameraList);
}

// What refers to others goes before them; the best laps write themselves when they were changed.
RTrack::~RTrack()
{
  paceNotes.reset();
  special.reset();
  trackCams.Clear();
  ListCameras(); // none
  wayPoints.Clear();
  audio.Clear();
  surfaces.Clear();
  timeLines.Clear();
  triggerLines.Clear();
  bestLapsInfo.reset();
  sun.reset();
}

void RTrack::SetName(const std::string& newName)
{
  trackName = newName;
  trackDir = "data/tracks/" + newName;
}

bool RTrack::Load()
{
  qinfo("Loading track '%s'", trackName.c_str());
  archive = std::make_unique<ROpenArchive>(RFindPath("track.ar", trackDir));
  if (!LoadIdentity())
    return false;
  bestLapsInfo = std::make_unique<QInfo>(PathOf("bestlaps.ini"), QInfo::NO_OPEN_WARNING);
  results.Load(*bestLapsInfo, "results");
  showBestLine = Setting("gfx.show_bestline", false);
  LoadTimeOfDay();
  return LoadSpecial();
}

void RTrack::ApplySurfaceTypeToMaterials(const RSurfaceType&, const std::string& pattern)
{
  QLOG("No surfaces found that match pattern '%s'\n", pattern.c_str());
}

bool RTrack::LoadIdentity()
{
  const std::string path = RFindPath("track.ini", trackDir);
  if (!QFileExists(path)) {
    QERR("Can't find track.ini for track %s", trackName.c_str());
    return false;
  }
  const QInfo info(path);
  info.GetString("track.type", type, "vrml");
  info.GetString("track.name", name);
  info.GetString("track.creator", creator);
  info.GetString("track.length", length);
  info.GetString("track.file", file);
  info.GetString("track.id", id, UNKNOWN_ID);
  preview = info.GetInt("track.preview");
  racingClass = info.GetInt("track.racing_class");
  skin = info.GetInt("track.skin");
  if (!RCheckID(id)) {
    QWARN("RTrack: id '%s' is invalid", id.c_str());
    id = UNKNOWN_ID;
  }
  info.GetString("track.version", version, "049f");
  AfterRead(info);
  return true;
}

// The curves' format is the renderer's own business.
void RTrack::LoadTimeOfDay()
{
  static constexpr const char* names[] = {"exposure",      "exposure_factor", "rayleigh",      "mie",
                                          "sun_diffuse_r", "sun_diffuse_g",   "sun_diffuse_b", "sun_ambient_r",
                                          "sun_ambient_g", "sun_ambient_b",   "sun_intensity", "extinction_factor",
                                          "night"};
  timeOfDayCurves.clear();
  for (const char* curve : names) {
    const std::string path = RFindPath(std::string(curve) + ".crv", PathOf("tod"), "data/renderer/tod");
    timeOfDayCurves.push_back({path, QFileExists(path)});
  }
}

bool RTrack::Save()
{
  RSaveSet set;
  if (!AddToSave(set) || !set.Commit())
    return false;
  RereadSpecial();
  return true;
}

void RTrack::GetSurfaceInfo(const DVector3& position, const DVector3&, RSurfaceInfo& result)
{
  result.position = {position.x, 0, position.z};
}

RTimeLine* RTrack::GetTimeLine(int i) const
{
  const auto* line = timeLines.At(i);
  if (!line) {
    QWARN("RTrack:GetTimeLine(%d) out of bounds", i);
    return nullptr;
  }
  return line->get();
}

int RTrack::GetLastTimeLine() const
{
  return flags & POINT_TO_POINT ? timeLines.Count() - 1 : 0;
}

bool RTrack::AddTrackCam(std::unique_ptr<RTrackCam> cam)
{
  if (const auto* added = trackCams.Add(std::move(cam))) {
    cameraList.AddCamera(&(*added)->camera);
    return true;
  }
  QERR("RTrack:AddTrackCam(); max (%d) exceeded", MAX_TRACKCAMS);
  return false;
}

void RTrack::ListCameras()
{
  cameraList = DRail();
  for (const auto& cam : trackCams)
    cameraList.AddCamera(&cam->camera);
  director.SetRail(0, 0);
}

bool RTrack::AddWayPoint(std::unique_ptr<RWayPoint> wayPoint)
{
  if (wayPoints.Add(std::move(wayPoint)))
    return true;
  QWARN("RTrack:AddWayPoint(); max (%d) exceeded", MAX_WAYPOINTS);
  return false;
}

bool RTrack::AddTrackAudio(std::unique_ptr<RTrackAudio> source)
{
  if (audio.Add(std::move(source)))
    return true;
  QWARN("RTrack:AddTrackAudio(); max (%d) exceeded", MAX_AUDIO);
  return false;
}

std::unique_ptr<RTrackAudio> RTrack::MakeTrackAudio(const std::string& sample) const
{
  auto source = std::make_unique<RTrackAudio>();
  source->SetSample(sample, trackDir, host.audio);
  return source;
}

void RTrack::UpdateAudio(const DVector3& listener)
{
  for (const auto& source : audio)
    source->Hear(listener);
}

void RTrack::LoadPaceNotes()
{
  paceNotes = std::make_unique<RPaceNotes>();
  paceNotes->Load(PathOf("pacenotes.ini"));
}

bool RTrack::SavePaceNotes() const
{
  return !paceNotes || paceNotes->Save(PathOf("pacenotes.ini"));
}

bool RTrack::SaveBestLaps()
{
  if (!results.dirty || !bestLapsInfo)
    return true;
  results.Save(*bestLapsInfo, "results");
  if (!bestLapsInfo->Write())
    return false;
  results.dirty = false;
  return true;
}

bool RTrack::Setting(std::string_view path, bool otherwise) const
{
  return host.settings ? host.settings->GetBool(path, otherwise) : otherwise;
}

float RTrack::Setting(std::string_view path, float otherwise) const
{
  return host.settings ? host.settings->GetFloat(path, otherwise) : otherwise;
}

std::string RTrack::Setting(std::string_view path, const char* otherwise) const
{
  std::string value = otherwise;
  if (host.settings)
    host.settings->GetString(path, value, otherwise);
  return value;
}
