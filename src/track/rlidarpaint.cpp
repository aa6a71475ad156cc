#include "foundation/qreport.h"
#include "geometry/daabbtreehd.h"
#include "geometry/dglobal.h"
#include "geometry/doverlay.h"
#include "geometry/dpipe.h"
#include "track/rlidar.h"

#include <algorithm>
#include <cmath>
#include <epoxy/gl.h>
#include <map>
#include <span>

namespace {

const QColor BLOCK_COLORS[] = {{0, 255, 0},   {255, 0, 0},   {255, 255, 0},   {255, 255, 255},
                               {0, 255, 255}, {255, 0, 255}, {255, 128, 128}, {0, 128, 0}};
const QColor TREE_COLORS[] = {{255, 0, 255}, {0, 0, 255}, {255, 0, 0}, {0, 255, 0}};

DOverlayStyle Style(const QColor& color)
{
  DOverlayStyle style;
  style.color = color;
  return style;
}

void AddBox(std::vector<DVector3>& ends, const DBox& box)
{
  for (int i = 0; i < 8; ++i)
    for (const int axis : {1, 2, 4})
      if (!(i & axis))
        for (const int k : {i, i | axis})
          ends.push_back({k & 1 ? box.max.x : box.min.x, k & 2 ? box.max.y : box.min.y, k & 4 ? box.max.z : box.min.z});
}

// Lit from the viewer: what leans away from it is darker. Green when it faces down.
QColor ShadeOf(const DVector3& a, const DVector3& b, const DVector3& c, const DVector3& view)
{
  const DVector3 normal = DNormalized(glm::cross(b - a, c - a));
  if (normal.y < 0)
    return {0, 255, 0};
  const DVector3 to = DNormalized({a.x - view.x, 0, a.z - view.z});
  const float shade = std::clamp(0.5f - 2 * (normal.x * to.x + normal.z * to.z), 0.0f, 1.0f);
  const int grey = static_cast<int>(std::lround(shade * 255));
  return {grey, grey, grey};
}

} // namespace

void RLidar::Paint(DOverlay& overlay, const DVector3& viewPosition)
{
  if (points.empty())
    return;
  if (flags & PAINT_TRIANGLES)
    PaintNearTriangles(overlay, viewPosition);
  if ((flags & PAINT_AABB) && tree)
    PaintTree(overlay);
  if (flags & PAINT_VERTICES)
    PaintPoints(overlay);
}

void RLidar::PaintNearTriangles(DOverlay& overlay, const DVector3& viewPosition)
{
  constexpr float REACH_SQUARED = 1000; // metres
  std::map<uint32_t, std::vector<DVector3>> byColor;
  for (size_t i = static_cast<size_t>(startTriangle) * 3; i < triangles.size(); i += 3) {
    const DVector3& a = points[triangles[i]];
    const DVector3 d = a - viewPosition;
    if (!(glm::dot(d, d) <= REACH_SQUARED))
      continue;
    const DVector3 &b = points[triangles[i + 1]], &c = points[triangles[i + 2]];
    auto& corners = byColor[ShadeOf(a, b, c, viewPosition).GetRGBA()];
    corners.insert(corners.end(), {a, b, c});
  }
  for (const auto& [color, corners] : byColor)
    overlay.Triangles(corners, Style(QColor(int(color >> 24), int(color >> 16 & 255), int(color >> 8 & 255))));
  if (++frame % 3 == 0 && ++startTriangle >= TriangleCount())
    startTriangle = 0;
}

void RLidar::PaintTree(DOverlay& overlay)
{
  if (!treeCollected)
    CollectTree();
  for (size_t i = 0; i < treeLines.size(); ++i)
    overlay.Lines(treeLines[i], Style(TREE_COLORS[i]));
}

