#include "editor/trackcamsmode.h"

#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/fakehost.h"
#include "editor/trackcamsselection.h"
#include "runtime/rcar.h"
#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <gtest/gtest.h>

namespace {

// A mode with what it needs around it.
struct Bench
{
  Bench()
  {
    state.curTrack = &track;
    state.previewCar = &car;
    state.pickStart = {1, 2, 3};
    state.camera.transform.pos = {10, 20, 30};
  }
  RTrackCam& Add()
  {
    EXPECT_TRUE(track.AddTrackCam(std::make_unique<RTrackCam>()));
    RTrackCam& cam = *track.GetTrackCam(track.trackCams.Count() - 1);
    cam.radius = 7.75f;
    cam.group = 3;
    cam.zoomEdge = cam.zoomClose = cam.zoomFar = 55;
    return cam;
  }
  std::string Hud()
  {
    host.hud.clear();
    mode.ModeHud();
    return host.hud.size() == 1 ? host.hud[0] : "not one line";
  }

  RTrackVRML track;
  RCar car{"nobody", 0};
  EditState state;
  FakeHost host;
  EditView view{state};
  TrackCamsMode mode{state, host, view};
};

class TrackCamsModeTest : public testing::Test, protected Bench
{};

// All that a command of the mode can change or ask, as a text.
std::string Traces(const Bench& b)
{
  std::string text;
  const auto add = [&text](const auto&... values) { ((text += std::to_string(values) + " "), ...); };
  for (const auto& cam : b.track.trackCams) {
    for (const DVector3& v : {cam->pos, cam->pos2, cam->posDolly, cam->cubes[0], cam->cubes[1], cam->cubes[2]})
      add(v.x, v.y, v.z);
    add(cam->flags, cam->group, cam->radius, cam->zoomEdge, cam->zoomClose, cam->zoomFar);
  }
  const DVector3& pos = b.state.camera.transform.pos;
  add(pos.x, pos.y, pos.z, b.state.trackCam, b.host.now);
  for (const auto* texts : {&b.host.prompts, &b.host.filled, &b.host.messages})
    for (const std::string& t : *texts)
      text += t + "\n";
  return text;
}

std::string TracesOf(const std::function<void(TrackCamsMode& mode)>& act)
{
  Bench b;
  b.Add();
  b.Add().pos = {7, 8, 9};
  b.state.trackCam = 1;
  b.host.answers = {"0", "1", "2"};
  act(b.mode);
  return Traces(b);
}

TEST_F(TrackCamsModeTest, EachButtonDoesWhatItsKeyDoes)
{
  const struct
  {
    const char* label;
    int key;
  } rows[] = {
      {"Goto line start (Home)", QKEY_HOME},
      {"Declare as camera (Ctrl-C)", QMOD_CTRL | 'C'},
      {"Edit radius (Shift-R)", QMOD_SHIFT | 'R'},
      {"Edit group (Shift-G)", QMOD_SHIFT | 'G'},
      {"Define dolly endpt", 0},
      {"Place edge cube (Shift-E)", QMOD_SHIFT | 'E'},
      {"Place close cube (Shift-C)", QMOD_SHIFT | 'C'},
      {"Place far cube (Shift-F)", QMOD_SHIFT | 'F'},
      {"(P)review motion", 'P'},
      {"Goto camera start", 0},
      {"Edit camera angles (Shift-A)", QMOD_SHIFT | 'A'},
      {"Select (C)amera", 'C'},
  };
  mode.ModeSetup();
  ASSERT_EQ(std::size(rows), host.buttons.size());
  const std::string untouched = TracesOf([](TrackCamsMode&) {});
  for (int i = 0; i < static_cast<int>(std::size(rows)); ++i) {
    SCOPED_TRACE(rows[i].label);
    EXPECT_EQ(rows[i].label, host.buttons[static_cast<size_t>(i)]);
    const std::string byButton = TracesOf([i](TrackCamsMode& m) { m.ModeOp(i); });
    EXPECT_NE(untouched, byButton);
    if (rows[i].key != 0) {
      EXPECT_EQ(byButton, TracesOf([&](TrackCamsMode& m) { EXPECT_FALSE(m.ModeKey(rows[i].key)); }));
    }
  }
  state.curTrack = nullptr; // a load has failed
  for (int i = -1; i <= 12; ++i)
    mode.ModeOp(i);
  EXPECT_TRUE(host.prompts.empty() && host.messages.empty());
}

TEST_F(TrackCamsModeTest, DeclaresAtTheViewAndKeepsTheRestOfAnOldOne)
{
  host.answers = {"", "0"};
  mode.ModeKey(QMOD_CTRL | 'C');
  EXPECT_EQ("Enter an index: Select camera index (none existing yet)", host.prompts[0]);
  ASSERT_EQ(1, track.trackCams.Count());
  RTrackCam& cam = *track.GetTrackCam(0);
  EXPECT_EQ(RTrackCam::ZOOM_ALONG | RTrackCam::SELECTED, cam.flags);
  EXPECT_EQ("Current camera: #0", Hud());
  cam.radius = cam.zoomEdge = cam.zoomClose = cam.zoomFar = 99;
  cam.group = 4;
  cam.cubes[2] = {5, 5, 5};
  state.pickStart = {4, 5, 6};
  state.camera.transform.pos = {11, 21, 31};
  mode.ModeOp(1);
  ASSERT_EQ(1, track.trackCams.Count());
  EXPECT_EQ(DVector3(11, 21, 31), cam.pos);
  EXPECT_EQ(DVector3(4, 5, 6), cam.pos2);
  EXPECT_EQ((std::array<float, 4>{20, 20, 30, 20}),
            (std::array<float, 4>{cam.radius, cam.zoomEdge, cam.zoomClose, cam.zoomFar}));
  EXPECT_EQ(4, cam.group);
  EXPECT_EQ(DVector3(5, 5, 5), cam.cubes[2]);
}

TEST_F(TrackCamsModeTest, TheCameraPastTheLastIsLostAndNoneIsCurrent)
{
  while (track.trackCams.Count() < RTrack::MAX_TRACKCAMS)
    Add();
  state.trackCam = 5;
  ReportCapture reports;
  host.answers = {""};
  mode.ModeKey(QMOD_CTRL | 'C');
  EXPECT_EQ("ERR: RTrack:AddTrackCam(); max (200) exceeded\n", reports.All());
  EXPECT_EQ(RTrack::MAX_TRACKCAMS, track.trackCams.Count());
  EXPECT_EQ("Current camera: NONE", Hud());
  mode.ModeKey(QMOD_SHIFT | 'E');
  EXPECT_EQ(DVector3(0.0f), track.GetTrackCam(5)->cubes[0]);
}

TEST_F(TrackCamsModeTest, StepsWithoutGoingRoundAndMarksTheCurrentOne)
{
  for (const int key : {QKEY_PGUP, QKEY_PGDN}) {
    mode.ModeKey(key);
    EXPECT_EQ("Current camera: NONE", Hud());
  }
  for (int i = 0; i < 3; ++i)
    Add();
  const struct
  {
    int key, current;
  } steps[] = {{QKEY_PGUP, 0}, {QKEY_PGUP, 0}, {QKEY_PGDN, 1}, {QKEY_PGDN, 2}, {QKEY_PGDN, 2}, {QKEY_PGUP, 1}};
  for (const auto& step : steps) {
    mode.ModeKey(step.key);
    EXPECT_EQ("Current camera: #" + std::to_string(step.current), Hud());
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(i == step.current, (track.GetTrackCam(i)->flags & RTrackCam::SELECTED) != 0) << i;
  }
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(TrackCamsModeTest, SelectionLeavesTheMarksAndEndsBehindTheLast)
{
  Add();
  Add();
  mode.ModeKey(QKEY_PGDN);
  host.answers = {"1", "", "0"};
  mode.ModeKey('C');
  EXPECT_EQ("Current camera: #1", Hud());
  EXPECT_TRUE(track.GetTrackCam(0)->flags & RTrackCam::SELECTED);
  EXPECT_FALSE(track.GetTrackCam(1)->flags & RTrackCam::SELECTED);
  mode.ModeOp(11);
  EXPECT_EQ("Current camera: NONE", Hud());
  mode.ModeKey(QKEY_PGDN); // none is current: the first
  EXPECT_EQ("Current camera: #0", Hud());
  mode.ModeKey('C');
  mode.ModeKey('C'); // cancelled
  EXPECT_EQ("Current camera: #0", Hud());
}

TEST_F(TrackCamsModeTest, AStepShowsTheFirstKeyframe)
{
  for (const float distance : {0.0f, 50.0f, 100.0f}) {
    RSplineLine line;
    line.distance = distance;
    track.splines.lines.push_back(line);
  }
  Add();
  ASSERT_TRUE(Add().keyframes.SetKeyFrame({60, 1, 2, 3, 40, 50, 60, 70}));
  state.keyFrame = 4;
  mode.ModeKey(QKEY_PGDN);
  EXPECT_EQ(DVector3(10, 20, 30), state.camera.transform.pos) << "the first has none";
  mode.ModeKey(QKEY_PGDN);
  const EditTransform& t = state.camera.transform;
  EXPECT_EQ(DVector3(1, 2, 3), t.pos);
  EXPECT_EQ(DVector3(40, 50, 60), DVector3(t.yaw, t.pitch, t.roll));
  EXPECT_EQ(70, state.camera.fov);
  EXPECT_EQ(1, state.selectedSpline);
  EXPECT_EQ(0, state.keyFrame);
  EXPECT_EQ(-1, LineOfKey(track.splines, -1));
  state.keyFrame = -1;
  mode.ModeKey(QKEY_PGDN); // stays at the last
  EXPECT_EQ("Error: No keyframe spline selected", host.messages.at(0));
}

TEST_F(TrackCamsModeTest, EditsRadiusAndGroup)
{
  RTrackCam& cam = Add();
  state.trackCam = 0;
  host.answers = {FakeHost::CANCEL, "12", "5"};
  mode.ModeKey(QMOD_SHIFT | 'R');
  EXPECT_EQ(7.75f, cam.radius);
  mode.ModeKey(QMOD_SHIFT | 'R');
  EXPECT_EQ(12, cam.radius);
  mode.ModeKey(QMOD_SHIFT | 'G');
  EXPECT_EQ(5, cam.group);
  EXPECT_EQ(
      (std::vector<std::string>{"Edit radius: Enter camera pick-up radius", "Edit radius: Enter camera pick-up radius",
                                "Edit group: Enter camera group number"}),
      host.prompts);
  EXPECT_EQ((std::vector<std::string>{"7", "7", "3"}), host.filled);
  EXPECT_EQ((QRect{500, 150, 350, 150}), host.area);
  cam.radius = 1e30f; // as a file may have it
  mode.ModeKey(QMOD_SHIFT | 'R');
  EXPECT_EQ("1000000000", host.filled.back());
}

TEST_F(TrackCamsModeTest, AnglesAreClampedAndACancelKeepsWhatWasGiven)
{
  RTrackCam& cam = Add();
  state.trackCam = 0;
  host.answers = {"0", "200", "33.5"};
  mode.ModeKey(QMOD_SHIFT | 'A');
  EXPECT_EQ(DVector3(1, 180, 33.5f), DVector3(cam.zoomEdge, cam.zoomClose, cam.zoomFar));
  host.answers = {"nan", FakeHost::CANCEL, "60"};
  mode.ModeKey(QMOD_SHIFT | 'A');
  EXPECT_EQ(DVector3(1, 180, 33.5f), DVector3(cam.zoomEdge, cam.zoomClose, cam.zoomFar));
  EXPECT_EQ((std::vector<std::string>{"Camera FOV angles: Enter camera view angle for 'edge'",
                                      "Camera FOV angles: Enter camera view angle for 'close'",
                                      "Camera FOV angles: Enter camera view angle for 'far'",
                                      "Camera FOV angles: Enter camera view angle for 'edge'",
                                      "Camera FOV angles: Enter camera view angle for 'close'"}),
            host.prompts);
  EXPECT_EQ("55.000000", host.filled[0]);
  EXPECT_EQ("180.000000", host.filled[4]);
}

TEST_F(TrackCamsModeTest, WithoutACameraOnlyTheDollySpeaks)
{
  Add();
  for (const int n : {2, 3, 5, 6, 7, 8, 9, 10})
    mode.ModeOp(n);
  EXPECT_TRUE(host.prompts.empty() && host.messages.empty());
  EXPECT_EQ(1000, host.now) << "nothing was shown";
  EXPECT_EQ(DVector3(10, 20, 30), state.camera.transform.pos);
  mode.ModeOp(4);
  EXPECT_EQ((std::vector<std::string>{"Error: No camera selected"}), host.messages);
}

TEST_F(TrackCamsModeTest, PlacesDollyAndCubes)
{
  RTrackCam& cam = Add();
  state.trackCam = 0;
  ReportCapture reports;
  for (const int key : {int('E'), int('C'), int('F')}) {
    mode.ModeKey(QMOD_SHIFT | key);
    state.pickStart += DVector3(10, 0, 0);
  }
  EXPECT_EQ((std::array<DVector3, 3>{{{1, 3, 3}, {11, 3, 3}, {21, 3, 3}}}), cam.cubes);
  EXPECT_TRUE(reports.Contains("DefineCube(2)\n"));
  mode.ModeOp(4);
  EXPECT_EQ(DVector3(10, 20, 30), cam.posDolly);
  EXPECT_EQ(RTrackCam::ZOOM_ALONG | RTrackCam::DOLLY, cam.flags);
  cam.pos = {3, 3, 3};
  mode.ModeOp(9);
  EXPECT_EQ(DVector3(3, 3, 3), state.camera.transform.pos);
}

TEST_F(TrackCamsModeTest, PaintsFencesCirclesAndTheCubesOfTheCurrentOne)
{
  Add();
  RTrackCam& cam = Add();
  cam.flags |= RTrackCam::DOLLY;
  cam.pos = {1, 2, 3};
  cam.pos2 = {4, 2, 3};
  cam.cubes[2] = {50, 60, 70};
  state.trackCam = 1;
  RecordingOverlay overlay;
  mode.ModePaint(overlay);
  struct Row
  {
    const char* kind;
    QColor color;
  };
  std::vector<Row> expected = {{"lines", {255, 0, 0}},
                               {"loop", {255, 0, 0}},
                               {"lines", {255, 180, 180}},
                               {"loop", {255, 180, 180}},
                               {"lines", {180, 255, 180}}};
  for (int i = 0; i < 3; ++i)
    for (const int green : {128, 51, 26, 102})
      expected.push_back({"quads", {255, green, 255}});
  ASSERT_EQ(expected.size(), overlay.items.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i].kind, overlay.items[i].kind) << i;
    EXPECT_EQ(expected[i].color.GetRGBA(), overlay.items[i].style.color.GetRGBA()) << i;
    EXPECT_EQ(1, overlay.items[i].style.width);
    EXPECT_TRUE(overlay.items[i].style.depthTest);
  }
  EXPECT_EQ((std::vector<DVector3>{{1, 2, 3}, {1, 3, 3}, {4, 2, 3}, {4, 3, 3}, {1, 3, 3}, {4, 3, 3}}),
            overlay.items[2].points);
  // The sides of the far cube: z - 2, x - 2, x + 2, z + 2.
  const DVector3 planes[] = {{0, 0, 68}, {48, 0, 0}, {52, 0, 0}, {0, 0, 72}};
  for (size_t side = 0; side < 4; ++side) {
    const auto& corners = overlay.items[13 + side].points;
    ASSERT_EQ(4u, corners.size());
    DVector3 low = corners[0], high = corners[0];
    for (const DVector3& c : corners) {
      low = glm::min(low, c);
      high = glm::max(high, c);
    }
    const bool alongX = planes[side].x == 0;
    EXPECT_EQ(alongX ? DVector3(48, 58, planes[side].z) : DVector3(planes[side].x, 58, 68), low) << side;
    EXPECT_EQ(alongX ? DVector3(52, 62, planes[side].z) : DVector3(planes[side].x, 62, 72), high) << side;
    EXPECT_LT(glm::distance(corners[0], corners[1]), 4.1f) << "corners go round, not across";
    EXPECT_LT(glm::distance(corners[1], corners[2]), 4.1f);
  }
  overlay.items.clear();
  state.trackCam = -1;
  mode.ModePaint(overlay);
  EXPECT_EQ(5u, overlay.items.size());
}

