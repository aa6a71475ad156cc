#include "app/tool/tool.h"
#include "app/tool/tooltrack.h"
#include "app/tool/toolui.h"
#include "foundation/qfilename.h"
#include "geometry/dglobal.h"
#include "tools/qbatch.h"
#include "track/rtrackvrml.h"

namespace {

// The directory of a track; "" when there is none, which is then said.
std::string TrackDirectory(const ToolArgs& args)
{
  if (!IsTrackName(args.Text(0)))
    return {};
  const std::string directory = "data/tracks/" + args.Text(0);
  if (QDirectoryExists(directory))
    return directory;
  ToolFail("there is no directory %s", directory.c_str());
  return {};
}

int Answer(const QBatchResult& result, const char* what, const std::string& directory)
{
  if (result.failed == 0)
    return TOOL_DONE;
  return ToolFail("%d of %d %s failed in %s", result.failed, result.files, what, directory.c_str());
}

// Pictures tell which materials are transparent. No shader is known, so models keep the names of their textures.
void LookAtPictures()
{
  DGlobals().shadersOn = false;
  DGlobals().texturesOn = true;
}

int RunAse(const ToolArgs& args)
{
  const std::string directory = TrackDirectory(args);
  if (directory.empty())
    return TOOL_FAILED;
  LookAtPictures();
  ToolUi ui;
  const std::string source = args.Option("--source") ? args.OptionPath("--source") : std::string();
  if (!source.empty() && !QDirectoryExists(source))
    return ToolFail("there is no directory %s", source.c_str());
  return Answer(ASEBatch(ui, directory, {}, false, args.Option("--optimize"), source), "conversions", directory);
}

int RunWrl(const ToolArgs& args)
{
  const std::string directory = TrackDirectory(args);
  if (directory.empty())
    return TOOL_FAILED;
  LookAtPictures();
  ToolUi ui;
  return Answer(ConvertAllWRLs(ui, directory), "conversions", directory);
}

int RunLight(const ToolArgs& args)
{
  const std::string directory = TrackDirectory(args);
  if (directory.empty())
    return TOOL_FAILED;
  DGlobals().shadersOn = DGlobals().texturesOn = false;
  ToolUi ui;
  return Answer(AddLightingAllDOFs(ui, directory), "models", directory);
}

int RunOptimize(const ToolArgs& args)
{
  const std::string directory = TrackDirectory(args);
  if (directory.empty())
    return TOOL_FAILED;
  DGlobals().shadersOn = DGlobals().texturesOn = false;
  ToolUi ui;
  return Answer(BatchOptimizeDOFs(ui, directory), "models", directory);
}

int RunExportWrl(const ToolArgs& args)
{
  const auto track = ToolLoadTrack(args.Text(0));
  if (!track)
    return TOOL_FAILED;
  ToolUi ui;
  return Answer(ExportAllWRL(ui, *track), "exports", track->trackDir);
}

} // namespace

std::vector<ToolVerb> ToolBatchVerbs()
{
  return {
      {"batch",
       "ase",
       "Turns the .ase files of a track's directory ase into models",
       {{"TRACK"}},
       RunAse,
       {{"--optimize", "Weld vertices and join bursts"}, {"--source", "Read the files of this directory", "DIR"}}},
      {"batch", "wrl", "Turns the .wrl files of a track's SCGT/wrl into models", {{"TRACK"}}, RunWrl},
      {"batch", "light", "Puts normals and lit materials into all models of a track", {{"TRACK"}}, RunLight},
      {"batch", "optimize", "Makes all models of a track small and fast", {{"TRACK"}}, RunOptimize},
      {"batch", "export-wrl", "Writes all models of a track as wrl/objects_group_N.wrl", {{"TRACK"}}, RunExportWrl},
  };
}
