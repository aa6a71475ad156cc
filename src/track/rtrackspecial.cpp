#include "foundation/qfilename.h"
#include "foundation/qimage.h"
#include "foundation/qinfo.h"
#include "foundation/qinfoiterator.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture3d.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "track/rfindfile.h"
#include "track/rinfokeys.h"
#include "track/rlidar.h"
#include "track/rtrack.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

std::string Key(const char* base, int i)
{
  return base + std::to_string(i);
}

void LoadCarPositions(const QInfo& info, const std::string& section, int count, RCarPos* positions)
{
  for (int i = 0; i < count; ++i) {
    const std::string key = section + ".pos" + std::to_string(i);
    positions[i].from = GetVectorKeys(info, key + ".from");
    positions[i].to = GetVectorKeys(info, key + ".to");
  }
}

void LoadLine(const QInfo& info, const std::string& key, RTimeLine& line)
{
  const DVector3 from = GetVectorKeys(info, key + ".from");
  const DVector3 to = GetVectorKeys(info, key + ".to");
  info.GetString(key + ".name", line.name);
  line.SetPoints(from, to);
}

// A count of a table that says when it is full, which a count of just the table's size is taken for too.
int CountOrFull(const QInfo& info, const char* key, int max, const char* what)
{
  const int count = info.GetInt(key);
  if (count < max)
    return count;
  QWARN("Track contains too many %s (max=%d, count=%d)", what, max, count);
  return max;
}

} // namespace

// Never fails: what is missing takes its default.
bool RTrack::LoadSpecial()
{
  special = std::make_unique<QInfo>(PathOf("special.ini"));
  NoteUnreadable(*special);
  LoadBoxes();
  LoadPaceNotes();
  LoadLidar();
  trafficGrid.Load(PathOf("traffic.ini"), host.afterRead);
  if (trafficGrid.unreadable)
    unreadable.push_back(PathOf("traffic.ini"));
  LoadPositions();
  LoadLines();
  LoadSplines();
  LoadTrackCams();
  LoadWayPoints();
  LoadAudio();
  LoadSky();
  LoadColorGrade();
  LoadWeather();
  LoadMaps();
  LoadFog();
  LoadSun();
  LoadRest();
  return true;
}

void RTrack::LoadBoxes()
{
  constexpr uint32_t OFFTRACK_Z = 0xBF9435BD; // about -1.1579
  constexpr float NO_SIZE = 0.00001f;
  const QInfo& info = *special;
  const std::string box = "distance.offtrack0.";
  offTrackMin = {info.GetFloat(box + "min_x"), info.GetFloat(box + "min_y"), info.GetFloat(box + "min_z")};
  offTrackMax = {info.GetFloat(box + "max_x"), info.GetFloat(box + "max_y"), info.GetFloat(box + "max_z")};
  offTrackVector = {0, 0, std::bit_cast<float>(OFFTRACK_Z)};
  endlessMin = GetVectorKeys(info, "endless.min");
  endlessMax = GetVectorKeys(info, "endless.max");
  endlessSize = endlessMax - endlessMin;
  if (!(std::abs(endlessSize.x) > NO_SIZE)) {
    skidMarks.path = PathOf("skids.bin");
    skidMarks.present = QFileExists(skidMarks.path);
  }
}

void RTrack::LoadLidar()
{
  lidarFile.path = PathOf("track.rld");
  lidarFile.present = QFileExists(lidarFile.path);
  lidarTranslate = GetVector(*special, "lidar.translate");
  lidar = std::make_unique<RLidar>(trackDir);
  if (!lidarFile.present)
    return;
  if (!lidar->LoadRLD(lidarFile.path, RLidar::SWAP_AXES)) {
    QWARN("Can't load LIDAR data (%s)", lidarFile.path.c_str());
    return;
  }
  lidar->DbgPrint("track lidar");
  if (lidarTranslate != DVector3(0.0f))
    lidar->Translate(lidarTranslate);
  lidar->BuildTree();
}

void RTrack::LoadPositions()
{
  const QInfo& info = *special;
  qstring names;
  info.GetString("gfx.lights", names);
  SplitLights(names.Str());
  SetFlag(NIGHT, info.GetBool("gfx.night", false));
  SetFlag(WATER_TRACK, info.GetBool("surfaces.water_track", false));
  gridCount = std::min(GetCount(info, "grid.count"), MAX_POSITIONS);
  LoadCarPositions(info, "grid", gridCount, gridPos.data());
  pitCount = std::min(GetCount(info, "pit.count"), MAX_POSITIONS);
  LoadCarPositions(info, "pit", pitCount, pitPos.data());
  pitSide = info.GetInt("pit.side", 1);
}

