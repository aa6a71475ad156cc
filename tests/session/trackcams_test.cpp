// Track cameras in the whole editor: placed as a person places them, saved, and read again.

#include "session/editsession.h"

#include "foundation/qinfo.h"
#include "foundation/qsystemnode.h"
#include "runtime/rcar.h"
#include "track/rtrackvrml.h"

#include <gtest/gtest.h>

namespace {

class TrackCams : public testing::Test
{
protected:
  TrackCams()
  {
    session.WriteTrack("oval");
    session.Start();
    EXPECT_TRUE(session.LoadTrack("oval"));
    session.Key(QKEY_F1 + 1);
  }
  // The pick line starts below the camera, in the middle of the window.
  void PointAt(float x, float z)
  {
    session.LookDownOn({x, 20, z});
    session.ShiftDrag(640, 400, 660, 380);
  }
  RTrackCam& Camera(int i) { return *session.State().curTrack->GetTrackCam(i); }

  EditSession session;
};

TEST_F(TrackCams, DeclareEditSaveAndComeBack)
{
  EXPECT_TRUE(session.HudHas("Current camera: NONE"));
  EXPECT_TRUE(session.Sees("QButton", "(P)review motion"));
  ASSERT_EQ(1, session.State().curTrack->trackCams.Count()) << "a track always has one";
  PointAt(2, 3);
  session.Answer("");
  session.Key(QMOD_CTRL | 'C');
  ASSERT_EQ("Enter an index: Select camera index (0..0) (empty=new)", session.LastDialog());
  EXPECT_TRUE(session.HudHas("Current camera: #1"));
  const float xs[] = {-4, 0, 4};
  const int cubes[] = {'E', 'C', 'F'};
  for (int i = 0; i < 3; ++i) {
    PointAt(xs[i], 6);
    session.Key(QMOD_SHIFT | cubes[i]);
  }
  session.State().camera.transform.pos = {5, 6, 7};
  session.ClickOn("QButton", "Define dolly endpt");
  session.Answer("45");
  session.ClickOn("QButton", "Edit radius (Shift-R)");
  session.Answer("2");
  session.Key(QMOD_SHIFT | 'G');
  session.Answer("0"); // the three questions for angles
  session.Answer("200");
  session.Answer("12.5");
  session.Key(QMOD_SHIFT | 'A');
  EXPECT_EQ("Camera FOV angles: Enter camera view angle for 'far'", session.LastDialog());
  session.Answer("0");
  session.ClickOn("QButton", "Select (C)amera");
  EXPECT_TRUE(session.HudHas("Current camera: #0"));
  session.Key(QKEY_PGDN);
  EXPECT_TRUE(session.HudHas("Current camera: #1"));

  const RTrackCam& made = Camera(1);
  EXPECT_NEAR(4, made.cubes[2].x, 0.2f);
  EXPECT_NEAR(1, made.cubes[2].y, 0.01f) << "a metre above the road";
  const DVector3 pos = made.pos, pos2 = made.pos2, far = made.cubes[2];
  session.Answer("");
  session.Key(QMOD_SHIFT | 'S');
  ASSERT_EQ("Save track: Track saved succesfully.", session.LastDialog());
  session.Answer("");
  session.Key(QMOD_SHIFT | 'L');
  EXPECT_TRUE(session.HudHas("Current camera: NONE")) << "another track, nothing is selected";
  ASSERT_EQ(2, session.State().curTrack->trackCams.Count());
  const RTrackCam& read = Camera(1);
  EXPECT_NEAR(0, glm::distance(pos, read.pos), 1e-4);
  EXPECT_NEAR(0, glm::distance(pos2, read.pos2), 1e-4);
  EXPECT_NEAR(0, glm::distance(far, read.cubes[2]), 1e-4);
  EXPECT_EQ(DVector3(5, 6, 7), read.posDolly);
  EXPECT_EQ(DVector3(1, 180, 12.5f), DVector3(read.zoomEdge, read.zoomClose, read.zoomFar));
  EXPECT_EQ(45, read.radius);
  EXPECT_EQ(2, read.group);
  EXPECT_EQ(RTrackCam::ZOOM_ALONG | RTrackCam::DOLLY, read.flags);
}

TEST_F(TrackCams, PreviewIsSeenAndForgetsWhatIsPressedMeanwhile)
{
  session.Key(QKEY_PGDN);
  Camera(0).cubes = {{{-5, 1, 0}, {0, 1, 0}, {5, 1, 0}}};
  session.LookDownOn({1, 30, 2});
  const RCar* car = session.State().previewCar;
  ASSERT_NE(nullptr, car);
  const QSystemNode* telemetry = session.App().GetSystem().FindChild("car0")->FindChild("telemetry");
  const int swaps = session.Display().swaps;
  const int64_t began = session.Display().Clock();
  session.Display().Key('P');
  session.Display().Key('P'); // while the first still rides
  session.Display().Key('M');
  session.Key(QKEY_PGDN);
  const int64_t took = session.Display().Clock() - began;
  EXPECT_GE(took, 3000);
  EXPECT_LT(took, 3500) << "one preview";
  EXPECT_GT(session.Display().swaps - swaps, 200) << "a picture every 10 ms";
  EXPECT_EQ(5, *telemetry->Find("pos_x"));
  EXPECT_EQ(1, session.State().curMode);
  EXPECT_EQ(0, session.State().keyDown['P']) << "its release came through";
  EXPECT_EQ(DVector3(1, 30, 2), session.State().camera.transform.pos);
  EXPECT_EQ(90, session.State().camera.transform.pitch);
  session.Key('M');
  EXPECT_EQ(2, session.State().curMode) << "the keys work again";
}

TEST_F(TrackCams, ThePreviewCarOutlivesTheTrackAndGoesAtTheEnd)
{
  const RCar* car = session.State().previewCar;
  session.Answer("");
  session.Key(QMOD_SHIFT | 'L');
  EXPECT_EQ(car, session.State().previewCar);
  EXPECT_EQ("lambomurcielago", car->GetName());
  session.Key(QMOD_SHIFT | 'Q');
  EXPECT_TRUE(session.HasEnded());
  EXPECT_EQ(nullptr, session.State().previewCar);
  EXPECT_EQ(nullptr, session.App().GetSystem().FindChild("car0"));
}

} // namespace
