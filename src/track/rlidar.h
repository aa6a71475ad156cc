#pragma once

#include "geometry/dblock.h"
#include "geometry/dbox.h"
#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class DAabbTreeHd;
class DOverlay;
class QFile;

// A scanned surface: points, perhaps triangles over them, and a tree over the triangles. "track.rld" holds it.
class RLidar
{
public:
  static constexpr int MAX_BLOCKS = 500;
  enum Flag : uint32_t
  {
    PAINT_TRIANGLES = 1,
    PAINT_VERTICES = 2,
    PAINT_AABB = 4
  };
  enum ReadFlag : unsigned
  {
    SWAP_AXES = 1, // while the points arrive, as SwapAxes does it
    GET_BOUNDS = 2 // of the points as they stand in the file
  };
  // A scan file, or an object of an ASE file: a run of points with a colour of its own.
  struct Block
  {
    int start = 0;
    int size = 0;
  };

  // File names without a "/" lie in the directory "xyz" below the track's.
  explicit RLidar(std::string trackDirectory = {});
  ~RLidar();
  RLidar(const RLidar&) = delete;
  RLidar& operator=(const RLidar&) = delete;

  uint32_t flags = 0;
  DArray<DVector3> points;
  DArray<uint32_t> triangles; // three point numbers each, all in range
  std::vector<Block> blocks;  // as they stand in the file: a run may lie outside the points
  DBox bounds;                // after a read with GET_BOUNDS; of no points: zero

  int PointCount() const { return static_cast<int>(points.size()); }
  int TriangleCount() const { return static_cast<int>(triangles.size() / 3); }
  const DAabbTreeHd* Tree() const { return tree.get(); } // null before BuildTree

  // Room for them, unset; the memory that is needed is reported. Fatal without it.
  bool AllocPoints(int count);
  bool AllocTriangles(int count);
  // False (reported) when the file can't be opened, or is smaller than its counts say: then the cloud is empty.
  // Triangles that name points out of range are reported and changed to name point 0.
  [[nodiscard]] bool LoadRLD(const std::string& file, unsigned readFlags = 0);
  // The same from a stream at its start; name is for reports.
  [[nodiscard]] bool ReadRLD(QFile& stream, const char* name, unsigned readFlags = 0);
  // False (reported) when it couldn't be written.
  [[nodiscard]] bool SaveRLD(const std::string& file) const;
  // From the scan's z up to the program's y up: (x, z, -y).
  void SwapAxes();
  void Translate(const DVector3& by); // and the tree is built again, if there is one
  void BuildTree();
  void FlipTriangles();
  void DbgPrint(const char* label) const;
  std::string GetPaintFlagsString() const;

  // From scans to clouds. What fails is reported; a file is written whole or not at all.
  // All "xyz/block<6 digits>.xyz" from 1 on to the first that is missing, a line of x, y, z each point, become
  // "xyz/points.rld"; the cloud is empty after that.
  bool ConvertXYZ();
  bool RelocateRLD(); // "xyz/points.rld" with its box's middle at the origin: "xyz/points_relocated.rld"
  bool SortRLD();     // reads "xyz/points_relocated.rld" and reports its size
  // Meshes of an ASE file become the cloud, each object a block, and "track.rld".
  bool ImportASE(const std::string& file);
  bool Export(const std::string& file) const; // text: the count, and a line each point
  bool Analyze() const;                       // "data/dump/rld_report.txt", and shows it
  // "lidar convert" and its like. False for a text that is none of them.
  bool Command(std::string_view text);
  // By the flags; what is near the view position in the case of triangles.
  void Paint(DOverlay& overlay, const DVector3& viewPosition);

private:
  struct AseCounts;
  DBox FindBounds(int progressStep) const;
  bool AddScan(const std::string& path);
  bool CountASE(QFile& file, AseCounts& counts) const;
  bool ReadASE(QFile& file, AseCounts& counts);

  void Clear();
  void ReleaseBuffers();
  bool Read(QFile& file, unsigned readFlags, const char* name);
  void ReadPoints(QFile& file, unsigned readFlags);
  void ReadTriangles(QFile& file, const char* name);
  bool ReadBlocks(QFile& file);
  void CheckTriangles(size_t first, size_t end, const char* name, int& reported);
  std::string FullPath(const std::string& file) const;

  void PaintNearTriangles(DOverlay& overlay, const DVector3& viewPosition);
  void PaintTree(DOverlay& overlay);
  void CollectTree();
  void PaintPoints(DOverlay& overlay);
  bool MakeVertexArray();
  void DrawRun(DOverlay& overlay, const Block& run, size_t color) const;

  std::string trackDir;
  DVector3 translation{0.0f}; // by commands
  std::unique_ptr<DAabbTreeHd> tree;
  uint32_t vertexBuffer = 0; // OpenGL's name, or 0
  bool vertexBufferTried = false;
  bool oneBlock = false; // the file has no blocks: one for all, once the buffer stands
  int startTriangle = 0; // of PaintNearTriangles; grows with every third frame
  int frame = 0;
  // The tree's lines by colour; they change with the tree alone.
  std::array<std::vector<DVector3>, 4> treeLines;
  bool treeCollected = false;
};
