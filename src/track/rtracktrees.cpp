// The trees of a track: what its scenery collides with, and what lies below a point.

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "physics/pnewtonworld.h"
#include "runtime/rmanager.h"
#include "track/rcollision.h"
#include "track/rlidar.h"
#include "track/rsurfacetree.h"
#include "track/rtrackvrml.h"

namespace {

constexpr const char* ADD_GEOMETRY = "dev.add_geometry_to_aabb";
constexpr uint32_t NO_SURFACE_TREE = 0x40000; // of the manager's flags
constexpr float LOWEST = 100.0f;              // metres, of a world that isn't raised
constexpr float RAISE = 50.0f;                // at the top and at the bottom
constexpr float WORLD_SCALE = 1.5f;

} // namespace

void RTrackVRML::CreateAABBTreeCollide()
{
  RTrackCollision::Settings settings;
  settings.addGeometry = Setting(ADD_GEOMETRY, true);
  settings.optimize = Setting("dev.optimize_newton_tree", true);
  settings.isEditor = !RMGR() || RMGR()->GetMode() == RManager::EDITOR;
  // Without shaders nothing can be touched; such a tree isn't for the next load.
  settings.keep = DGlobals().shadersOn;
  collision.reset(); // its body leaves the world first
  collision = std::make_unique<RTrackCollision>(host.physics);
  collision->Build({nodes.begin(), nodes.end()}, trackDir, settings);
}

void RTrackVRML::CreateAABBTreeSurface()
{
  surfaceTree = std::make_unique<RPolyTree>();
  surfaceTree->AddSplines(splines);
  if (Setting(ADD_GEOMETRY, true)) {
    QLOG("Creating surface AABB tree of all polygons\n");
    for (const auto& node : nodes) {
      DGeode* const geode = node->Geode();
      if (!geode || !(node->flags & RTrackNode::SURFACE) || !RCanBeTouched(*geode))
        continue;
      surfaceBox.Merge(geode->GetBoundingBox());
      RForEachTriangle(*geode, [&](const RSceneryTriangle& triangle) { surfaceTree->AddTriangle(triangle); });
    }
  }
  surfaceTree->Finish();
}

void RTrackVRML::BuildTrees()
{
  surfaceBox = DAABB::Nothing();
  CreateAABBTreeCollide();
  CreateAABBTreeSurface();
  DBox size = surfaceBox;
  size.Merge(collision->Box());
  if (size.max.y - size.min.y < LOWEST) {
    size.max.y += RAISE;
    size.min.y -= RAISE;
  }
  size.min *= WORLD_SCALE;
  size.max *= WORLD_SCALE;
  if (host.physics)
    host.physics->SetSize(size);
}

void RTrackVRML::GetSurfaceInfo(const DVector3& position, const DVector3& direction, RSurfaceInfo& result)
{
  constexpr auto ANSWERS = RSurfaceInfo::ON_SPLINE | RSurfaceInfo::HIT | RSurfaceInfo::ON_LIDAR | RSurfaceInfo::ON_MESH;
  const RManager* const manager = RMGR();
  result.time = manager ? static_cast<uint32_t>(manager->GetTime()) : 0;
  result.flags &= ~static_cast<uint32_t>(ANSWERS);
  const RSurfaceType* const first = surfaces.Count() > 0 ? surfaces.At(0)->get() : nullptr;
  result.surface = nullptr;
  if (surfaceTree) {
    const DAabbTreeHd* const scan = lidarTree ? lidarTree : lidar ? lidar->Tree() : nullptr;
    const RSurfaceQuery query(*surfaceTree, splines, scan, first);
    if (flags & WATER_TRACK && query.FindWater(position, direction, result.position))
      return;
    if (!manager || !(manager->flags & NO_SURFACE_TREE))
      query.Run(position, direction, result);
  }
  result.roadNoise = result.surface ? result.surface->NoiseAt(result.position.x, result.position.z) : 0;
  result.position.y += result.roadNoise;
  if (result.surface)
    return;
  result.surface = first;
  if (!(result.flags & RSurfaceInfo::HIT))
    result.grip = 1;
}
