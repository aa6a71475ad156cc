#include "editor/editmodes.h"

#include "editor/editwidgets.h"
#include "editor/lidarmode.h"
#include "editor/marshalmode.h"
#include "editor/modelsmode.h"
#include "editor/pendingmode.h"
#include "editor/positionsmode.h"
#include "editor/soundsmode.h"
#include "editor/trackcamsmode.h"
#include "editor/trafficmode.h"

#include <string>

namespace {

std::unique_ptr<EditMode> MakePending(int slot, EditHost& host)
{
  const std::string label = EditWidgets::modeLabels[static_cast<size_t>(slot)];
  return std::make_unique<PendingMode>(host, label.substr(0, label.rfind(" (")));
}

} // namespace

std::unique_ptr<EditMode> MakeEditMode(int slot, EditState& state, EditHost& host, EditView& view)
{
  switch (slot) {
  case 0:
    return std::make_unique<PositionsMode>(state, host, view);
  case 1:
    return std::make_unique<TrackCamsMode>(state, host, view);
  case 3:
    return std::make_unique<ModelsMode>(state, host, view);
  case 5:
    return std::make_unique<SoundsMode>(state, host);
  case 7:
    return std::make_unique<TrafficMode>(state, host);
  case 8:
    return std::make_unique<LidarMode>(state, host);
  case 9:
    return std::make_unique<MarshalMode>(state, host, view);
  default:
    return MakePending(slot, host);
  }
}
