#include "foundation/qinfo.h"
#include "scene/danimatedcamera.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

DCameraKeyFrame KeyAt(float t, float x = 0)
{
  DCameraKeyFrame key;
  key.t = t;
  key.x = x;
  return key;
}

std::vector<float> Times(const DAnimatedCamera& path)
{
  std::vector<float> times;
  for (int i = 0; i < path.GetCount(); ++i)
    times.push_back(path.GetKeyFrame(i)->t);
  return times;
}

} // namespace

TEST(Keyframes, StandInTheOrderOfThePath)
{
  using Floats = std::vector<float>;
  const struct
  {
    const char* what;
    unsigned flags;
    Floats set;
    Floats order;
    float duration;
  } cases[] = {
      {"open", 0, {5, 1, 3}, {1, 3, 5}, 4},
      {"closed keeps its first", DAnimatedCamera::CLOSED, {5, 1, 3}, {5, 1, 3}, 2},
      {"periodic", DAnimatedCamera::PERIODIC, {0, 300, 200, 100}, {0, 100, 200, 300}, 300},
      {"over the period's end", DAnimatedCamera::PERIODIC, {50, 900, 100, 950}, {900, 950, 50, 100}, 200},
      {"two, the short way", DAnimatedCamera::PERIODIC, {0, 600}, {600, 0}, 400},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    DAnimatedCamera path(10);
    if (c.flags & DAnimatedCamera::PERIODIC)
      path.SetWrap(1000);
    path.SetFlags(c.flags);
    for (const float t : c.set)
      EXPECT_TRUE(path.SetKeyFrame(KeyAt(t)));
    EXPECT_EQ(c.order, Times(path));
    EXPECT_EQ(c.duration, path.GetDuration());
  }
}

TEST(Keyframes, AreSetFoundAndRemoved)
{
  ReportCapture reports;
  DAnimatedCamera path(3);
  EXPECT_EQ(0.0f, path.GetFirstTime() + path.GetLastTime() + path.GetMinTime() + path.GetMaxTime());
  for (const float t : {1.0f, 2.0f, 3.0f})
    EXPECT_TRUE(path.SetKeyFrame(KeyAt(t)));
  EXPECT_FALSE(path.SetKeyFrame(KeyAt(4)));
  EXPECT_TRUE(reports.Contains("DAnimatedCamera:SetKeyFrame() out of keyframe space"));
  EXPECT_TRUE(path.SetKeyFrame(KeyAt(2, 7.0f))); // replaces, even when full
  EXPECT_EQ(3, path.GetCount());
  EXPECT_EQ(7.0f, path.GetKeyFrame(path.Find(2))->x);
  EXPECT_EQ(-1, path.Find(2.0001f));
  EXPECT_EQ(nullptr, path.GetKeyFrame(3));
  EXPECT_FALSE(path.RemoveKeyFrame(3));
  EXPECT_TRUE(reports.Contains("DAnimatedCamera::RemoveKeyFrame(3) out of range 0..2"));
  EXPECT_TRUE(path.RemoveKeyFrame(0));
  EXPECT_EQ((std::vector<float>{2, 3}), Times(path));
}

TEST(Keyframes, KnowWhatLiesOnThePath)
{
  DAnimatedCamera open(10);
  open.SetKeyFrame(KeyAt(100));
  EXPECT_FALSE(open.IsInside(100)); // one keyframe is no path
  open.SetKeyFrame(KeyAt(200));
  DAnimatedCamera overEnd(10);
  overEnd.SetWrap(1000);
  overEnd.SetKeyFrame(KeyAt(900));
  overEnd.SetKeyFrame(KeyAt(50));
  const struct
  {
    float t;
    bool inOpen;
    bool inOverEnd;
  } cases[] = {{100, true, false}, {200, true, false}, {201, false, false}, {899, false, false},
               {950, false, true}, {20, false, true},  {51, false, false},  {-50, false, true}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.inOpen, open.IsInside(c.t)) << c.t;
    EXPECT_EQ(c.inOverEnd, overEnd.IsInside(c.t)) << c.t;
  }
}

TEST(Keyframes, CurvesRunThroughThem)
{
  DCameraKeyFrame out = KeyAt(-1, -1);
  DAnimatedCamera path(10);
  path.Evaluate(5, out);
  EXPECT_EQ(-1.0f, out.t); // no keyframes: nothing happens
  const DCameraKeyFrame first{10, 1, 2, 3, 4, 5, 6, 7};
  path.SetKeyFrame(first);
  path.Evaluate(99, out);
  EXPECT_EQ(99.0f, out.t);
  EXPECT_EQ(6.0f, out.roll);
  for (const float t : {20.0f, 40.0f, 50.0f, 70.0f})
    path.SetKeyFrame({t, t - 9, 2, 3, 4, 5, 6, 57});
  for (int i = 0; i < path.GetCount(); ++i) {
    path.Evaluate(path.GetKeyFrame(i)->t, out);
    EXPECT_EQ(path.GetKeyFrame(i)->x, out.x);
    EXPECT_EQ(path.GetKeyFrame(i)->fov, out.fov);
  }
  path.Evaluate(30, out);
  EXPECT_NEAR(21.0f, out.x, 1e-4); // x grows evenly with t
  EXPECT_EQ(2.0f, out.y);
  for (const float beyond : {-1000.0f, 1000.0f}) {
    path.Evaluate(beyond, out);
    EXPECT_EQ(beyond < 0 ? 1.0f : 61.0f, out.x);
  }
}

TEST(Keyframes, APeriodicPathCountsFromItsFirst)
{
  DAnimatedCamera path(10);
  path.SetWrap(1000);
  for (const auto& [t, x] : {std::pair(900.0f, 0.0f), {950.0f, 50.0f}, {50.0f, 150.0f}})
    path.SetKeyFrame(KeyAt(t, x));
  for (const float along : {0.0f, 50.0f, 150.0f}) {
    DCameraKeyFrame out;
    path.Evaluate(along, out);
    EXPECT_EQ(along, out.x);
    EXPECT_EQ(along, out.t);
  }
}

TEST(Keyframes, GoThroughAFileInItsOrder)
{
  DAnimatedCamera path(10);
  path.SetKeyFrame({1, 2, 3, 4, 5, 6, 7, 8});
  QInfo info("keys", QInfo::NO_READ);
  path.Save(info, "kf");
  const std::string text = info.WriteToText();
  size_t at = 0;
  for (const char* key : {"count=1", "fov=8.", "x=2.", "y=3.", "z=4.", "pitch=6.", "roll=7.", "yaw=5.", "t=1."}) {
    at = text.find(key, at);
    ASSERT_NE(std::string::npos, at) << key << " in\n" << text;
  }
  DAnimatedCamera read(10);
  read.Load(info, "kf");
  ASSERT_EQ(1, read.GetCount());
  EXPECT_EQ(5.0f, read.GetKeyFrame(0)->yaw);

  ReportCapture reports;
  info.SetInt("kf.count", 4000000);
  read.Load(info, "kf");
  EXPECT_EQ(10, read.GetCount());
  EXPECT_TRUE(reports.Contains("DAnimatedCamera:Load(); more keyframes in file than allocated; capping"));
  info.SetInt("kf.count", -3);
  read.Load(info, "kf");
  EXPECT_EQ(0, read.GetCount());
  info.MarkWritten();
}
