#include "track/rtrackcheck.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "scene/worldscene.h"
#include "track/rtrackvrml.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <span>

namespace {

using Finding = RTrackFinding;

// Which of a track's files a part of the program reads.
struct Reader
{
  std::string_view source, file;
};
constexpr Reader READERS[] = {
    {"rtrackspecial", "special.ini"}, {"rtrackcam", "special.ini"},       {"rtrackpoints", "special.ini"},
    {"rsurfacetype", "special.ini"},  {"rmarshal", "special.ini"},        {"rtrackvrml", "geometry.ini"},
    {"rtracknode", "geometry.ini"},   {"worldgeodenode", "geometry.ini"}, {"rspline", "spline.ini"},
    {"rtraffic", "traffic.ini"},      {"dshader", "track.shd"},           {"dtexture", "track.shd"},
    {"dworld", "track.shd"},          {"rtrack.cpp", "track.ini"},        {"rcheckid", "track.ini"}};

std::string FileOf(std::string_view context)
{
  for (const Reader& r : READERS)
    if (context.find(r.source) != context.npos)
      return std::string(r.file);
  return "track";
}

class Checker
{
public:
  Checker(std::string_view trackName, const QInfo& settings);
  ~Checker() { QReports().tap = std::move(before); }
  Checker(const Checker&) = delete;
  Checker& operator=(const Checker&) = delete;
  std::vector<Finding> Run();

private:
  [[gnu::format(printf, 4, 5)]] void Tell(Finding::Severity severity, const char* file, const char* format, ...);
  void TakeReport(std::string_view severity, std::string_view text, std::string_view context);
  void TellUnread(const QInfo& info);
  void CheckPlaces(const char* what, std::span<const RCarPos> places);
  void CheckPositions();
  void CheckLine(const char* what, int i, const RTimeLine& line);
  void CheckLines();
  void CheckCameras();
  void CheckNodes();
  void CheckMaterials();
  void CheckSounds();
  void CheckRoad();
  void CheckPosts();
  void CheckTraffic();

