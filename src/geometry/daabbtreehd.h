#pragma once

#include "geometry/daabb.h"
#include "geometry/dblock.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

class DAabbTreeHd;

// A question to a DAabbTreeHd, with what helps the next one. Each thread has its own.
struct DAabbTreeHdQuery
{
  DVector3 from{0.0f};
  DVector3 direction{0, -1, 0};
  float length = 1; // in directions
  uint32_t flags = 0;
  int sampleCount = 1;
  std::vector<DVector3> samples; // where each search starts; used from two samples on
  DAABB box;                     // of the last search
  int cachedNode = -1;           // the leaf of the last hit, by the tree's own number; -1: none
  DVector3 hitPosition{0.0f};
  DVector3 hitNormal{0, 1, 0}; // never pointing down
};

// Which triangle does a ray hit: a tree of four children a node, by x and z, over the triangles of one large mesh.
// Numbers list the triangles of a leaf; none is copied. Vertices and indices must outlive the tree, unchanged.
class DAabbTreeHd
{
public:
  static constexpr int MAX_TRIANGLES_PER_NODE = 20;

  // Three indices a face.
  DAabbTreeHd(std::span<const DVector3> vertices, std::span<const uint32_t> indices);

  // At least 1. Too late after the build (reported).
  void SetMaxTrianglesPerNode(int n);
  int MaxTrianglesPerNode() const { return maxTrianglesPerNode; }
  // Does nothing without vertices or faces, or when the tree stands; with an index out of range it reports that and
  // the tree stays empty.
  void Build();

  // The first hit in the tree's order, not the nearest; of several samples the mean of their hits. False without a
  // hit, and with several samples when the last one had none.
  bool Query(DAabbTreeHdQuery& query) const;

  int VertexCount() const { return static_cast<int>(vertex.size()); }
  int FaceCount() const { return static_cast<int>(index.size() / 3); }
  int NodeCount() const { return nodeCount; } // with the root
  int Depth() const { return depth; }
  std::array<DVector3, 3> Corners(int triangle) const;
  // Each node from the root, at depth 0, down to maxDepth, parents first, with its triangles in the tree's order; none
  // when it has children instead.
  using Visitor = std::function<void(const DBox& box, int depth, std::span<const int> triangles)>;
  void Walk(int maxDepth, const Visitor& visit) const;

private:
  class Builder;
  // The boxes of up to four children, an axis at a time. A link of 0 or more is a node, below it is a leaf by its first
  // place among the leaves' triangles and its count; a child that doesn't exist has a box that meets nothing.
  struct alignas(16) Node
  {
    float minX[4], maxX[4];
    float minZ[4], maxZ[4];
    float minY[4], maxY[4];
    int link[4];
    int count[4]; // of a leaf's triangles
  };
  struct Child
  {
    int link;
    int count;
  };
  // A leaf with what stands in its parent.
  struct Leaf
  {
    int number; // for cachedNode
    int first;
    int count;
    float x, z; // of its box's lower corner
    float side; // of its box, the longer one
  };
  struct Ray;
  static float Longer(float sideX, float sideZ) { return sideX > sideZ ? sideX : sideZ; }
  Leaf LeafAt(const Node& node, size_t q) const;
  Leaf RootLeaf() const;
  static unsigned Overlap(const Node& node, const Ray& ray);
  bool Search(DAabbTreeHdQuery& query, const Ray& ray, int at) const;
  bool SearchLeaf(DAabbTreeHdQuery& query, const Ray& ray, const Leaf& leaf) const;
  bool SearchCached(DAabbTreeHdQuery& query, const Ray& ray) const;
  bool Test(DAabbTreeHdQuery& query, std::span<const int> triangles, int leaf) const;
  const int* CellsOf(const Leaf& leaf) const { return &leafData[2 * static_cast<size_t>(leaf.first)]; }
  const int* TrianglesOf(const Leaf& leaf) const { return CellsOf(leaf) + leaf.count; }
  void Prefetch(const Node& node, size_t q) const;
  struct FourHits;
  FourHits TestFour(const DAabbTreeHdQuery& query, const int* four) const;
  bool SearchOne(DAabbTreeHdQuery& query) const;
  bool SearchSamples(DAabbTreeHdQuery& query) const;
  void WalkNode(Child child, const DBox& box, int level, int maxDepth, const Visitor& visit) const;

  std::span<const DVector3> vertex;
  std::span<const uint32_t> index;
  int maxTrianglesPerNode = MAX_TRIANGLES_PER_NODE;
  // Leaf by leaf: where each triangle lies, in cells of the leaf, then the triangles' numbers.
  DArray<int> leafData;
  DArray<Node> nodes;
  DBox rootBox;
  Child root{};
  bool built = false;
  int depth = 0;
  int nodeCount = 0;
};
