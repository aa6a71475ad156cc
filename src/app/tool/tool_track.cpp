#include "app/tool/tool.h"
#include "app/tool/tooljson.h"
#include "app/tool/tooltrack.h"
#include "app/tool/toolui.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qsafewrite.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "scene/worldscene.h"
#include "tools/qbatch.h"
#include "tools/rtracksplitter.h"
#include "track/rmarshaltemplate.h"
#include "track/rshadertemplate.h"
#include "track/rtrackcheck.h"
#include "track/rtrackvrml.h"

#include <array>
#include <charconv>
#include <memory>
#include <span>
#include <unistd.h>

namespace {

unsigned long CountTriangles(const RTrackVRML& track)
{
  unsigned long count = 0;
  for (const auto& node : track.nodes)
    if (const DGeode* geode = node->Geode())
      for (const auto& geob : geode->geob)
        count += static_cast<unsigned long>(geob->FaceCount());
  return count;
}

int RunInfo(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0));
  if (!track)
    return TOOL_FAILED;
  ToolJson json = ToolJson::Object();
  json.Add("name", track->name);
  json.Add("creator", track->creator);
  json.Add("length", track->length);
  json.Add("type", track->type);
  json.Add("id", track->id);
  json.Add("version", track->version);
  json.Add("trackLength", track->trackLength);
  json.Add("nodes", track->nodes.Count());
  json.Add("triangles", CountTriangles(*track));
  json.Add("gridPositions", track->gridCount);
  json.Add("pitPositions", track->pitCount);
  json.Add("timeLines", track->timeLines.Count());
  json.Add("triggerLines", track->triggerLines.Count());
  json.Add("trackCams", track->trackCams.Count());
  json.Add("wayPoints", track->wayPoints.Count());
  json.Add("audioSources", track->audio.Count());
  json.Add("splineLines", track->splines.LineCount());
  json.Add("trafficWayPoints", track->trafficGrid.wayPoints.Count());
  json.Add("marshalPosts", static_cast<unsigned long>(track->marshalPosts.posts.size()));
  json.Add("surfaces", track->surfaces.Count());
  json.Print();
  return TOOL_DONE;
}

ToolJson Json(const DVector3& v)
{
  return ToolJson::Floats(std::span(&v.x, 3));
}

ToolJson Json(const RCarPos& p)
{
  ToolJson json = ToolJson::Object();
  json.Add("from", Json(p.from)).Add("to", Json(p.to));
  return json;
}

ToolJson Positions(std::span<const RCarPos> positions, int count)
{
  ToolJson json = ToolJson::Array();
  for (const RCarPos& p : positions.first(static_cast<size_t>(count)))
    json.Add(Json(p));
  return json;
}

ToolJson Identity(const RTrackVRML& track)
{
  ToolJson json = ToolJson::Object();
  json.Add("name", track.name);
  json.Add("creator", track.creator);
  json.Add("length", track.length);
  json.Add("type", track.type);
  json.Add("file", track.file);
  json.Add("trackName", track.trackName);
  json.Add("id", track.id);
  json.Add("preview", track.preview);
  json.Add("racingClass", track.racingClass);
  json.Add("skin", track.skin);
  json.Add("version", track.version);
  return json;
}

ToolJson Json(const RTimeLine& line)
{
  ToolJson json = ToolJson::Object();
  json.Add("from", Json(line.from)).Add("to", Json(line.to)).Add("name", line.name);
  json.Add("normal", Json(line.plane.normal)).Add("distance", line.plane.distance).Add("lengthSq", line.lengthSq);
  return json;
}

ToolJson Json(const RTriggerLine& line)
{
  ToolJson json = ToolJson::Object();
  json.Add("from", Json(line.from)).Add("to", Json(line.to));
  json.Add("index", line.index).Add("command", line.command).Add("name", line.name);
  return json;
}

ToolJson Json(const RSMD& spring)
{
  ToolJson json = ToolJson::Object();
  json.Add("k", spring.k).Add("mass", spring.mass).Add("damping", spring.damping).Add("maxDist", spring.maxDist);
  return json;
}

ToolJson Json(const DAnimatedCamera& path)
{
  ToolJson json = ToolJson::Array();
  for (int i = 0; i < path.GetCount(); ++i) {
    const DCameraKeyFrame& k = *path.GetKeyFrame(i);
    ToolJson key = ToolJson::Object();
    key.Add("t", k.t).Add("x", k.x).Add("y", k.y).Add("z", k.z);
    key.Add("yaw", k.yaw).Add("pitch", k.pitch).Add("roll", k.roll).Add("fov", k.fov);
    json.Add(std::move(key));
  }
  return json;
}

