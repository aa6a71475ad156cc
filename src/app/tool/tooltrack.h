#pragma once

#include <memory>
#include <string>

class QInfo;
class RTrackVRML;
class WorldScene;

// The application's settings, read and never written.
const QInfo& ToolSettings();
// Said when it isn't.
bool IsTrackName(const std::string& name);
// What a verb wants to know beyond the records and the shapes. Nothing is drawn, so it is little.
struct ToolLoadWishes
{
  WorldScene* scene = nullptr; // gets the track's shaders; outlives the track
  bool textures = false;       // their pictures
};
// Null when it failed, which is then said.
std::unique_ptr<RTrackVRML> ToolLoadTrack(const std::string& name, const ToolLoadWishes& wishes = {});
