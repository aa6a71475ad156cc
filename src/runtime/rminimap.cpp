#include "runtime/rminimap.h"

#include "foundation/qreport.h"

#include <algorithm>

DVector2 RMiniMap::ToMap(const DVector3& position) const
{
  return corner + (DVector2(position.x, position.z) - origin) * scale;
}

void RMiniMap::Bake(std::span<const Edge> lines, bool closed, int paintStart, int paintEnd, const QRect& rect)
{
  Clear();
  const int count = static_cast<int>(lines.size());
  if (count < 2) {
    QLOG("No splines found; minimap is disabled.");
    return;
  }
  const int end = paintEnd == 0 ? count : paintEnd;
  if (end > count) {
    QWARN("spline paintEnd > lines (%d>%d); not painting road", end, count);
    return;
  }
  DVector2 low(lines[0].left.x, lines[0].left.z), high = low;
  for (const Edge& e : lines)
    for (const DVector3& p : {e.left, e.right}) {
      low = glm::min(low, DVector2(p.x, p.z));
      high = glm::max(high, DVector2(p.x, p.z));
    }
  const DVector2 size = glm::max(high - low, DVector2(1.0f));
  scale = std::min(static_cast<float>(rect.wid) / size.x, static_cast<float>(rect.hgt) / size.y);
  origin = low;
  const DVector2 room = DVector2(rect.wid, rect.hgt) - size * scale;
  corner = DVector2(rect.x, rect.y) + room * 0.5f;
  const bool all = end == count && paintStart <= 0;
  for (int i = std::max(paintStart, 0); i < end; ++i) {
    if (i + 1 >= end && !(closed && all))
      break;
    const Edge& a = lines[static_cast<size_t>(i)];
    const Edge& b = lines[static_cast<size_t>((i + 1) % count)];
    for (const DVector3& p : {a.left, b.left, a.right, b.right})
      outline.push_back(ToMap(p));
  }
}