ToolJson Json(const RTrackCam& cam)
{
  ToolJson json = ToolJson::Object();
  json.Add("flags", cam.flags);
  json.Add("pos", Json(cam.pos)).Add("pos2", Json(cam.pos2)).Add("posDolly", Json(cam.posDolly));
  json.Add("rot", Json(cam.rot)).Add("rot2", Json(cam.rot2));
  json.Add("group", cam.group).Add("radius", cam.radius);
  json.Add("zoomEdge", cam.zoomEdge).Add("zoomClose", cam.zoomClose).Add("zoomFar", cam.zoomFar);
  ToolJson cubes = ToolJson::Array();
  for (const DVector3& cube : cam.cubes)
    cubes.Add(Json(cube));
  json.Add("cubes", std::move(cubes));
  json.Add("src", Json(cam.src)).Add("dst", Json(cam.dst)).Add("keyframes", Json(cam.keyframes));
  return json;
}

ToolJson Json(const RWayPoint& w)
{
  ToolJson json = ToolJson::Object();
  json.Add("pos", Json(w.pos)).Add("posDir", Json(w.posDir));
  json.Add("left", Json(w.left)).Add("right", Json(w.right)).Add("lon", w.lon);
  return json;
}

ToolJson Json(const RTrackAudio& source)
{
  ToolJson json = ToolJson::Object();
  json.Add("name", source.name).Add("pos", Json(source.pos)).Add("radius", source.radius);
  return json;
}

ToolJson Json(const RSplineRep& splines)
{
  ToolJson lines = ToolJson::Array();
  for (const RSplineLine& l : splines.lines) {
    ToolJson line = ToolJson::Object();
    line.Add("flags", l.flags).Add("left", Json(l.left)).Add("right", Json(l.right));
    line.Add("elevation", l.elevation).Add("longGrip", l.longGrip);
    line.Add("distance", l.distance).Add("length", l.length);
    lines.Add(std::move(line));
  }
  ToolJson json = ToolJson::Object();
  json.Add("flags", splines.flags).Add("lateralDivisions", splines.lateralDivisions);
  json.Add("paintStart", splines.paintStart).Add("paintEnd", splines.paintEnd).Add("lines", std::move(lines));
  return json;
}

ToolJson Json(const RTrafficWayPoint& w)
{
  ToolJson json = ToolJson::Object();
  json.Add("pos", Json(w.pos)).Add("velocity", w.velocity);
  json.Add("forward", w.links[RTrafficWayPoint::FORWARD]).Add("left", w.links[RTrafficWayPoint::LEFT]);
  json.Add("right", w.links[RTrafficWayPoint::RIGHT]).Add("flags", w.flags);
  return json;
}

ToolJson Json(const RTrackNode& node)
{
  std::array<float, RTrackNode::LODS> lod;
  for (int i = 0; i < RTrackNode::LODS; ++i)
    lod[static_cast<size_t>(i)] = node.LodDistance(i);
  ToolJson json = ToolJson::Object();
  json.Add("name", node.name).Add("file", node.file).Add("flags", node.flags).Add("lod", ToolJson::Floats(lod));
  json.Add("center", Json(node.center)).Add("radius", node.radius);
  return json;
}

ToolJson Json(const RMarshalPost& post)
{
  ToolJson actors = ToolJson::Array();
  for (const RMarshalPostActor& a : post.actors) {
    ToolJson names = ToolJson::Array();
    for (const std::string& stateName : a.stateNames)
      names.Add(stateName);
    ToolJson actor = ToolJson::Object();
    actor.Add("type", a.type).Add("stateNames", std::move(names));
    actors.Add(std::move(actor));
  }
  ToolJson json = ToolJson::Object();
  json.Add("splineFrom", post.splineFrom).Add("splineTo", post.splineTo).Add("userID", post.userID);
  json.Add("actors", std::move(actors));
  return json;
}

ToolJson Json(const RSurfaceType& surface)
{
  ToolJson json = ToolJson::Object();
  json.Add("name", surface.name).Add("type", int(surface.type)).Add("subtype", int(surface.subtype));
  json.Add("flags", int(surface.flags)).Add("gripFactor", surface.gripFactor);
  json.Add("rollingResistanceFactor", surface.rollingResistanceFactor);
  return json;
}

// For tables of records, and of pointers to them.
template <typename Table>
ToolJson Records(const Table& table)
{
  ToolJson json = ToolJson::Array();
  for (const auto& record : table) {
    if constexpr (requires { record.get(); })
      json.Add(Json(*record));
    else
      json.Add(Json(record));
  }
  return json;
}

int RunDump(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0));
  if (!track)
    return TOOL_FAILED;
  ToolJson pitLines = ToolJson::Array();
  for (const RTimeLine& line : track->pitInOutLines)
    pitLines.Add(Json(RCarPos{line.from, line.to}));
  ToolJson json = ToolJson::Object();
  json.Add("identity", Identity(*track));
  json.Add("flags", track->flags).Add("trackLength", track->trackLength).Add("pitSide", track->pitSide);
  json.Add("gridPos", Positions(track->gridPos, track->gridCount));
  json.Add("pitPos", Positions(track->pitPos, track->pitCount));
  json.Add("timeLines", Records(track->timeLines)).Add("triggerLines", Records(track->triggerLines));
  json.Add("pitInOutLines", std::move(pitLines));
  json.Add("trackCams", Records(track->trackCams)).Add("wayPoints", Records(track->wayPoints));
  json.Add("audio", Records(track->audio)).Add("splines", Json(track->splines));
  json.Add("traffic", Records(track->trafficGrid.wayPoints));
  json.Add("marshalPosts", Records(track->marshalPosts.posts));
  json.Add("nodes", Records(track->nodes));
  json.Add("surfaces", Records(track->surfaces));
  json.Print();
  return TOOL_DONE;
}

