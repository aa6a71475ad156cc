#pragma once

#include "tools/rsplitcells.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

class DGeode;
class DMaterial;
class QFileBatch;
class QInfo;
class QToolUi;
class RTrackNode;
class RTrackVRML;

// Rewrites a track so that what isn't seen can be left out: its triangles by material, node flags and square cells on
// the ground, each such group a model of its own in the sibling directory "<track>_split", with a geometry.ini to
// match. That directory must exist; nothing appears without it. Lives for one run. The track stays as it is, except
// that a material without a texture keeps a stub.
class RTrackSplitter
{
public:
  static constexpr size_t MAX_MATERIAL = 1000;
  static constexpr size_t MAX_PASS = 20;       // different flags of nodes that share a material
  static constexpr size_t MAX_VERTEX = 250000; // a cell and pass; beyond, the last one is overwritten
  static constexpr size_t MAX_PART = 63000;    // vertices a model
  static constexpr float SMALLEST_CELL = 2;    // metres; a smaller size becomes this

  // Both outlive the splitter.
  RTrackSplitter(RTrackVRML& splitTrack, QToolUi& toolUi);
  ~RTrackSplitter();
  RTrackSplitter(const RTrackSplitter&) = delete;
  RTrackSplitter& operator=(const RTrackSplitter&) = delete;

  float cellSize = 500; // metres

  // False when the user cancelled; what was done until then stays.
  bool Split();
  // Of a track's sibling: "data/tracks/<track>_split".
  static std::string OutputDirectory(const RTrackVRML& track);
  // The files that couldn't be written.
  const std::vector<std::string>& Unwritten() const { return unwritten; }

private:
  struct Piece;
  struct Material;
  struct Corner;
  bool IsUnsplittable(const RTrackNode& node) const;
  void FindMaterials();
  void GatherPieces();
  bool SplitMaterials(); // false when cancelled
  void SplitByMaterial(Material& m);
  void SplitPass(Material& m, uint32_t flags, size_t pass);
  void MakeCell(Material& m, std::span<const RSplitTriangle> cell, std::span<const Piece> pieces, size_t pass);
  std::vector<Corner> CornersOf(std::span<const RSplitTriangle> cell, std::span<const Piece> pieces) const;
  void MakeGeode(Material& m, const std::string& ending, std::span<const Corner> corners);
  void WriteModel(const DGeode& geode, const std::string& leaf);
  void CommitModels();
  void CloneUnsplittableGeodes();

  RTrackVRML& track;
  QToolUi& ui;
  std::string directory;
  std::vector<Material> materials;
  std::unique_ptr<QInfo> geometryIni;
  std::unique_ptr<QFileBatch> files;
  std::vector<std::string> unwritten;
};
