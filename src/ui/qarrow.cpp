#include "ui/qarrow.h"

#include "ui/qcanvas.h"

#include <algorithm>

namespace {

enum Direction
{
  LEFT,
  RIGHT,
  UP,
  DOWN
};
struct Arrow
{
  std::string_view name;
  Direction direction;
  int count; // triangles beside one another
  bool bar;  // a line that stops them
};
constexpr Arrow ARROWS[] = {
    {"$PLAY", RIGHT, 1, false}, {"$REVERSE", LEFT, 1, false}, {"$REWIND", LEFT, 2, true}, {"$FORWARD", RIGHT, 2, true},
    {"$LEFT", LEFT, 1, false},  {"$RIGHT", RIGHT, 1, false},  {"$UP", UP, 1, false},      {"$DOWN", DOWN, 1, false},
};

// A triangle of depth columns, or rows, each two pixels longer than the one before.
void Triangle(QCanvas& cv, Direction direction, int x, int y, int depth)
{
  for (int i = 0; i < depth; ++i) {
    const int half = direction == LEFT || direction == UP ? i : depth - 1 - i;
    if (direction == LEFT || direction == RIGHT)
      cv.Rectfill(x + i, y - half, 1, 2 * half + 1);
    else
      cv.Rectfill(x - half, y + i, 2 * half + 1, 1);
  }
}

} // namespace

bool QPaintArrow(QCanvas& cv, std::string_view name, const QRect& room)
{
  const auto* arrow =
      std::find_if(std::begin(ARROWS), std::end(ARROWS), [&](const Arrow& a) { return a.name == name; });
  if (arrow == std::end(ARROWS))
    return false;
  const int depth = std::clamp(std::min(room.wid, room.hgt) / 3, 3, 9);
  const int length = depth * arrow->count + (arrow->bar ? 3 : 0);
  const bool across = arrow->direction == LEFT || arrow->direction == RIGHT;
  const int middleX = room.x + room.wid / 2;
  const int middleY = room.y + room.hgt / 2;
  if (!across) {
    Triangle(cv, arrow->direction, middleX, middleY - depth / 2, depth);
    return true;
  }
  int x = middleX - length / 2;
  if (arrow->bar && arrow->direction == LEFT) {
    cv.Rectfill(x, middleY - depth + 1, 2, 2 * depth - 1);
    x += 3;
  }
  for (int i = 0; i < arrow->count; ++i, x += depth)
    Triangle(cv, arrow->direction, x, middleY, depth);
  if (arrow->bar && arrow->direction == RIGHT)
    cv.Rectfill(x + 1, middleY - depth + 1, 2, 2 * depth - 1);
  return true;
}
