#include "runtime/rcar.h"

#include "foundation/qappcore.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "runtime/rmanager.h"
#include "runtime/rscene.h"
#include "scene/worldscene.h"

RCar::RCar(std::string_view carName, uint32_t creationFlags) : name(carName)
{
  QLOG("RCar ctor (%s)\n", name.c_str());
  Init(creationFlags);
}

RCar::~RCar()
{
  if (RManager* manager = RMGR())
    if (RScene* scene = manager->GetScene(); scene && scene->HasCar(this))
      scene->RemoveCar(this);
  if (QAppCore* application = QAppCore::Get())
    application->GetSystem().RemoveChild(system);
}

void RCar::Init(uint32_t creationFlags)
{
  flags = creationFlags | CREATED;
  RManager* manager = RMGR();
  if (manager && manager->GetScene())
    index = manager->GetScene()->GetNoofCars();
  Publish();
  WorldScene* world = manager ? manager->GetWorld() : nullptr;
  group = std::make_unique<WorldGroupNode>(world, "carGroup");
  if (world)
    world->AddNode(group.get());
  dir = "data/cars/" + name;
  ReadReference();
  CreateCameras();
}

void RCar::Publish()
{
  QAppCore* application = QAppCore::Get();
  if (!application)
    return;
  system = application->GetSystem().AddChild(("car" + std::to_string(index)).c_str());
  QSystemNode& telemetry = *system->AddChild("telemetry");
  telemetry.Publish("pos_x", "m", body.position.x);
  telemetry.Publish("pos_y", "m", body.position.y);
  telemetry.Publish("pos_z", "m", body.position.z);
  telemetry.Publish("vel_x", "m/s", body.velocity.x);
  telemetry.Publish("vel_y", "m/s", body.velocity.y);
  telemetry.Publish("vel_z", "m/s", body.velocity.z);
  telemetry.Publish("quat_x", "", body.rotation.x);
  telemetry.Publish("quat_y", "", body.rotation.y);
  telemetry.Publish("quat_z", "", body.rotation.z);
  telemetry.Publish("quat_w", "", body.rotation.w);
}

void RCar::CreateCameras()
{
  for (auto& camera : cameras) {
    camera = std::make_unique<RCamera>(*this);
    cameraSet.AddCamera(camera.get());
  }
  director.AddRail(&cameraSet);
  director.SetRail(0, 0);
}

// A skinned car is another car's model: its directory holds nothing but this file.
void RCar::ReadReference()
{
  const std::string path = dir + "/reference.ini";
  if (!QFileExists(path.c_str()))
    return;
  const QInfo reference(path);
  std::string other;
  if (reference.GetString("reference.car", other) && !other.empty())
    dir = "data/cars/" + other;
  skin = reference.GetInt("reference.skin");
  QLOG("Reference.ini found; skinned car in '%s' (skin=%d)\n", dir.c_str(), skin);
}
