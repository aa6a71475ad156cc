#include "scene/dcamera.h"
#include "scene/ddirector.h"
#include "scene/dfps.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

namespace {

struct ShotCamera : DCamera
{
  bool good = false;
  int activated = 0;
  bool IsGoodShot() override { return good; }
  void Activate() override { ++activated; }
};

class StoppedClock : public QClock
{
public:
  int64_t now = 1000000;
  int64_t Ticks() const override { return now; }
  int64_t Frequency() const override { return 1000000; }
  int64_t MilliSeconds() const override { return now / 1000; }
};

} // namespace

TEST(Directors, SelectACameraOrNone)
{
  ReportCapture reports;
  ShotCamera camera;
  DRail rail;
  rail.AddCamera(&camera);
  DDirector director;
  director.AddRail(&rail);
  director.SetRail(0, 0);
  EXPECT_EQ(&camera, director.GetCurrentCamera());
  EXPECT_EQ(1, camera.activated);
  for (const auto& [railIndex, n] : {std::pair(0, 1), {0, -1}, {1, 0}, {-1, 0}}) {
    director.SetRail(railIndex, n);
    EXPECT_EQ(nullptr, director.GetCurrentCamera()) << railIndex << ", " << n;
    EXPECT_EQ(-1, director.GetCurrentIndex());
  }
  EXPECT_EQ(nullptr, rail.GetCamera(3));
  EXPECT_TRUE(reports.Contains("DRail:GetCamera(3) out of range (0..0)"));
}

TEST(Directors, ReportWhatTheyLack)
{
  ReportCapture reports;
  DDirectorSimple simple(1.0f);
  DDirectorGoodShot goodShot;
  simple.Step(2.0f);
  goodShot.Step(0);
  DRail empty;
  simple.AddRail(&empty);
  goodShot.AddRail(&empty);
  simple.Step(2.0f);
  goodShot.Step(0);
  for (const char* text :
       {"DDirectorSimple:Step(); no rails defined", "DDirectorSimple:Step(); no cameras in rail",
        "DDirectorGoodShot:Step(); no rails defined", "DDirectorGoodShot:Step(); no cameras in rail"})
    EXPECT_EQ(1, reports.Count(text)) << text;
}

TEST(Directors, CutAtIntervalsToAnotherCamera)
{
  ShotCamera cameras[2];
  DRail rail;
  for (ShotCamera& camera : cameras)
    rail.AddCamera(&camera);
  DDirectorSimple director(5.0f);
  director.AddRail(&rail);
  director.SetRail(0, 0);
  for (int cut = 0; cut < 20; ++cut) {
    const DCamera* before = director.GetCurrentCamera();
    director.Step(4.0f);
    EXPECT_EQ(before, director.GetCurrentCamera());
    director.Step(1.5f);
    EXPECT_NE(before, director.GetCurrentCamera());
  }
}

TEST(Directors, LookForAGoodShot)
{
  ShotCamera cameras[5];
  DRail rail;
  for (ShotCamera& camera : cameras)
    rail.AddCamera(&camera);
  DDirectorGoodShot director;
  director.AddRail(&rail);
  director.SetRail(0, 0);
  director.Step(0); // none is good: it ends all the same
  cameras[3].good = true;
  director.Step(0);
  EXPECT_EQ(3, director.GetCurrentIndex());
  cameras[1].good = true;
  director.Step(0);
  EXPECT_EQ(3, director.GetCurrentIndex()); // it stays
}

TEST(FrameRate, FollowsTheLastFrames)
{
  for (const int method : {DFPS::COUNT_FRAMES, DFPS::AVERAGE_INTERVALS}) {
    SCOPED_TRACE(method);
    StoppedClock clock;
    DFPS fps(method, clock);
    EXPECT_EQ(0.0f, fps.GetFPS());
    const auto run = [&](int frames, int microSeconds) {
      for (int i = 0; i < frames; ++i) {
        clock.now += microSeconds;
        fps.FrameDone();
      }
    };
    run(30, 20000);
    EXPECT_NEAR(50.0, fps.GetFPS(), 2.0);
    run(1500, 10000);
    EXPECT_NEAR(100.0, fps.GetFPS(), 2.0);
  }
  ReportCapture reports;
  EXPECT_EQ(0.0f, DFPS(7).GetFPS());
  EXPECT_TRUE(reports.Contains("DFPS: unknown method (7)"));
}
