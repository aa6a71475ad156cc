#include "editor/splinepaint.h"

#include "geometry/doverlay.h"
#include "track/rmarshalposts.h"
#include "track/rsplinerep.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace {

DOverlayStyle Wire(const QColor& color, float width)
{
  DOverlayStyle style;
  style.color = color;
  style.width = width;
  style.blend = true;
  style.offset = 10;
  return style;
}

// One call for a colour: a road has thousands of triangles.
void PaintOutlines(const RSplineRep& splines, DOverlay& overlay)
{
  std::vector<DVector3> edges, thirdEdges;
  edges.reserve(splines.tris.size() * 6);
  thirdEdges.reserve(splines.tris.size());
  bool even = true;
  for (const RSplineTri& tri : splines.tris) {
    edges.insert(edges.end(), {tri.p[0], tri.p[1], tri.p[1], tri.p[2]});
    auto& third = even ? thirdEdges : edges;
    third.insert(third.end(), {tri.p[2], tri.p[0]});
    even = !even;
  }
  overlay.Lines(edges, Wire(QColor(255, 0, 0, 178), 2.5f));
  overlay.Lines(thirdEdges, Wire(QColor(0, 0, 252, 252), 2.5f));
  if (!splines.tris.empty())
    overlay.Line(splines.tris[0].p[0], splines.tris[0].p[1], Wire(QColor(0, 255, 0, 230), 10));
}

void PaintSelected(const RSplineRep& splines, std::span<const int> selected, DOverlay& overlay)
{
  const auto perLine = static_cast<size_t>(std::max(splines.trisPerLine, 0));
  std::vector<DVector3> edges;
  for (const int index : selected) {
    const auto line = static_cast<size_t>(std::clamp(index, 0, std::max(splines.LineCount() - 1, 0)));
    for (size_t t = line * perLine; t < std::min((line + 1) * perLine, splines.tris.size()); ++t) {
      const auto& p = splines.tris[t].p;
      edges.insert(edges.end(), {p[0], p[1], p[1], p[2], p[2], p[0]});
    }
  }
  overlay.Lines(edges, Wire(QColor(0, 0, 255, 230), 5));
}

void PaintLabels(const RSplineRep& splines, DOverlay& overlay)
{
  int i = 0;
  for (const RSplineLine& line : splines.lines) {
    std::array<char, 100> text;
    std::snprintf(text.data(), text.size(), "%d [maxV %.2f, postState %d]", i, static_cast<double>(line.maxVelocity),
                  line.post ? line.post->state : 0);
    overlay.Text(i % 2 == 0 ? line.left : line.right, text.data(), {});
    ++i;
  }
}

} // namespace

void PaintSplines(const RSplineRep& splines, std::span<const int> selected, DOverlay& overlay)
{
  PaintOutlines(splines, overlay);
  PaintSelected(splines, selected, overlay);
  PaintLabels(splines, overlay);
}
