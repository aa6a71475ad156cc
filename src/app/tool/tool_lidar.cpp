#include "app/tool/tool.h"
#include "app/tool/tooljson.h"

#include "track/rlidar.h"

#include <array>
#include <span>

namespace {

int RunInfo(const ToolArgs& args)
{
  std::string path = args.Path(0);
  if (path.find('/') == std::string::npos)
    path.insert(0, "./"); // a bare name would be looked for in a track
  RLidar lidar;
  if (!lidar.LoadRLD(path, RLidar::GET_BOUNDS))
    return ToolFail("can't read %s as a point cloud", args.Text(0).c_str());
  ToolJson blocks = ToolJson::Array();
  for (const RLidar::Block& block : lidar.blocks)
    blocks.Add(ToolJson::Ints(std::array{block.start, block.size}));
  ToolJson json = ToolJson::Object();
  json.Add("points", lidar.PointCount()).Add("triangles", lidar.TriangleCount()).Add("blocks", std::move(blocks));
  json.Add("min", ToolJson::Floats(std::span(&lidar.bounds.min.x, 3)));
  json.Add("max", ToolJson::Floats(std::span(&lidar.bounds.max.x, 3)));
  json.Print();
  return TOOL_DONE;
}

} // namespace

std::vector<ToolVerb> ToolLidarVerbs()
{
  return {
      {"lidar", "info", "What a cloud of scanned points (.rld) holds", {{"FILE"}}, RunInfo},
  };
}
