#pragma once

#include <string>
#include <string_view>
#include <vector>

// One point of a closed centre line: world x and z, and the road's width to the right and left edge, in metres.
struct DemoPoint
{
  double x = 0;
  double z = 0;
  double right = 0;
  double left = 0;
};
using DemoLine = std::vector<DemoPoint>;

// The demo's own circuit: some 3 km, starting at the origin towards -z, clockwise round a lake.
DemoLine DemoLakesideLine();

// Lines of x, y, width right, width left in metres, y to the north; "#" starts a comment. False with the reason in
// problem, and line untouched, for what can't be a circuit: text, widths outside 1..50 m, fewer than 8 points,
// shorter than 300 m or longer than 30 km.
[[nodiscard]] bool DemoParseLine(std::string_view text, DemoLine& line, std::string& problem);

// Points at equal distances of about the spacing along the closed line, with its corners eased a little.
DemoLine DemoResample(const DemoLine& line, double spacing);

// Once round, in plan.
double DemoLength(const DemoLine& line);
