#include "track/rtrackshapes.h"
#include "track/rtrackvrml.h"

namespace {

DOverlayStyle Style(const QColor& color, float width = 1)
{
  DOverlayStyle style;
  style.color = color;
  style.width = width;
  return style;
}

const QColor RED(255, 0, 0);
const QColor GREEN(0, 255, 0);
const QColor YELLOW(255, 255, 0);
const QColor MAGENTA(255, 0, 255);
const QColor PALE_RED(255, 180, 180);
const QColor PALE_GREEN(180, 255, 180);

} // namespace

void RTrackVRML::PaintLines(DOverlay& overlay) const
{
  static const DOverlayStyle pitStyles[PITLINES] = {Style(GREEN, 5), Style(YELLOW, 2.5f),
                                                    Style(QColor(128, 128, 255), 2), Style(RED, 4)};
  for (const auto& line : timeLines)
    RPaintFence(overlay, line->from, line->to, Style(YELLOW));
  for (const auto& line : triggerLines)
    RPaintFence(overlay, line->from, line->to, Style(RED));
  for (size_t i = 0; i < pitInOutLines.size(); ++i)
    RPaintFence(overlay, pitInOutLines[i].from, pitInOutLines[i].to, pitStyles[i]);
  for (size_t i = 0; i < static_cast<size_t>(gridCount); ++i)
    RPaintFence(overlay, gridPos[i].from, gridPos[i].to, Style(GREEN));
  for (size_t i = 0; i < static_cast<size_t>(pitCount); ++i)
    RPaintFence(overlay, pitPos[i].from, pitPos[i].to, Style(MAGENTA));
}

void RTrackVRML::PaintCameras(DOverlay& overlay) const
{
  for (const auto& cam : trackCams) {
    const bool selected = cam->flags & RTrackCam::SELECTED;
    const DOverlayStyle style = Style(selected ? PALE_RED : RED);
    overlay.Line(cam->pos, cam->pos2, style);
    RPaintCircle(overlay, cam->pos, cam->radius, style);
    if (cam->flags & RTrackCam::DOLLY)
      overlay.Line(cam->pos, cam->posDolly, Style(selected ? PALE_GREEN : GREEN));
  }
}

void RTrackVRML::PaintAudio(DOverlay& overlay) const
{
  for (const auto& source : audio)
    RPaintCircle(overlay, source->pos, source->radius, Style(source->flags & RTrackAudio::SELECTED ? PALE_RED : RED));
}

void RTrackVRML::PaintWayPoints(DOverlay& overlay) const
{
  for (const auto& w : wayPoints) {
    const bool selected = w->flags & RWayPoint::SELECTED;
    const DOverlayStyle style = Style(selected ? PALE_RED : RED);
    overlay.Line(w->pos, w->posDir, style);
    overlay.Line(w->left, w->right, style);
  }
}