void RLidar::CollectTree()
{
  constexpr int MAX_DEPTH = 7;
  for (auto& lines : treeLines)
    lines.clear();
  const auto visit = [this](const DBox& box, int depth, std::span<const int> held) {
    auto& ends = treeLines[static_cast<size_t>(depth) % treeLines.size()];
    AddBox(ends, box);
    for (const int t : held) {
      const auto p = tree->Corners(t);
      ends.insert(ends.end(), {p[0], p[1], p[1], p[2], p[2], p[0]});
    }
  };
  tree->Walk(MAX_DEPTH, visit);
  if (tree->NodeCount() == 0)
    visit(DBox(), 0, {}); // an empty tree's root
  treeCollected = true;
}

void RLidar::PaintPoints(DOverlay& overlay)
{
  const bool drawn = DGlobals().hasContext;
  if (!vertexBufferTried && !MakeVertexArray())
    return;
  if (drawn && vertexBuffer == 0)
    return;
  if (drawn) {
    DPipe& pipe = DThePipe();
    pipe.Disable(GL_LIGHTING);
    pipe.SelectUnit(0);
    pipe.DisableTexture(GL_TEXTURE_2D);
    pipe.Enable(GL_DEPTH_TEST);
    pipe.Disable(GL_BLEND);
    for (const auto array : {DPipe::NORMAL_ARRAY, DPipe::COLOR_ARRAY})
      pipe.DisableArray(array);
    pipe.DisableTexCoordArray();
    pipe.EnableArray(DPipe::VERTEX_ARRAY);
    pipe.BindArrayBuffer(vertexBuffer);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    glPointSize(1);
  }
  if (blocks.empty())
    DrawRun(overlay, {0, PointCount()}, 0);
  for (size_t i = 0; i < blocks.size(); ++i)
    DrawRun(overlay, blocks[i], i % std::size(BLOCK_COLORS));
  if (drawn)
    DThePipe().BindArrayBuffer(0);
}

// A block may say anything: what lies outside the points isn't drawn.
void RLidar::DrawRun(DOverlay& overlay, const Block& run, size_t color) const
{
  const int start = std::clamp(run.start, 0, PointCount());
  const int count = std::clamp(run.size, 0, PointCount() - start);
  const QColor& c = BLOCK_COLORS[color];
  if (count == 0)
    return;
  if (!DGlobals().hasContext) {
    overlay.Points({points.data() + start, static_cast<size_t>(count)}, Style(c));
    return;
  }
  glColor3ub(static_cast<GLubyte>(c.GetR()), static_cast<GLubyte>(c.GetG()), static_cast<GLubyte>(c.GetB()));
  glDrawArrays(GL_POINTS, start, count);
}

// The points stay in the video memory: there can be tens of millions.
bool RLidar::MakeVertexArray()
{
  QLOG("RLidar:MakevertexArray\n");
  vertexBufferTried = true;
  if (oneBlock)
    blocks[0].size = PointCount();
  if (!DGlobals().hasContext)
    return true;
  glGenBuffers(1, &vertexBuffer);
  if (vertexBuffer == 0) {
    QERR("RLidar:MakeVertexArray(); can't generate VBO vertex buffer (%u)", glGetError());
    return false;
  }
  DThePipe().BindArrayBuffer(vertexBuffer);
  while (glGetError() != GL_NO_ERROR) {
  }
  glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(points.size() * sizeof(DVector3)), points.data(),
               GL_STATIC_DRAW);
  if (glGetError() == GL_NO_ERROR)
    return true;
  QERR("RLidar:Paint; out of memory for vertex data");
  ReleaseBuffers();
  vertexBufferTried = true; // once is enough
  return false;
}

void RLidar::ReleaseBuffers()
{
  if (vertexBuffer != 0 && DGlobals().hasContext) {
    glDeleteBuffers(1, &vertexBuffer);
    DThePipe().ForgetBuffer(vertexBuffer);
  }
  vertexBuffer = 0;
  vertexBufferTried = false;
}
