#include "runtime/rscene.h"

#include "runtime/rcar.h"
#include "scene/dcamera.h"
#include "scene/worldscene.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A director with one camera at a place.
struct OneCamera
{
  explicit OneCamera(const DVector3& place)
  {
    camera.Go(place, DVector3(0.0f), 0, 0, 0);
    rail.AddCamera(&camera);
    director.AddRail(&rail);
    director.SetRail(0, 0);
  }
  DCameraAnimated camera;
  DRail rail;
  DDirector director;
};

} // namespace

TEST(CamMode, ChoosesTheDirectorOrReports)
{
  WorldScene world;
  RScene scene(world);
  OneCamera track({1, 0, 0}), freed({2, 0, 0}), heli({3, 0, 0});
  scene.SetDirector(RScene::CAM_MODE_TRACK, &track.director);
  scene.SetDirector(RScene::CAM_MODE_FREE, &freed.director);
  scene.SetDirector(RScene::CAM_MODE_HELI, &heli.director);
  const struct
  {
    int mode, becomes;
    const DDirector* shown; // null: as before
    const char* report;     // null: none
  } cases[] = {
      {1, 1, &track.director, nullptr},
      {2, 2, &freed.director, nullptr},
      {3, 3, &heli.director, nullptr},
      {4, 4, &track.director, "RScene:SetCamMode(mode=4); no known director to use. Using track"},
      {5, 5, nullptr, nullptr},
      {0, 0, nullptr, "RScene:SetCamMode(); CAM_MODE_CAR but no car found"},
      {-1, 0, nullptr, "RScene:SetCamMode(-1) out of range; using CAM_MODE_CAR"},
      {6, 0, nullptr, "RScene:SetCamMode(6) out of range; using CAM_MODE_CAR"},
  };
  const DDirector* shown = nullptr;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mode);
    ReportCapture reports;
    scene.SetCamMode(c.mode);
    EXPECT_EQ(c.becomes, scene.GetCamMode());
    shown = c.shown ? c.shown : shown;
    EXPECT_EQ(shown, world.GetDirector(0));
    EXPECT_EQ(c.report != nullptr, reports.Problems() > 0) << reports.All();
    EXPECT_TRUE(!c.report || reports.Contains(c.report)) << reports.All();
  }
}

TEST(CamMode, TellsWhereTheCameraIs)
{
  WorldScene world;
  RScene scene(world);
  OneCamera track({1, 2, 3}), view({4, 5, 6});
  scene.SetDirector(RScene::CAM_MODE_TRACK, &track.director);
  scene.SetView(&view.director, 640, 480);
  float at[3] = {};
  scene.SetCamMode(RScene::CAM_MODE_FREE); // no director of its own: the one that the view was given
  EXPECT_TRUE(scene.GetCameraOrigin(at));
  EXPECT_EQ(4.0f, at[0]);
  scene.SetCamMode(RScene::CAM_MODE_TRACK);
  EXPECT_TRUE(scene.GetCameraOrigin(at));
  EXPECT_EQ(3.0f, at[2]);
  ReportCapture reports;
  scene.SetCamMode(RScene::CAM_MODE_KEEP);
  EXPECT_FALSE(scene.GetCameraOrigin(at));
  EXPECT_TRUE(reports.Contains("RScene::GetCameraOrigin() nyi for camMode=5"));
}

TEST(Cars, FillTheSceneToItsLimit)
{
  ReportCapture reports;
  WorldScene world;
  RScene scene(world);
  std::vector<std::unique_ptr<RCar>> cars;
  while (cars.size() <= RScene::MAX_CARS)
    cars.push_back(std::make_unique<RCar>("any", 0));
  const auto car = [&cars](int i) { return cars[static_cast<size_t>(i)].get(); };
  for (int i = 0; i <= RScene::MAX_CARS; ++i)
    scene.AddCar(car(i));
  EXPECT_EQ(RScene::MAX_CARS, scene.GetNoofCars());
  EXPECT_EQ(1, reports.Count("Too many cars in scene already"));
  scene.RemoveCar(car(0));
  EXPECT_EQ(0, reports.Count("car not found"));
  scene.RemoveCar(car(0));
  EXPECT_EQ(1, reports.Count("car not found"));
}
