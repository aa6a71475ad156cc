#pragma once

#include "geometry/daabb.h"
#include "track/rsurfacetree.h"

#include <memory>
#include <span>
#include <string>

class PNewtonBody;
class PNewtonGeom;
class PNewtonWorld;
class RTrackNode;

// What bodies collide with: the scenery's faces as one static body of the physics, kept on the disk from one load to
// the next, and a tree of the same polygons that are surfaces.
class RTrackCollision
{
public:
  static constexpr float THICKNESS = 0.1f; // metres, of a face that is met from both sides
  struct Settings
  {
    bool addGeometry = true;
    bool optimize = true;
    bool isEditor = true; // goes on without anything to collide with
    bool keep = true;     // writes the file
  };

  // world may be null: then the trees and the file are made, and no body. It must outlive this.
  explicit RTrackCollision(PNewtonWorld* newWorld);
  ~RTrackCollision();
  RTrackCollision(const RTrackCollision&) = delete;
  RTrackCollision& operator=(const RTrackCollision&) = delete;

  // From the nodes with the flag Collide, and the file trackDir/cache/trackcollision.bin: when it can be read, its
  // faces stand, whatever the nodes are now; else it is written anew. Without such nodes a face of no use is made in
  // the editor; elsewhere that is fatal.
  void Build(std::span<const std::unique_ptr<RTrackNode>> nodes, const std::string& trackDir, const Settings& settings);
  const RPolyTree& Polys() const { return polys; }
  RPolyTree& Polys() { return polys; }
  // Around the models that were added.
  const DAABB& Box() const { return box; }
  const PNewtonBody* Body() const { return body.get(); } // null without a world

private:
  void AddFaces(PNewtonGeom& geom, const RSceneryTriangle& triangle) const;
  bool AddNodes(PNewtonGeom& geom, std::span<const std::unique_ptr<RTrackNode>> nodes);

  PNewtonWorld* world;
  RPolyTree polys;
  DAABB box = DAABB::Nothing();
  std::unique_ptr<PNewtonBody> body;
};

// False, with a report, for a model with coarser levels: its triangles aren't taken.
bool RCanBeTouched(const DGeode& geode);