void RTrack::SplitLights(std::string_view names)
{
  constexpr std::string_view BLANKS = " \t\n";
  for (std::string& light : lights) {
    names.remove_prefix(std::min(names.find_first_not_of(BLANKS), names.size()));
    const size_t end = std::min(names.find_first_of(BLANKS), names.size());
    light = names.substr(0, end);
    names.remove_prefix(end);
  }
}

void RTrack::SetFlag(Flag flag, bool on)
{
  flags = on ? flags | flag : flags & ~uint32_t(flag);
}

void RTrack::LoadLines()
{
  const QInfo& info = *special;
  timeLines.Clear();
  triggerLines.Clear();
  const int timeLineCount = std::min(info.GetInt("timeline.count"), MAX_TIMELINES);
  for (int i = 0; i < timeLineCount; ++i) {
    auto line = std::make_unique<RTimeLine>();
    LoadLine(info, Key("timeline.line", i), *line);
    static_cast<void>(timeLines.Add(std::move(line)));
  }
  int triggerLineCount = info.GetInt("triggerline.count");
  if (triggerLineCount > MAX_TRIGGERLINES) {
    QWARN("triggerline.count=%d, but only %d can be defined; clamping", triggerLineCount, MAX_TRIGGERLINES);
    triggerLineCount = MAX_TRIGGERLINES;
  }
  for (int i = 0; i < triggerLineCount; ++i) {
    auto line = std::make_unique<RTriggerLine>();
    const std::string key = Key("triggerline.line", i);
    line->index = i;
    LoadLine(info, key, *line);
    info.GetString(key + ".command", line->command);
    static_cast<void>(triggerLines.Add(std::move(line)));
  }
  SetFlag(POINT_TO_POINT, info.GetInt("timeline.point_to_point") != 0);
  for (int i = 0; i < PITLINES; ++i) {
    const std::string key = Key("pit.inout_line", i);
    const DVector3 from = GetVector(info, key + ".from");
    pitInOutLines[static_cast<size_t>(i)].SetPoints(from, GetVector(info, key + ".to"));
  }
  SetFlag(AUTO_RETURN, info.GetInt("timeline.auto_return") != 0);
}

void RTrack::LoadSplines()
{
  const std::string path = PathOf("spline.ini");
  const QInfo info(path, QInfo::NO_OPEN_WARNING);
  NoteUnreadable(info);
  if (!info.IsRead())
    QWARN("No splines found for track '%s', has impact on AI/minimap etc.", trackName.c_str());
  if (!host.noSplines) {
    if (!(flags & POINT_TO_POINT))
      splines.flags |= RSplineRep::CLOSED;
    splines.Load(info);
    AfterRead(info);
  }
  trackLength = splines.GetTrackLength();
  WidenStart();
}

// The start line is the first line of the road, made wide enough for cars beside the road.
void RTrack::WidenStart()
{
  if (splines.lines.empty() || timeLines.Count() == 0)
    return;
  const float f = (special->GetFloat("timeline.start_width", 5.0f) - 1) * 0.5f;
  const DVector3 left = splines.lines[0].left;
  const DVector3 right = splines.lines[0].right;
  const DVector3 more = (right - left) * f;
  (*timeLines.At(0))->SetPoints(left - more, right + more);
}

void RTrack::LoadTrackCams()
{
  trackCams.Clear();
  int count = CountOrFull(*special, "tcam.count", MAX_TRACKCAMS, "trackcams");
  if (count == 0) {
    QWARN("Track contains no trackcams!");
    count = 1;
  }
  for (int i = 0; i < count; ++i) {
    auto cam = std::make_unique<RTrackCam>();
    cam->Load(*special, Key("tcam.cam", i));
    AddTrackCam(std::move(cam));
  }
  ListCameras();
}

void RTrack::LoadWayPoints()
{
  const QInfo& info = *special;
  wayPoints.Clear();
  const int count = CountOrFull(info, "waypoint.count", MAX_WAYPOINTS, "waypoints");
  for (int i = 0; i < count; ++i) {
    const std::string key = Key("waypoint.wp", i);
    auto w = std::make_unique<RWayPoint>();
    w->pos = GetVector(info, key + ".pos");
    w->posDir = GetVector(info, key + ".posdir");
    w->left = GetVector(info, key + ".left");
    w->right = GetVector(info, key + ".right");
    w->lon = info.GetFloat(key + ".lon");
    AddWayPoint(std::move(w));
  }
}