  decltype(QReportSettings::tap) before;
  std::vector<Finding> findings;
  std::set<std::string> told; // each finding once
  WorldScene scene;
  std::unique_ptr<RTrackVRML> track;
};

Checker::Checker(std::string_view trackName, const QInfo& settings) : before(std::move(QReports().tap))
{
  QReports().tap = [this](std::string_view severity, std::string_view text, std::string_view context) {
    TakeReport(severity, text, context);
    return true;
  };
  RTrackHost host;
  host.settings = &settings;
  host.scene = &scene;
  host.afterRead = [this](const QInfo& info) { TellUnread(info); };
  track = std::make_unique<RTrackVRML>(host);
  track->SetName(std::string(trackName));
}

void Checker::Tell(Finding::Severity severity, const char* file, const char* format, ...)
{
  std::array<char, 1000> text;
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  if (told.insert(std::string(file) + text.data()).second)
    findings.push_back({severity, file, text.data()});
}

void Checker::TakeReport(std::string_view severity, std::string_view text, std::string_view context)
{
  const std::string line(text.substr(0, text.find_last_not_of("\n ") + 1));
  const std::string file = FileOf(context);
  if (severity == "WARN")
    Tell(Finding::WARNING, file.c_str(), "%s", line.c_str());
  else if (severity == "ERR")
    Tell(Finding::PROBLEM, file.c_str(), "%s", line.c_str());
  else if (severity == "FATAL" || severity == "CRIT")
    Tell(Finding::FATAL, file.c_str(), "%s", line.c_str());
}

// Keys that nobody asked for are misspelt, or stand behind the end of a list.
void Checker::TellUnread(const QInfo& info)
{
  const std::string name = QFileBase(info.FileName().c_str());
  const auto walk = [&](const auto& self, const QInfoNode* node, const std::string& path) -> void {
    for (; node; node = node->Next()) {
      if (node->IsRemoved() || node->type == QInfoNode::COMMENT)
        continue;
      const std::string key = path.empty() ? std::string(node->Name()) : path + "." + std::string(node->Name());
      if (node->type == QInfoNode::KEY && !(node->flags & QInfoNode::USED))
        Tell(Finding::WARNING, name.c_str(), "%s isn't a key that is read", key.c_str());
      self(self, node->FirstChild(), key);
    }
  };
  walk(walk, info.Root()->FirstChild(), "");
}

void Checker::CheckPlaces(const char* what, std::span<const RCarPos> places)
{
  for (size_t i = 0; i < places.size(); ++i) {
    if (places[i].from == places[i].to)
      Tell(Finding::PROBLEM, "special.ini", "%s position %zu has no heading: both its points are the same", what, i);
    for (size_t k = 0; k < i; ++k)
      if (glm::distance(places[i].from, places[k].from) < 0.5f)
        Tell(Finding::PROBLEM, "special.ini", "%s positions %zu and %zu are the same place", what, k, i);
  }
}

void Checker::CheckPositions()
{
  const auto grid = std::span(track->gridPos).first(static_cast<size_t>(track->gridCount));
  const auto pits = std::span(track->pitPos).first(static_cast<size_t>(track->pitCount));
  if (grid.empty())
    Tell(Finding::PROBLEM, "special.ini", "no grid positions: no car can start");
  if (pits.empty())
    Tell(Finding::NOTE, "special.ini", "no pit positions");
  CheckPlaces("grid", grid);
  CheckPlaces("pit", pits);
}

void Checker::CheckLine(const char* what, int i, const RTimeLine& line)
{
  if (glm::distance(line.from, line.to) < 0.1f)
    Tell(Finding::PROBLEM, "special.ini", "%s %d has no length: nothing crosses it", what, i);
}

void Checker::CheckLines()
{
  if (track->timeLines.Count() == 0)
    Tell(Finding::PROBLEM, "special.ini", "no timelines: laps aren't timed");
  int i = 0;
  for (const auto& line : track->timeLines)
    CheckLine("timeline", i++, *line);
  i = 0;
  for (const auto& line : track->triggerLines) {
    CheckLine("triggerline", i, *line);
    if (line->command.empty())
      Tell(Finding::WARNING, "special.ini", "triggerline %d has no command", i);
    ++i;
  }
  const bool any = std::ranges::any_of(track->pitInOutLines, [](const RTimeLine& l) { return l.from != l.to; });
  for (i = 0; any && i < RTrack::PITLINES; ++i)
    CheckLine("pit line", i, track->pitInOutLines[static_cast<size_t>(i)]);
}

void Checker::CheckCameras()
{
  int i = 0;
  for (const auto& cam : track->trackCams) {
    const bool along = glm::distance(cam->pos, cam->pos2) > 0.01f;
    if (!along && cam->flags & RTrackCam::ZOOM_ALONG && cam->keyframes.GetCount() == 0)
      Tell(Finding::NOTE, "special.ini", "camera %d zooms along a line that has no length", i);
    for (const float zoom : {cam->zoomEdge, cam->zoomClose, cam->zoomFar})
      if (zoom <= 0 || zoom >= 180)
        Tell(Finding::PROBLEM, "special.ini", "camera %d has a field of view of %g degrees", i, double(zoom));
    if (cam->radius < 0)
      Tell(Finding::PROBLEM, "special.ini", "camera %d has a radius of %g m", i, double(cam->radius));
    ++i;
  }
}

void Checker::CheckNodes()
{
  std::map<std::string, int> names;
  bool drivable = false;
  for (const auto& node : track->nodes) {
    if (++names[node->name] == 2)
      Tell(Finding::WARNING, "geometry.ini", "two objects are named '%s'", node->name.c_str());
    drivable = drivable || node->flags & RTrackNode::SURFACE;
    float last = 0;
    for (int level = 0; level < RTrackNode::LODS; ++level) {
      const float distance = node->LodDistance(level);
      if (distance != 0 && distance < last)
        Tell(Finding::WARNING, "geometry.ini", "object '%s' is shown at level %d up to %g m, after %g m",
             node->name.c_str(), level, double(distance), double(last));
      last = std::max(last, distance);
    }
    const DGeode* geode = node->Geode();
    const bool empty = !geode || std::ranges::all_of(geode->geob, [](const auto& g) { return g->FaceCount() == 0; });
    if (empty)
      Tell(Finding::WARNING, "geometry.ini", "object '%s' has no triangles (%s)", node->name.c_str(),
           node->file.c_str());
  }
  if (!drivable && track->nodes.Count() > 0)
    Tell(Finding::PROBLEM, "geometry.ini", "no object is flagged as surface: cars fall through the track");
}

// Materials without a picture and without a shader of their own are drawn as the stand-in.
void Checker::CheckMaterials()
{
  for (const auto& node : track->nodes) {
    const DGeode* geode = node->Geode();
    if (!geode)
      continue;
    for (const auto& geob : geode->geob)
      for (const auto& burst : geob->burst) {
        const DMaterial* material = geob->GetMaterial(burst.mtlID);
        if (material && !material->shader && material->texture.empty())
          Tell(Finding::NOTE, "track.shd", "material '%s' has neither a shader nor a picture", material->name.c_str());
      }
  }
}

void Checker::CheckSounds()
{
  int i = 0;
  for (const auto& source : track->audio) {
    if (source->radius <= 0)
      Tell(Finding::WARNING, "special.ini", "sound %d has a radius of %g m: nobody hears it", i,
           double(source->radius));
    if (!QFileExists(source->path))
      Tell(Finding::PROBLEM, "special.ini", "sound %d: there is no file '%s'", i, source->sample.c_str());
    ++i;
  }
}

void Checker::CheckRoad()
{
  const RSplineRep& road = track->splines;
  for (int i = 0; i < road.LineCount(); ++i) {
    const RSplineLine& line = road.lines[static_cast<size_t>(i)];
    if (glm::distance(line.left, line.right) < 0.1f)
      Tell(Finding::PROBLEM, "spline.ini", "line %d has no width", i);
    if (i > 0 && line.left == road.lines[static_cast<size_t>(i - 1)].left &&
        line.right == road.lines[static_cast<size_t>(i - 1)].right)
      Tell(Finding::PROBLEM, "spline.ini", "lines %d and %d are the same", i - 1, i);
  }
  if (road.paintEnd > road.LineCount())
    Tell(Finding::WARNING, "spline.ini", "the map is painted up to line %d of %d", road.paintEnd, road.LineCount());
}

void Checker::CheckPosts()
{
  const int lines = track->splines.LineCount();
  std::set<std::string> known;
  for (const auto& node : track->nodes)
    known.insert(node->file);
  int i = 0;
  for (const RMarshalPost& post : track->marshalPosts.posts) {
    if (post.splineFrom < 0 || post.splineTo > lines || post.splineFrom >= post.splineTo)
      Tell(Finding::PROBLEM, "special.ini", "marshal post %d guards lines %d to %d of a road of %d", i, post.splineFrom,
           post.splineTo, lines);
    for (const RMarshalPostActor& actor : post.actors)
      for (const std::string& state : actor.stateNames)
        if (!state.empty() && !known.contains(state + ".dof"))
          Tell(Finding::WARNING, "special.ini", "marshal post %d: no object shows '%s'", i, state.c_str());
    ++i;
  }
}

void Checker::CheckTraffic()
{
  static constexpr const char* DIRECTIONS[] = {"forward", "left", "right"};
  const RTrafficGrid& grid = track->trafficGrid;
  std::set<int> reached;
  int i = 0;
  for (const RTrafficWayPoint& w : grid.wayPoints) {
    for (size_t d = 0; d < w.links.size(); ++d) {
      const int link = w.links[d];
      if (link < -1 || link >= grid.wayPoints.Count())
        Tell(Finding::PROBLEM, "traffic.ini", "way point %d leads %s to %d, which isn't there", i, DIRECTIONS[d], link);
      else if (link == i)
        Tell(Finding::PROBLEM, "traffic.ini", "way point %d leads %s to itself", i, DIRECTIONS[d]);
      reached.insert(link);
    }
    if (std::ranges::none_of(w.links, [](int link) { return link >= 0; }))
      Tell(Finding::WARNING, "traffic.ini", "way point %d leads nowhere", i);
    if (w.velocity <= 0)
      Tell(Finding::WARNING, "traffic.ini", "way point %d has a speed of %g m/s", i, double(w.velocity));
    ++i;
  }
  for (i = 0; i < grid.wayPoints.Count(); ++i)
    if (!reached.contains(i))
      Tell(Finding::WARNING, "traffic.ini", "no way leads to way point %d", i);
  for (const RTrafficCar& car : grid.cars)
    if (car.wayPoint < 0 || car.wayPoint >= grid.wayPoints.Count())
      Tell(Finding::PROBLEM, "traffic.ini", "car '%s' starts at way point %d, which isn't there", car.car.c_str(),
           car.wayPoint);
}

std::vector<Finding> Checker::Run()
{
  if (!track->Load()) {
    Tell(Finding::FATAL, "track", "the track doesn't load");
  } else {
    if (track->Special())
      TellUnread(*track->Special());
    CheckPositions();
    CheckLines();
    CheckCameras();
    CheckNodes();
    CheckMaterials();
    CheckSounds();
    CheckRoad();
    CheckPosts();
    CheckTraffic();
  }
  track.reset();
  return std::move(findings);
}

} // namespace

const char* RTrackFinding::Word(Severity severity)
{
  static constexpr const char* WORDS[] = {"note", "warning", "error", "fatal"};
  return WORDS[severity];
}

std::vector<RTrackFinding> RCheckTrack(const std::string& name, const QInfo& settings)
{
  return Checker(name, settings).Run();
}
