#include "editor/trackcamsmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/trackcamsselection.h"
#include "foundation/qnumber.h"
#include "foundation/qreport.h"
#include "runtime/rcar.h"
#include "track/rtrackshapes.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <cmath>
#include <string>

// One row is an operation button, its key and what both do. Key 0: button only.
struct TrackCamsMode::Command
{
  const char* label;
  int key;
  void (*run)(TrackCamsMode& mode);
};

const std::array<TrackCamsMode::Command, 12> TrackCamsMode::commands = {{
    {"Goto line start (Home)", QKEY_HOME, [](TrackCamsMode& m) { m.view.GotoPickStart(); }},
    {"Declare as camera (Ctrl-C)", QMOD_CTRL | 'C', [](TrackCamsMode& m) { m.DeclareCamera(); }},
    {"Edit radius (Shift-R)", QMOD_SHIFT | 'R', [](TrackCamsMode& m) { m.EditRadius(); }},
    {"Edit group (Shift-G)", QMOD_SHIFT | 'G', [](TrackCamsMode& m) { m.EditGroup(); }},
    {"Define dolly endpt", 0, [](TrackCamsMode& m) { m.DefineDolly(); }},
    {"Place edge cube (Shift-E)", QMOD_SHIFT | 'E', [](TrackCamsMode& m) { m.DefineCube(RTrackCam::CUBE_EDGE); }},
    {"Place close cube (Shift-C)", QMOD_SHIFT | 'C', [](TrackCamsMode& m) { m.DefineCube(RTrackCam::CUBE_CLOSE); }},
    {"Place far cube (Shift-F)", QMOD_SHIFT | 'F', [](TrackCamsMode& m) { m.DefineCube(RTrackCam::CUBE_FAR); }},
    {"(P)review motion", 'P', [](TrackCamsMode& m) { m.PreviewCubes(); }},
    {"Goto camera start", 0, [](TrackCamsMode& m) { m.GotoCamera(); }},
    {"Edit camera angles (Shift-A)", QMOD_SHIFT | 'A', [](TrackCamsMode& m) { m.EditCamAngles(); }},
    {"Select (C)amera", 'C', [](TrackCamsMode& m) { m.SelectCamera(); }},
}};

// A key without a button.
struct TrackCamsMode::KeyCommand
{
  int key;
  void (*run)(TrackCamsMode& mode);
};

const std::array<TrackCamsMode::KeyCommand, 2> TrackCamsMode::keyCommands = {{
    {QKEY_PGUP, [](TrackCamsMode& m) { PreviousTrackCam(m.state, m.host); }},
    {QKEY_PGDN, [](TrackCamsMode& m) { NextTrackCam(m.state, m.host); }},
}};

namespace {

constexpr int PREVIEW_TIME = 3000; // milliseconds
constexpr float CUBE_HALF = 2;     // metres
constexpr float PREVIEW_HALF = 1;
constexpr int ANGLE_LENGTH = 200;
constexpr float MIN_ANGLE = 1; // degrees
constexpr float MAX_ANGLE = 180;

DOverlayStyle Style(const QColor& color)
{
  DOverlayStyle style;
  style.color = color;
  return style;
}

void PaintCamera(DOverlay& overlay, const RTrackCam& cam, bool current)
{
  const DOverlayStyle style = Style(current ? QColor(255, 180, 180) : QColor(255, 0, 0));
  RPaintFence(overlay, cam.pos, cam.pos2, style);
  RPaintCircle(overlay, cam.pos, cam.radius, style);
  if (cam.flags & RTrackCam::DOLLY)
    RPaintFence(overlay, cam.pos, cam.posDolly, Style(current ? QColor(180, 255, 180) : QColor(0, 255, 0)));
}

// Where the body is after a part of the whole time, 0 to 1.
DVector3 AlongCubes(const RTrackCam& cam, float f)
{
  const auto& c = cam.cubes;
  return f <= 0.5f ? glm::mix(c[0], c[1], 2 * f) : glm::mix(c[1], c[2], 2 * (f - 0.5f));
}

// A file may hold what no int does.
int WholeOf(float value)
{
  constexpr float LIMIT = 1e9f;
  return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -LIMIT, LIMIT));
}

float AngleOf(const std::string& answer)
{
  const float angle = QParseFloat(answer);
  return std::isnan(angle) ? MIN_ANGLE : std::clamp(angle, MIN_ANGLE, MAX_ANGLE);
}

} // namespace

TrackCamsMode::TrackCamsMode(EditState& owner, EditHost& asks, EditView& theView) :
    state(owner), host(asks), view(theView)
{}

void TrackCamsMode::ModeSetup()
{
  std::array<const char*, commands.size()> labels{};
  std::transform(commands.begin(), commands.end(), labels.begin(), [](const Command& c) { return c.label; });
  host.SetOpButtons(labels);
}

