#include "app/demo/scan.h"

#include "app/demo/demomath.h"

#include <cstring>
#include <span>
#include <vector>

namespace {

constexpr double NOISE = 0.004f; // metres to either side
constexpr size_t MAX_BLOCKS = 500;

template <typename T>
void Append(std::string& out, std::span<const T> values)
{
  out.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
}

void AppendInt(std::string& out, size_t value)
{
  const auto number = static_cast<int32_t>(value);
  Append(out, std::span(&number, 1));
}

struct Scan
{
  std::vector<DVector3> points; // z is up
  std::vector<uint32_t> triangles;
  std::vector<int32_t> starts, sizes; // of the blocks

  void Add(const DemoMesh& mesh)
  {
    const auto first = static_cast<uint32_t>(points.size());
    for (const DemoVertex& v : mesh.vertices) {
      const double off = NOISE * (2 * DemoRandom(static_cast<int64_t>(points.size()), 0) - 1);
      points.emplace_back(v.position.x, -v.position.z, v.position.y + static_cast<float>(off));
    }
    for (const uint16_t i : mesh.indices)
      triangles.push_back(first + i);
  }
};

} // namespace

std::string DemoRoadScan(const DemoScenery& scenery)
{
  Scan scan;
  for (const DemoNode& node : scenery.nodes) {
    if (!node.name.starts_with("road") || node.levels.empty() || scan.starts.size() >= MAX_BLOCKS)
      continue;
    scan.starts.push_back(static_cast<int32_t>(scan.points.size()));
    for (const DemoMesh& mesh : node.levels.front().meshes)
      scan.Add(mesh);
    scan.sizes.push_back(static_cast<int32_t>(scan.points.size()) - scan.starts.back());
  }
  std::string out = "RLD0HEAD";
  AppendInt(out, scan.points.size());
  AppendInt(out, scan.triangles.size() / 3);
  out += "VERT";
  Append(out, std::span<const DVector3>(scan.points));
  out += "TRIS";
  Append(out, std::span<const uint32_t>(scan.triangles));
  out += "BLKI";
  AppendInt(out, scan.starts.size());
  Append(out, std::span<const int32_t>(scan.starts));
  Append(out, std::span<const int32_t>(scan.sizes));
  return out;
}