TEST_F(TrackCamsModeTest, PreviewRidesTheCubesAsTheCameraSeesThem)
{
  RTrackCam& cam = Add();
  state.trackCam = 0;
  cam.radius = 100;
  cam.zoomEdge = 40;
  cam.zoomFar = 20;
  cam.pos = {0, 5, 0};
  cam.pos2 = {1, 5, 0};
  cam.posDolly = {0, 5, 10};
  cam.flags |= RTrackCam::DOLLY;
  cam.cubes = {{{-100, 5, 40}, {0, 5, 50}, {100, 5, 40}}};
  cam.src.k = 1e6f; // a spring that starts at rest holds the camera on its slow dolly
  cam.src.mass = 1;
  cam.src.damping = 1000;
  track.gridPos[0].from = {9, 8, 7};
  state.camera.transform = {{10, 20, 30}, 4, 5, 6};
  state.camera.fov = 33;
  struct Picture
  {
    int64_t time;
    EditTransform t;
    float fov;
    DVector3 body;
    DVector3 cube;
  };
  std::vector<Picture> pictures;
  host.frameTime = 750;
  host.onFrame = [&] {
    RecordingOverlay overlay;
    mode.ModePaint(overlay);
    ASSERT_EQ(3u + 4 * 4, overlay.items.size()) << "the cube of the preview is the fourth";
    DVector3 cube(0.0f);
    for (const DVector3& corner : overlay.items.back().points)
      cube += corner / 4.0f;
    pictures.push_back({host.now, state.camera.transform, state.camera.fov, car.GetBody()->position, cube});
  };
  mode.ModeKey('P');
  const DVector3 bodies[] = {{-100, 5, 40}, {-50, 5, 45}, {0, 5, 50}, {50, 5, 45}, {100, 5, 40}};
  const float dolly[] = {0, 2.5f, 5, 7.5f, 10};
  ASSERT_EQ(5u, pictures.size());
  for (size_t i = 0; i < 5; ++i) {
    SCOPED_TRACE(i);
    const Picture& p = pictures[i];
    EXPECT_EQ(bodies[i], p.body);
    EXPECT_NEAR(0, glm::distance(p.body + DVector3(0, 0, 1), p.cube), 0.001f) << "its front side, half a metre off";
    EXPECT_NEAR(0, glm::distance(DVector3(0, 5, dolly[i]), p.t.pos), 0.02f);
    const DVector3 ahead = -EditRotation(p.t.yaw, p.t.pitch, p.t.roll).Column(2);
    EXPECT_NEAR(1, glm::dot(ahead, glm::normalize(p.body - p.t.pos)), 0.0001f);
  }
  EXPECT_NEAR(4000 / 100.15f, pictures[0].fov, 0.01f);
  EXPECT_EQ(55, pictures[2].fov);
  EXPECT_NEAR(2000 / 100.15f, pictures[4].fov, 0.01f);
  EXPECT_EQ(DVector3(9, 8, 7), cam.dst.position) << "what it turns to is the first place of the grid";
  EXPECT_EQ(1, host.presses);
  EXPECT_EQ(DVector3(10, 20, 30), state.camera.transform.pos);
  EXPECT_EQ(DVector3(4, 5, 6),
            DVector3(state.camera.transform.pitch, state.camera.transform.yaw, state.camera.transform.roll));
  EXPECT_EQ(33, state.camera.fov);
  RecordingOverlay overlay;
  mode.ModePaint(overlay);
  EXPECT_EQ(3u + 3 * 4, overlay.items.size());
}

TEST_F(TrackCamsModeTest, PreviewOfWhatHasNoExtentIsARealView)
{
  RTrackCam& cam = Add();
  state.trackCam = 0;
  cam.radius = 0; // all points in one place, as a track without cameras is loaded
  host.onFrame = [&] {
    const EditTransform& t = state.camera.transform;
    for (const float value : {t.pos.x, t.pitch, t.yaw, state.camera.fov})
      EXPECT_TRUE(std::isfinite(value));
  };
  mode.ModeKey('P');
  EXPECT_GE(host.now, 4000);
}

} // namespace
