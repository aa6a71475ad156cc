#pragma once

#include "geometry/daabb.h"
#include "track/rtrack.h"
#include "track/rtracknode.h"

class DAabbTreeHd;
class QInfo;
class RPolyTree;
class RTrackCollision;

// A track with its scenery: nodes, each one a model file with flags, as "geometry.ini" lists them.
class RTrackVRML : public RTrack
{
public:
  static constexpr int MAX_NODES = 10000;
  explicit RTrackVRML(const RTrackHost& newHost = {});
  ~RTrackVRML() override;

  DTable<std::unique_ptr<RTrackNode>, MAX_NODES> nodes;

  // False without "track.ini". What else can't be loaded is reported and left out.
  bool Load() override;
  void ApplySurfaceTypeToMaterials(const RSurfaceType& surface, const std::string& pattern) override;
  // All four files of the track as one set: false (reported) with all of them as they were. So it is after a load that
  // the progress callback ended: the nodes that weren't loaded would be lost.
  bool Save() override;
  bool CollisionOBB() override;
  // Straight below a position when direction is (0, -1, 0). Without a hit the place is position + direction, on the
  // first surface; a track of water gives the water's place.
  void GetSurfaceInfo(const DVector3& position, const DVector3& direction, RSurfaceInfo& result) override;
  // Time lines, trigger lines, pit lines, grid and pit positions as fences of one metre's height.
  void PaintLines(DOverlay& overlay) const override;

  bool AddNode(std::unique_ptr<RTrackNode> node);           // false when there are too many (reported)
  bool RemoveNode(int i);                                   // false out of range
  RTrackNode* FindNode(const std::string& geodeName) const; // of the first model of this very name, or null
  // Hides what the time of day or the author hides.
  void ApplyVisibility();

  void PaintCameras(DOverlay& overlay) const;
  void PaintAudio(DOverlay& overlay) const;
  void PaintWayPoints(DOverlay& overlay) const;

  // What bodies collide with, and what surface queries search; null before BuildTrees, which a load
  // into a world of physics does.
  const RTrackCollision* Collision() const { return collision.get(); }
  const RPolyTree* SurfaceTree() const { return surfaceTree.get(); }
  const DAabbTreeHd* lidarTree = nullptr; // of the scanned ground, asked by surface queries; not owned
  // From the nodes and the road splines as they are now. Gives the physics its size.
  void BuildTrees();

private:
  bool LoadScenery();
  void CreateAABBTreeCollide();
  void CreateAABBTreeSurface();
  using LodDistances = std::array<float, RTrackNode::LODS>;
  void LoadShaders();
  void LoadNodes();
  bool HasRoom() const; // for one more node; reported when not
  void LogScript() const;
  // The node of an entry "objects.<name>", read but not loaded; null when it is to be skipped.
  std::unique_ptr<RTrackNode> ReadNode(const QInfo& info, const std::string& key, const std::string& entryName) const;
  bool LoadModel(RTrackNode& node, const LodDistances& lod) const;
  void SaveNodes(QInfo& info) const;

  bool cancelled = false; // the load ended before the last entry
  std::unique_ptr<RTrackCollision> collision;
  std::unique_ptr<RPolyTree> surfaceTree;
  DAABB surfaceBox = DAABB::Nothing(); // of the models that were added to it
};
