#include "track/rtrack.h"

#include <gtest/gtest.h>

namespace {

// Stands at the origin, measures along x, radius 100 m.
void Place(RTrackCam& cam, uint32_t flags)
{
  cam.flags = flags;
  cam.pos2 = {10, 0, 0};
  cam.radius = 100;
  cam.zoomEdge = 40;
  cam.zoomClose = 60;
  cam.zoomFar = 20;
}

} // namespace

TEST(TrackCam, ZoomsByItsRule)
{
  // Along the line the car keeps a size that changes evenly from the nearest point to the radius.
  const struct
  {
    uint32_t flags;
    DVector3 car;
    float along, zoom;
  } cases[] = {
      {RTrackCam::ZOOM_FIXED | RTrackCam::ZOOM_ALONG, {50, 0, 0}, 0.5f, 60},
      {RTrackCam::ZOOM_ALONG, {0, 0, 30}, 0, 60},
      {RTrackCam::ZOOM_ALONG, {100, 0, 0}, 1, 2000 / 100.15f},
      {RTrackCam::ZOOM_ALONG, {300, 0, 0}, 1, 2000 / 300.15f},
      {RTrackCam::ZOOM_ALONG, {-100, 0, 0}, -1, 4000 / 100.15f},
      {RTrackCam::ZOOM_ALONG, {-50, 0, 7}, -0.5f, (60 / 0.15f + (4000 - 60 / 0.15f) * 0.5f) / 50.15f},
      {0, {0, 0, 0}, 0, 60},
      {0, {0, 0, 50}, 0, 55},
      {0, {0, 500, 0}, 0, 40},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.flags << " " << c.car.x << " " << c.car.y << " " << c.car.z);
    RTrackCam cam;
    Place(cam, c.flags);
    cam.Aim(c.car);
    EXPECT_FLOAT_EQ(c.along, cam.along);
    EXPECT_NEAR(c.zoom, cam.zoomNow, 0.001);
    EXPECT_EQ(cam.pos, cam.posNow);
  }
}

TEST(TrackCam, RidesItsDolly)
{
  RTrackCam cam;
  Place(cam, RTrackCam::DOLLY);
  cam.posDolly = {0, 0, 8};
  for (const auto& [x, z] : {std::pair(-500.0f, 0.0f), {0.0f, 4.0f}, {50.0f, 6.0f}, {100.0f, 8.0f}}) {
    cam.Aim({x, 0, 0});
    EXPECT_FLOAT_EQ(z, cam.posNow.z) << x;
  }
}

TEST(TrackCam, TakesUpAndLosesCars)
{
  RTrackCam cam;
  Place(cam, 0);
  EXPECT_TRUE(cam.IsCandidate({100, 0, 0}));
  EXPECT_FALSE(cam.IsCandidate({101, 0, 0}));
  EXPECT_FALSE(cam.HasLost({141, 0, 0}));
  EXPECT_TRUE(cam.HasLost({142, 0, 0}));
  cam.radius = 1;
  EXPECT_FALSE(cam.HasLost({10, 0, 0}));
  EXPECT_TRUE(cam.HasLost({10.1f, 0, 0}));
}

TEST(TrackDirector, StaysUntilTheCarIsLost)
{
  RTrack track;
  for (float x : {0.0f, 1000.0f, 2000.0f}) {
    auto cam = std::make_unique<RTrackCam>();
    Place(*cam, RTrackCam::ZOOM_FIXED);
    cam->pos.x = x;
    ASSERT_TRUE(track.AddTrackCam(std::move(cam)));
  }
  track.ListCameras();
  EXPECT_EQ(&track.GetTrackCam(0)->camera, track.director.GetCurrentCamera());
  const struct
  {
    float x;
    int camera;
  } drive[] = {{0, 0}, {130, 0}, {500, 0}, {950, 1}, {1130, 1}, {2050, 2}, {10, 0}};
  for (const auto& d : drive) {
    for (const auto& cam : track.trackCams)
      cam->camera.SetCar({d.x, 0, 5}, {30, 0, 0});
    track.director.Step(0.02f);
    EXPECT_EQ(d.camera, track.director.GetCurrentIndex()) << d.x;
  }
  DCamera& view = *track.director.GetCurrentCamera();
  view.Update();
  EXPECT_EQ(60, view.GetFOV());
  EXPECT_EQ(DVector3(0.0f), view.GetFrom());
  EXPECT_EQ(DVector3(10, 0, 5), view.GetTo());
}

TEST(SpringMassDamper, FollowsAtOnceWithoutSpringOrRoom)
{
  for (const auto& [k, maxDist] : {std::pair(0.0f, 10.0f), {5.0f, 0.0f}}) {
    RSMD smd;
    smd.k = k;
    smd.maxDist = maxDist;
    smd.force = {1, 1, 1};
    smd.SetTarget({3, 4, 5}, {1, 0, 0});
    EXPECT_EQ(DVector3(3, 4, 5), smd.position);
    EXPECT_EQ(DVector3(0.0f), smd.force);
    smd.Step(0.1f);
    EXPECT_EQ(DVector3(3, 4, 5), smd.position);
  }
}

TEST(SpringMassDamper, SwingsAfterItsTarget)
{
  RSMD smd;
  smd.k = 100;
  smd.mass = 2;
  smd.damping = 4;
  smd.velocity = {0, 1, 0};
  smd.SetTarget({1, 0, 0}, {10, 0, 0});
  smd.Step(0.1f);
  // The target has moved to x = 2: force 200, acceleration (200 + 4 * 10) / 2 and -4 / 2.
  EXPECT_NEAR(0, glm::distance(DVector3(200, 0, 0), smd.force), 0.001);
  EXPECT_NEAR(0, glm::distance(DVector3(0.6f, 0.09f, 0), smd.position), 0.0001);
  EXPECT_NEAR(0, glm::distance(DVector3(12, 0.8f, 0), smd.velocity), 0.0001);
}

TEST(SpringMassDamper, NeverStaysFarBehind)
{
  const struct
  {
    float distance, after;
  } cases[] = {{9, 9}, {10.005f, 10.005f}, {20, 10}, {33, 0}};
  for (const auto& c : cases) {
    RSMD smd;
    smd.k = 1e-9f;
    smd.damping = 0;
    smd.SetTarget({c.distance, 0, 0}, {0, 0, 0});
    smd.Step(0.001f);
    EXPECT_NEAR(c.after, glm::distance(smd.target.position, smd.position), 0.001) << c.distance;
  }
}

TEST(TimeLine, IsCrossedNearItsPointsOnly)
{
  const RTimeLine line({-4, 0, 0}, {4, 0, 0});
  EXPECT_EQ(64, line.lengthSq);
  EXPECT_NEAR(1, std::abs(line.plane.normal.z), 0.0001);
  const struct
  {
    DVector3 a, b;
    bool crossed;
  } cases[] = {
      {{0, 0, -1}, {0, 0, 1}, true},  {{0, 0, 1}, {0, 0, -1}, true},  {{0, 0, 1}, {0, 0, 2}, false},
      {{5, 0, -1}, {5, 0, 1}, false}, {{0, 0, -9}, {0, 0, 9}, false}, {{3, 2, -1}, {3, 2, 1}, true},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.crossed, line.IsCrossed(c.a, c.b)) << c.a.x << " " << c.a.z << " " << c.b.z;
  const RTimeLine point({1, 1, 1}, {1, 1, 1});
  EXPECT_FALSE(point.IsCrossed({1, 1, 0}, {1, 1, 2}));
}
