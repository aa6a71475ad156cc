#include "editor/modelsmodepaint.h"

#include "editor/editstate.h"
#include "geometry/dgeode.h"
#include "geometry/doverlay.h"
#include "track/rtracknode.h"

namespace {

constexpr int64_t BLINK_TIME = 900; // milliseconds; hidden in the first half
constexpr int64_t DASH_TIME = 50;   // milliseconds after which the dashes go on by a pixel

uint16_t DashPattern(int64_t now)
{
  const auto byte = static_cast<uint16_t>((0xF0F0F0 >> ((now / DASH_TIME) & 7)) & 0xFF);
  return static_cast<uint16_t>(byte << 8 | byte);
}

std::array<DVector3, 24> EdgesOf(const DBox& box)
{
  std::array<DVector3, 24> ends;
  const auto corner = [&](int i) {
    return DVector3(i & 1 ? box.max.x : box.min.x, i & 2 ? box.max.y : box.min.y, i & 4 ? box.max.z : box.min.z);
  };
  size_t n = 0;
  for (int i = 0; i < 8; ++i)
    for (const int axis : {1, 2, 4})
      if (!(i & axis)) {
        ends[n++] = corner(i);
        ends[n++] = corner(i | axis);
      }
  return ends;
}

} // namespace

void BlinkSelectedNodes(const EditState& state)
{
  const bool shown = (state.now - state.blinkStart) % BLINK_TIME >= BLINK_TIME / 2;
  for (const SelectedNode& selected : state.SelectedNodes)
    if (selected.node->Geode())
      selected.node->SetVisible(shown);
}

void PaintSelectedNodes(const EditState& state, DOverlay& overlay)
{
  BlinkSelectedNodes(state);
  DOverlayStyle dashes;
  dashes.width = 0.5f;
  dashes.blend = true;
  const uint16_t pattern = DashPattern(state.now);
  for (const SelectedNode& selected : state.SelectedNodes) {
    DGeode* geode = selected.node->Geode();
    if (!geode)
      continue;
    const auto edges = EdgesOf(geode->GetBoundingBox());
    dashes.color = QColor(0, 0, 0);
    dashes.stipple = pattern;
    overlay.Lines(edges, dashes);
    dashes.color = QColor(255, 255, 255);
    dashes.stipple = static_cast<uint16_t>(~pattern);
    overlay.Lines(edges, dashes);
  }
}