int RunSave(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0));
  if (!track)
    return TOOL_FAILED;
  return track->Save() ? TOOL_DONE
                       : ToolFail("can't save track '%s' in %s", args.Text(0).c_str(), track->trackDir.c_str());
}

int RunImportDofs(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0));
  if (!track)
    return TOOL_FAILED;
  std::string filter = args.Option("--filter") ? args.OptionText("--filter") : "*";
  ToolUi ui;
  const QBatchResult result = ImportDOFs(ui, *track, {}, true, filter);
  if (!track->Save())
    return ToolFail("can't save track '%s' in %s", args.Text(0).c_str(), track->trackDir.c_str());
  ::unlink((track->trackDir + "/cache/trackcollision.bin").c_str());
  if (result.failed > 0)
    return ToolFail("%d of %d models can't be loaded from %s", result.failed, result.files, track->trackDir.c_str());
  return TOOL_DONE;
}

int RunCheck(const ToolArgs& args)
{
  if (!IsTrackName(args.Text(0)))
    return TOOL_FAILED;
  int status = TOOL_DONE;
  for (const RTrackFinding& finding : RCheckTrack(args.Text(0), ToolSettings())) {
    ToolPrint(std::string(RTrackFinding::Word(finding.severity)) + ": " + finding.file + ": " + finding.text + "\n");
    if (finding.severity >= RTrackFinding::PROBLEM)
      status = TOOL_FAILED;
  }
  return status;
}

int RunMarshalTemplate(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0));
  if (!track)
    return TOOL_FAILED;
  const QInfo tree(track->trackDir + "/special.ini");
  if (!QWriteFile(MARSHAL_TEXT_FILE, MakeMarshalTemplate({track->nodes.begin(), track->nodes.end()}, tree)))
    return ToolFail("can't write %s", MARSHAL_TEXT_FILE);
  return TOOL_DONE;
}

bool IsCellSize(const std::string& text, float& metres)
{
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, metres);
  return read.ec == std::errc() && read.ptr == end && metres > 0;
}

int RunSplit(const ToolArgs& args)
{
  float metres = 0;
  if (const std::string& text = args.OptionText("--cell"); !IsCellSize(text, metres))
    return ToolFail("--cell takes a number of metres above 0, not '%s'", text.c_str());
  WorldScene scene; // a shader tells that its material is sky
  const auto track = ToolLoadTrack(args.Text(0), {.scene = &scene});
  if (!track)
    return TOOL_FAILED;
  const std::string directory = RTrackSplitter::OutputDirectory(*track);
  if (!QDirectoryExists(directory))
    return ToolFail("there is no directory %s to split track '%s' into", directory.c_str(), args.Text(0).c_str());
  ToolUi ui;
  RTrackSplitter splitter(*track, ui);
  splitter.cellSize = metres;
  if (!splitter.Split())
    return ToolFail("track '%s' isn't split", args.Text(0).c_str());
  const auto& unwritten = splitter.Unwritten();
  return unwritten.empty() ? TOOL_DONE
                           : ToolFail("can't write %s (of %zu files)", unwritten.front().c_str(), unwritten.size());
}

int RunShaderTemplate(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0), {.textures = true});
  if (!track)
    return TOOL_FAILED;
  const std::string path = RShaderTemplatePath(*track);
  return RWriteShaderTemplate(*track) ? TOOL_DONE : ToolFail("can't write %s", path.c_str());
}

} // namespace

std::vector<ToolVerb> ToolTrackVerbs()
{
  return {
      {"track", "info", "What a track holds, in numbers", {{"TRACK"}}, RunInfo},
      {"track", "dump", "All records of a track", {{"TRACK"}}, RunDump},
      {"track", "check", "What an author should know of, a line each", {{"TRACK"}}, RunCheck},
      {"track", "save", "Load a track and save it, as the editor does", {{"TRACK"}}, RunSave},
      {"track",
       "import-dofs",
       "Add the models of a track's directory to it",
       {{"TRACK"}},
       RunImportDofs,
       {{"--filter", "Only files whose names match", "PATTERN"}}},
      {"track",
       "marshal-template",
       "Write TEMP_PAVEX_MARSHAL_POSTS.txt, a template for special.ini",
       {{"TRACK"}},
       RunMarshalTemplate},
      {"track",
       "split",
       "Write a track's triangles by material and place into TRACK_split, which must exist",
       {{"TRACK"}},
       RunSplit,
       {{"--cell", "side of the square cells", "METRES", true}}},
      {"track",
       "shader-template",
       "Write track_template.shd, a shader for each material",
       {{"TRACK"}},
       RunShaderTemplate},
  };
}
