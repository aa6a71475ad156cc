#include "runtime/rscene.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "runtime/rcar.h"
#include "scene/dcamera.h"
#include "scene/worldscene.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstdlib>

void RScene::SetDirector(int mode, DDirector* director)
{
  if (mode >= 0 && mode < CAM_MODE_COUNT)
    directors[static_cast<size_t>(mode)] = director;
}

DDirector* RScene::DirectorOf(int mode) const
{
  return directors[static_cast<size_t>(mode)];
}

void RScene::SetCamMode(int mode, int previous)
{
  if (mode < 0 || mode >= CAM_MODE_COUNT) {
    QWARN("RScene:SetCamMode(%d) out of range; using CAM_MODE_CAR", mode);
    mode = CAM_MODE_CAR;
  }
  if (mode == CAM_MODE_CAR && !followedCar)
    QWARN("RScene:SetCamMode(); CAM_MODE_CAR but no car found");
  const int left = previous >= 0 && previous < CAM_MODE_COUNT ? previous : camMode;
  if (const DDirector* old = world.GetDirector(0))
    lastCameras[static_cast<size_t>(left)] = old->GetCurrentCamera();
  camMode = mode;
  if (mode == CAM_MODE_KEEP)
    return;
  int directed = mode;
  if (mode == CAM_MODE_NONE) {
    QWARN("RScene:SetCamMode(mode=%d); no known director to use. Using track", mode);
    directed = CAM_MODE_TRACK;
  }
  DDirector* director = DirectorOf(directed);
  if (!director)
    return; // the view keeps what it shows
  if (mode == CAM_MODE_HELI && director->GetNoofRails() > 0)
    director->SetRail(std::rand() % director->GetNoofRails(), 0);
  world.SetFrameport(0, director, {0, 0, world.GetWidth(), world.GetHeight()});
}

void RScene::SetView(DDirector* director, int width, int height, int x, int y)
{
  world.SetSize(width, height);
  world.SetFrameport(0, director, {x, y, world.GetWidth(), world.GetHeight()});
}

bool RScene::GetCameraOrigin(float* out) const
{
  if (camMode != CAM_MODE_TRACK && camMode != CAM_MODE_FREE && camMode != CAM_MODE_HELI) {
    QWARN("RScene::GetCameraOrigin() nyi for camMode=%d", camMode);
    return false;
  }
  const DDirector* director = DirectorOf(camMode) ? DirectorOf(camMode) : world.GetDirector(0);
  const DCamera* camera = director ? director->GetCurrentCamera() : nullptr;
  if (!camera)
    return false;
  const DVector3 from = camera->GetFrom();
  for (int i = 0; i < 3; ++i)
    out[i] = from[i];
  return true;
}

void RScene::ClearScreen()
{
  if (!DGlobals().hasContext)
    return;
  const DVector3& c = world.background;
  glClearColor(c.r, c.g, c.b, 1.0f);
  glDepthMask(GL_TRUE); // or depth isn't cleared
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

void RScene::Paint()
{
  ClearScreen();
  world.Paint();
}

void RScene::AddCar(RCar* car)
{
  if (GetNoofCars() >= MAX_CARS) {
    QWARN("Too many cars in scene already");
    return;
  }
  QWARN("RScene:AddCar(); new car doesn't have body model");
  car->SetRadius(1.0f);
  cars.push_back(car);
}

bool RScene::HasCar(const RCar* car) const
{
  return std::find(cars.begin(), cars.end(), car) != cars.end();
}

void RScene::RemoveCar(RCar* car)
{
  const auto at = std::find(cars.begin(), cars.end(), car);
  if (at == cars.end()) {
    QWARN("RScene:RemoveCar(%p); car not found\n", static_cast<void*>(car));
    return;
  }
  cars.erase(at);
  if (followedCar == car)
    followedCar = nullptr;
}