bool TrackCamsMode::ModeKey(int code)
{
  for (const Command& c : commands)
    if (c.key != 0 && c.key == code)
      c.run(*this);
  for (const KeyCommand& c : keyCommands)
    if (c.key == code)
      c.run(*this);
  return false; // never consumed: the global keys run too
}

void TrackCamsMode::ModeOp(int n)
{
  // The buttons are there without a track too.
  if (state.curTrack && n >= 0 && n < static_cast<int>(commands.size()))
    commands[static_cast<size_t>(n)].run(*this);
}

void TrackCamsMode::ModePaint(DOverlay& overlay) const
{
  const RTrackCam* current = CurrentTrackCam(state);
  for (const auto& cam : state.curTrack->trackCams)
    PaintCamera(overlay, *cam, cam.get() == current);
  if (!current)
    return;
  for (const DVector3& cube : current->cubes)
    RPaintCube(overlay, cube, CUBE_HALF);
  if (previewing)
    RPaintCube(overlay, previewPos, PREVIEW_HALF);
}

void TrackCamsMode::ModeHud() const
{
  host.HudPrint("Current camera: " + (CurrentTrackCam(state) ? "#" + std::to_string(state.trackCam) : "NONE"));
}

void TrackCamsMode::DeclareCamera()
{
  const int n = InputIndex(host, "Select camera index", state.curTrack->trackCams.Count(), -1);
  if (n >= 0)
    DeclareTrackCam(state, n);
}

void TrackCamsMode::SelectCamera()
{
  const int n = InputIndex(host, "Select camera index", state.curTrack->trackCams.Count(), -1);
  if (n >= 0)
    state.trackCam = n;
}

void TrackCamsMode::EditRadius()
{
  RTrackCam* cam = CurrentTrackCam(state);
  int radius = 0; // metres; the fraction of the old one is lost
  if (cam && InputInt(host, "Edit radius", "Enter camera pick-up radius", WholeOf(cam->radius), radius))
    cam->radius = static_cast<float>(radius);
}

void TrackCamsMode::EditGroup()
{
  if (RTrackCam* cam = CurrentTrackCam(state))
    InputInt(host, "Edit group", "Enter camera group number", cam->group, cam->group);
}

void TrackCamsMode::EditCamAngles()
{
  RTrackCam* cam = CurrentTrackCam(state);
  if (!cam)
    return;
  const struct
  {
    const char* name;
    float* angle;
  } angles[] = {{"edge", &cam->zoomEdge}, {"close", &cam->zoomClose}, {"far", &cam->zoomFar}};
  for (const auto& a : angles) {
    const std::string prompt = std::string("Enter camera view angle for '") + a.name + "'";
    std::string answer = QFormatFloat(static_cast<double>(*a.angle));
    if (!host.AskText("Camera FOV angles", prompt.c_str(), answer, ANGLE_LENGTH))
      return;
    *a.angle = AngleOf(answer);
  }
}

void TrackCamsMode::DefineDolly()
{
  RTrackCam* cam = CurrentTrackCam(state);
  if (!cam) {
    host.Message("Error", "No camera selected");
    return;
  }
  cam->posDolly = state.camera.transform.pos;
  cam->flags |= RTrackCam::DOLLY;
}

void TrackCamsMode::DefineCube(int n)
{
  RTrackCam* cam = CurrentTrackCam(state);
  if (!cam)
    return;
  QLOG("DefineCube(%d)\n", n);
  cam->cubes[static_cast<size_t>(n)] = state.pickStart + DVector3(0, 1, 0);
}

void TrackCamsMode::GotoCamera()
{
  if (const RTrackCam* cam = CurrentTrackCam(state))
    state.camera.SetCameraPos(cam->pos);
}

// A body rides from cube to cube, and the view is the camera's meanwhile.
void TrackCamsMode::PreviewCubes()
{
  RTrackCam* cam = CurrentTrackCam(state);
  if (!cam)
    return;
  const EditTransform transform = state.camera.transform;
  const float fov = state.camera.fov;
  cam->Rest(cam->cubes[0], state.curTrack->FirstGridPlace());
  previewing = true;
  {
    EditPreview preview(host);
    int last = 0;
    do {
      const int now = std::min(preview.Elapsed(), PREVIEW_TIME);
      previewPos = AlongCubes(*cam, static_cast<float>(now) / PREVIEW_TIME);
      ShowThrough(*cam, now - last);
      preview.Show();
      last = now;
    } while (last < PREVIEW_TIME);
  }
  previewing = false;
  state.camera.transform = transform;
  state.camera.fov = fov;
}

// milliseconds: since the view was last taken from it.
void TrackCamsMode::ShowThrough(RTrackCam& cam, int milliseconds)
{
  if (state.previewCar)
    state.previewCar->GetBody()->position = previewPos;
  cam.camera.Preview(previewPos, state.curTrack->FirstGridPlace(), milliseconds);
  state.camera.transform = {cam.camera.GetFrom(), 0, state.camera.transform.yaw, 0};
  LookAt(state, cam.camera.GetTo());
  state.camera.fov = cam.camera.GetFOV();
}
