#include "editor/lidarmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "foundation/qstring.h"
#include "geometry/daabbtreehd.h"
#include "track/rlidar.h"
#include "track/rtrackvrml.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

// A button and the flag that it toggles.
struct Operation
{
  const char* label;
  uint32_t flag;
};
constexpr std::array<Operation, 3> OPERATIONS = {{
    {"Paint vertices", RLidar::PAINT_VERTICES},
    {"Paint triangles (partial)", RLidar::PAINT_TRIANGLES},
    {"Paint AABB (partial)", RLidar::PAINT_AABB},
}};

} // namespace

LidarMode::LidarMode(EditState& owner, EditHost& asks) : state(owner), host(asks)
{}

void LidarMode::ModeSetup()
{
  std::array<const char*, OPERATIONS.size()> labels{};
  std::transform(OPERATIONS.begin(), OPERATIONS.end(), labels.begin(), [](const Operation& o) { return o.label; });
  host.SetOpButtons(labels);
}

void LidarMode::ModeOp(int n)
{
  RLidar* lidar = state.curTrack ? state.curTrack->lidar.get() : nullptr;
  if (lidar && n >= 0 && n < static_cast<int>(OPERATIONS.size()))
    lidar->flags ^= OPERATIONS[static_cast<size_t>(n)].flag;
}

void LidarMode::ModePaint(DOverlay& overlay) const
{
  if (RLidar* lidar = state.curTrack->lidar.get())
    lidar->Paint(overlay, state.camera.transform.pos);
}

void LidarMode::ModeHud() const
{
  const RLidar* lidar = state.curTrack->lidar.get();
  if (!lidar || lidar->PointCount() == 0) {
    host.HudPrint("No Lidar data found.");
    return;
  }
  host.HudPrint("Flags: " + lidar->GetPaintFlagsString());
  host.HudPrint("Points: " + QThousands(lidar->PointCount()).Str());
  if (const DAabbTreeHd* tree = lidar->Tree()) {
    host.HudPrint("Triangles: " + QThousands(tree->FaceCount()).Str());
    host.HudPrint("Tree max depth: " + std::to_string(tree->Depth()));
    host.HudPrint("Tree max triangles/node: " + std::to_string(tree->MaxTrianglesPerNode()));
  }
}