void RTrack::LoadAudio()
{
  const QInfo& info = *special;
  audio.Clear();
  const int count = CountOrFull(info, "audio.count", MAX_AUDIO, "audio points");
  for (int i = 0; i < count; ++i) {
    const std::string key = Key("audio.source", i);
    std::string sample;
    info.GetString(key + ".sample", sample);
    auto source = MakeTrackAudio(sample);
    source->pos = GetVector(info, key + ".pos");
    source->radius = info.GetFloat(key + ".radius");
    AddTrackAudio(std::move(source));
  }
}

void RTrack::LoadSky()
{
  const QInfo& info = *special;
  sky = GetVector4(info, "gfx.sky");
  skyModel.rayleigh = info.GetFloat("gfx.fog.rayleigh", 0.0024f);
  skyModel.mie = info.GetFloat("gfx.fog.mie", 0.00013f);
  skyModel.sunIntensity = info.GetFloat("gfx.sun.intensity", 1.0f);
  skyModel.exposure = info.GetFloat("gfx.exposure", 1.0f);
  skyModel.exposureFactor = info.GetFloat("gfx.exposure_factor", 1.0f);
  skyModel.extinctionFactor = info.GetFloat("gfx.fog.extinction_factor", 1.0f);
  skyModel.night = flags & NIGHT ? 1.0f : 0.0f;
}

void RTrack::LoadColorGrade()
{
  constexpr const char* DEFAULT_NAME = "colorgrade_default.tga";
  constexpr int WIDTH = 256, HEIGHT = 16;
  constexpr const char* DEFAULT_PATH = "data/images/colorgrade_default.tga";
  std::string leaf;
  special->GetString("gfx.colorgrade", leaf, DEFAULT_NAME);
  colorGrade = PathOf(leaf);
  const auto fits = [](const QImage& image) { return image.GetWidth() == WIDTH && image.GetHeight() == HEIGHT; };
  std::unique_ptr<QImage> image;
  if (RStaysInside(leaf) && QFileExists(colorGrade)) {
    image = std::make_unique<QImage>(colorGrade);
    if (!fits(*image)) {
      QWARN("Colorgrade texture (%s) must be 256x16 (16 maps of 16x16) - refusing map", colorGrade.c_str());
      image = nullptr;
    }
  }
  if (!image)
    colorGrade = DEFAULT_PATH;
  if (!host.scene || !DGlobals().texturesOn)
    return; // nothing is graded
  if (!image && QFileExists(colorGrade))
    image = std::make_unique<QImage>(colorGrade);
  if (image && fits(*image))
    host.scene->GetRenderer()->SetColorGrade(std::make_unique<DTexture3D>(*image));
}

void RTrack::LoadWeather()
{
  const QInfo& info = *special;
  environment.LoadSettings(info);
  std::string curve;
  if (info.GetString("env.rain_curve", curve) && !curve.empty()) {
    weather.rainCurve = PathOf(curve);
    QDBG("Rain curve: %s\n", weather.rainCurve.c_str());
  }
  const float rain = info.GetFloat("env.rain");
  const float snow = info.GetFloat("env.snow");
  if (rain > 0 && snow > 0)
    QWARN("Both env.rain and env.snow in the track's special.ini are non-zero - we can only do one at a time, "
          "ignoring rain");
  environment.SetRain(rain);
  environment.SetSnow(snow);
  weather.thunder = info.GetFloat("env.thunder");
  weather.clouds = info.GetFloat("env.clouds", 1.0f);
  weather.cloudHeight = info.GetFloat("env.cloudheight", 20000.0f);
  weather.sunny = info.GetFloat("env.sunny", 1.0f);
  const std::array<float, 2> current = weather.cloudSpeed;
  info.GetFloats("env.cloudspeed", 2, weather.cloudSpeed.data(), current.data());
}

void RTrack::LoadMaps()
{
  trackMaps = {PathOf("track"), QFileExists(PathOf("track_dn.tga"))};
  sunMaps = {PathOf("sun"), QFileExists(PathOf("sun_dn.tga"))};
}

