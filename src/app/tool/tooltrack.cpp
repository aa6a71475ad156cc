#include "app/tool/tooltrack.h"

#include "app/tool/tool.h"
#include "foundation/qinfo.h"
#include "geometry/dglobal.h"
#include "track/rtrackvrml.h"

const QInfo& ToolSettings()
{
  static const QInfo settings("torvik.ini", QInfo::NO_OPEN_WARNING);
  return settings;
}

namespace {

bool ShowProgress(int current, int total, const char*)
{
  if (total > 0)
    ToolProgress("Loading", static_cast<float>(current) / static_cast<float>(total));
  return true;
}

} // namespace

bool IsTrackName(const std::string& name)
{
  if (!name.empty() && name != "." && name != ".." && name.find_first_of("/\\") == std::string::npos)
    return true;
  ToolFail("'%s' isn't the name of a directory in data/tracks", name.c_str());
  return false;
}

std::unique_ptr<RTrackVRML> ToolLoadTrack(const std::string& name, const ToolLoadWishes& wishes)
{
  if (!IsTrackName(name))
    return nullptr;
  DGlobals().shadersOn = wishes.scene != nullptr;
  DGlobals().texturesOn = wishes.textures;
  auto track = std::make_unique<RTrackVRML>(RTrackHost{.settings = &ToolSettings(), .scene = wishes.scene});
  track->SetName(name);
  track->progressCallback = ShowProgress;
  const bool good = track->Load();
  track->progressCallback = nullptr;
  ToolProgress("Loading", 1);
  if (good)
    return track;
  ToolFail("can't load track '%s' from %s", name.c_str(), track->trackDir.c_str());
  return nullptr;
}
