#pragma once

#include "geometry/dblock.h"
#include "geometry/dvector.h"

#include <cstdint>
#include <vector>

class DGeode;
struct GeodeHit;

// Boxes over the triangles of a model, four a node, that find in a few steps what a scan over all of them finds: the
// same triangle, the same bits. It keeps the triangles by value, and tells when the model has others by now.
class DPickTree
{
public:
  explicit DPickTree(const DGeode& geode);

  // False after a change of the model's geometry; then only destruction is left.
  bool IsOf(const DGeode& geode) const;
  // As IntersectRayGeode; geode is the model of the tree.
  // A triangle that the ray meets edge-on, within the thirtieth part of its size, is found where rounding lets a scan
  // take it for hit only as far as Reach beside its box.
  bool Intersect(const DGeode& geode, const DVector3& origin, const DVector3& direction, GeodeHit& hit) const;

private:
  // What a geob's geometry is known by.
  struct Stamp
  {
    uint64_t version;
    const void* vertex;
    const void* index;
    size_t vertices;
    size_t indices;
    uint32_t first; // number of its first triangle, in the order of a scan

    static Stamp Of(const DGeode& geode, size_t geob, uint32_t first);
    bool operator==(const Stamp&) const = default;
  };
  // Four boxes, a plane at a time: the lower ones of the three axes, then the upper ones.
  struct alignas(64) Node
  {
    float plane[2][3][4];
    int32_t link[4]; // to a node, or below 0: ~number of a packet
  };
  // Four triangles by a corner and two edges; a number comes again where there are fewer.
  struct alignas(16) Packet
  {
    float corner[3][4];
    float edge[2][3][4];
    uint32_t number[4];
  };
  struct Best
  {
    float t;
    uint32_t number;
  };
  struct Ray;
  class Builder;

  static unsigned Meet(const Node& node, const Ray& ray, float farthest, float* enter);
  static void Test(const Packet& packet, const DVector3& origin, const DVector3& direction, Best& best);
  // Asks for the memory of what waits, which would be waited for one after the other.
  void Prefetch(int link) const;
  void Descend(const Ray& ray, Best& best) const;
  void Answer(const DGeode& geode, const DVector3& origin, const DVector3& direction, const Best& best,
              GeodeHit& hit) const;

  std::vector<Stamp> stamps;
  DArray<Node> nodes;
  DArray<Packet> packets;
  int root = 0; // a link
  DVector3 min{0.0f};
  DVector3 max{0.0f};
  // Numbers of triangles with a coordinate that isn't fit for boxes: always tested.
  std::vector<uint32_t> odd;
};

// IntersectRayGeode by the model's tree, which is made at the first call and again after a change of geometry.
// Not for several threads at once.
bool PickGeode(const DGeode& geode, const DVector3& origin, const DVector3& direction, GeodeHit& hit);
