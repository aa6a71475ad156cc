#include "track/rcollision.h"

#include "foundation/qdirectory.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dshader.h"
#include "physics/pnewtonbody.h"
#include "physics/pnewtongeom.h"
#include "physics/pnewtonworld.h"
#include "track/rtracknode.h"

#include <sys/stat.h>

RTrackCollision::RTrackCollision(PNewtonWorld* newWorld) : world(newWorld)
{}

RTrackCollision::~RTrackCollision() = default;

bool RCanBeTouched(const DGeode& geode)
{
  if (!geode.lod[1])
    return true;
  QERR("* BUG?: RTrackVRML:CreateAABBTree(); LOD model seen in nodes?!");
  return false;
}

// Another face lies a body's thickness behind each one, turned to the other side, unless the shader culls.
void RTrackCollision::AddFaces(PNewtonGeom& geom, const RSceneryTriangle& triangle) const
{
  const auto& corner = triangle.corner;
  const int material = triangle.shader->materialId;
  geom.AddFace(3, &corner[0].x, sizeof(DVector3), material);
  if (triangle.shader->shaderFlags & (DShader::CULL_BACK | DShader::CULL_FRONT))
    return;
  const DVector3 down = DNormalized(glm::cross(corner[1] - corner[0], corner[2] - corner[0])) * -THICKNESS;
  const std::array<DVector3, 3> behind{corner[2] + down, corner[1] + down, corner[0] + down};
  geom.AddFace(3, &behind[0].x, sizeof(DVector3), material);
}

bool RTrackCollision::AddNodes(PNewtonGeom& geom, std::span<const std::unique_ptr<RTrackNode>> nodes)
{
  const bool isBuilding = !(geom.flags & PNewtonGeom::FINISHED);
  bool added = false;
  for (const auto& node : nodes) {
    DGeode* const geode = node->Geode();
    if (!geode || !(node->flags & RTrackNode::COLLIDE) || !RCanBeTouched(*geode))
      continue;
    added = true;
    box.Merge(geode->GetBoundingBox());
    RForEachTriangle(*geode, [&](const RSceneryTriangle& triangle) {
      if (isBuilding)
        AddFaces(geom, triangle);
      if (node->flags & RTrackNode::SURFACE)
        polys.AddTriangle(triangle);
    });
  }
  return added;
}

void RTrackCollision::Build(std::span<const std::unique_ptr<RTrackNode>> nodes, const std::string& trackDir,
                            const Settings& settings)
{
  const std::string directory = trackDir + "/cache";
  const std::string file = directory + "/trackcollision.bin";
  ::mkdir(directory.c_str(), 0755); // saving tells when that failed
  PNewtonGeom geom(world);
  if (QFileInfo info; QDirectory::GetInfo(file, info) && geom.LoadTree(file))
    QLOG("NT: Track collision tree loaded from '%s'.\n", file.c_str());
  const bool isBuilding = !(geom.flags & PNewtonGeom::FINISHED);
  if (isBuilding) {
    geom.BeginTree();
    QLOG("NT: begin tree build\n");
  }
  const bool added = settings.addGeometry && AddNodes(geom, nodes);
  if (!added && !settings.isEditor)
    qfatal("None of the track's nodes in geometry.ini have the COLLIDE flag; nothing to collide; cars get stuck in "
           "Newton!\nRemedy: set collide flag (%d) in geometry.ini, delete the track's cache directory and try again.",
           static_cast<int>(RTrackNode::COLLIDE));
  if (!added && isBuilding) {
    constexpr float STUB[6][3] = {{0, 0, 0}, {1, 0, 1}, {2, 1, 2}, {3, 2, 3}, {4, 3, 4}, {5, 4, 5}};
    geom.AddFace(6, STUB[0], sizeof(STUB[0]), 1);
  }
  polys.Finish();
  if (isBuilding) {
    QLOG("NT: end coll build - optimize tree (optionally)\n");
    geom.EndTreeBuild(settings.optimize);
    if (settings.keep) {
      QLOG("NT: save tree\n");
      static_cast<void>(geom.SaveTree(file)); // reported; what is in memory serves
    }
  }
  if (!world)
    return;
  body = std::make_unique<PNewtonBody>(*world, geom);
  body->SetFreeze(true);
  body->SetAutoSleep(false);
  body->SetMass(0);
  body->SetVelocity(DVector3(0.0f));
}
