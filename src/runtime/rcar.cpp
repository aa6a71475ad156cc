#include "runtime/rcar.h"

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

RCar::~RCar() = default;

void RCar::Init(uint32_t creationFlags)
{
  flags = creationFlags | CREATED;
  RManager* manager = RMGR();
  if (manager && manager->GetScene())
    index = manager->GetScene()->GetNoofCars();
  WorldScene* world = manager ? manager->GetWorld() : nullptr;
  group = std::make_unique<WorldGroupNode>(world, "carGroup");
  if (world)
    world->AddNode(group.get());
  dir = "data/cars/" + name;
  ReadReference();
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
