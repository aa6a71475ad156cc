#pragma once

#include "foundation/qfile.h"
#include "fuzzing/check.h"
#include "geometry/daabbtreehd.h"
#include "geometry/doverlay.h"
#include "track/rlidar.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

// Any bytes as a cloud: triangles name points that exist, and tree and paint stay inside them.
inline void FuzzLidar(std::string_view input)
{
  class Sink : public DOverlay
  {
  public:
    void Points(std::span<const DVector3> p, const DOverlayStyle&) override { Touch(p); }
    void Lines(std::span<const DVector3> p, const DOverlayStyle&) override { Touch(p); }
    void LineLoop(std::span<const DVector3> p, const DOverlayStyle&) override { Touch(p); }
    void Triangles(std::span<const DVector3> p, const DOverlayStyle&) override { Touch(p); }
    void Quads(std::span<const DVector3> p, const DOverlayStyle&) override { Touch(p); }
    void Text(const DVector3&, std::string_view, const DOverlayStyle&) override {}

  private:
    void Touch(std::span<const DVector3> p) { bits |= p.empty() ? 0 : p.front().x < p.back().x; }
    bool bits = false;
  };
  const QuietReports quiet;
  const auto bytes = std::as_bytes(std::span(input));
  QFile file("fuzz.rld", std::vector<std::byte>(bytes.begin(), bytes.end()));
  RLidar lidar;
  if (!lidar.ReadRLD(file, "fuzz.rld", RLidar::SWAP_AXES | RLidar::GET_BOUNDS)) {
    FUZZ_CHECK(lidar.PointCount() == 0 && lidar.TriangleCount() == 0);
    return;
  }
  FUZZ_CHECK(lidar.points.size() <= input.size() / 12 && lidar.triangles.size() <= input.size() / 4);
  FUZZ_CHECK(lidar.blocks.size() <= RLidar::MAX_BLOCKS);
  for (const uint32_t i : lidar.triangles)
    FUZZ_CHECK(i < lidar.points.size());
  lidar.BuildTree();
  lidar.flags = RLidar::PAINT_VERTICES | RLidar::PAINT_TRIANGLES | RLidar::PAINT_AABB;
  Sink sink;
  lidar.Paint(sink, DVector3(0.0f));
}