void RTrack::LoadFog()
{
  const QInfo& info = *special;
  showSplineEdge = info.GetBool("gfx.show_splineedge", false);
  fog.density = info.GetFloat("gfx.fog.density", 0.001f);
  fog.start = info.GetFloat("gfx.fog.start", 10.0f);
  fog.end = info.GetFloat("gfx.fog.end", 100.0f);
  fog.color = GetVector4(info, "gfx.fog.color", {0, 0, 0, 1});
  fog.mode = info.GetInt("gfx.fog.mode");
  if (fog.mode < RFog::EXPONENTIAL || fog.mode > RFog::LINEAR) {
    QWARN("Track special.ini: gfx.fog.mode out of range 0..2");
    fog.mode = RFog::EXPONENTIAL;
  }
}

void RTrack::LoadSun()
{
  const QInfo& info = *special;
  const bool automatic = !Setting("fx.sun.time_of_day", "").empty();
  sun = std::make_unique<RSun>();
  sun->enabled = info.GetBool("gfx.sun.enable", true);
  std::string position;
  sun->placed = info.GetString("gfx.sun", position); // a section without a value of its own doesn't place it
  if (sun->placed) {
    sun->position = sun->basePosition = GetVector(info, "gfx.sun");
    sun->intensity = info.GetFloat("gfx.sun.intensity", 1.0f);
    sun->azimuthOffset = info.GetFloat("gfx.sun.azimuth_offset");
    sun->year = info.GetInt("gfx.sun.year", 2008);
    sun->month = info.GetInt("gfx.sun.month", 7);
    sun->day = info.GetInt("gfx.sun.day", 20);
    sun->latitude = info.GetFloat("gfx.sun.latitude", 52.0f);
    sun->longitude = info.GetFloat("gfx.sun.longitude", 5.0f);
    sun->timezone = info.GetFloat("gfx.sun.timezone", 1.0f);
    sun->hasColors = !automatic;
    if (sun->hasColors) {
      sun->ambient = GetVector4(info, "gfx.sun.ambient");
      sun->diffuse = GetVector4(info, "gfx.sun.diffuse");
      sun->specular = GetVector4(info, "gfx.sun.specular");
    }
  }
  sun->whiteout = Setting("fx.sun.whiteout", 0.0f);
  std::string time;
  if (info.GetString("gfx.time", time) && !automatic)
    sun->SetTime(time);
}

void RTrack::LoadRest()
{
  const QInfo& info = *special;
  shadowIntensity = info.GetFloat("gfx.shadows.intensity_projected", 0.3f);
  marshalPosts.Load(info, "marshal_posts");
  paceCarEndDistance =
      Setting("race.pace_car.laps", 1.0f) * trackLength - info.GetFloat("pacecar.turn_off_distance", 200.0f);
}

bool RTrack::LoadSurfaceTypes()
{
  const bool useRoadNoise = Setting("physics.tracks.use_road_noise", true);
  bool good = true;
  surfaces.Clear();
  QInfoIterator sections(*special, "surfaces");
  qstring section;
  while (sections.GetNext(section, false)) {
    if (!section.BeginsWith("surfaces.surf"))
      continue;
    auto surface = std::make_unique<RSurfaceType>();
    surface->index = static_cast<uint8_t>(surfaces.Count());
    if (surfaces.IsFull()) {
      QWARN("RTrack:LoadSurfaceTypes(); max (%d) reached", MAX_SURFACES);
      break;
    }
    good = surface->Load(*special, section.Str(), useRoadNoise) && good;
    if (host.audio)
      surface->LoadSound(*special, section.Str(), trackDir, *host.audio);
    ApplySurfaceTypeToMaterials(*surface, surface->pattern);
    static_cast<void>(surfaces.Add(std::move(surface)));
  }
  if (surfaces.Count() == 0) {
    QWARN("No surfaces defined in special.ini; creating stub");
    auto stub = std::make_unique<RSurfaceType>();
    ApplySurfaceTypeToMaterials(*stub, "*");
    static_cast<void>(surfaces.Add(std::move(stub)));
  }
  return good;
}

void RSun::SetTime(std::string_view text)
{
  const auto digit = [&](size_t i) { return text[i] - '0'; };
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (text.size() != 4 || !std::all_of(text.begin(), text.end(), isDigit))
    return;
  hours = digit(0) * 10 + digit(1);
  minutes = digit(2) * 10 + digit(3);
}
