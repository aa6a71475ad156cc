#include "ui/qgloverlay.h"

#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "ui/qapp.h"
#include "ui/qcanvas.h"
#include "ui/qfont.h"

#include <algorithm>
#include <cmath>
#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>
#include <numeric>

namespace {

void Setup(const DOverlayStyle& style)
{
  DPipe& pipe = DThePipe();
  pipe.Disable(GL_LIGHTING);
  pipe.Disable(GL_CULL_FACE);
  pipe.Disable(GL_ALPHA_TEST);
  pipe.SelectUnit(0);
  pipe.DisableTexture(GL_TEXTURE_2D);
  pipe.Set(GL_DEPTH_TEST, style.depthTest);
  pipe.Set(GL_BLEND, style.blend);
  pipe.Set(GL_LINE_SMOOTH, style.blend);
  if (style.blend)
    pipe.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  pipe.Set(GL_POLYGON_OFFSET_FILL, style.offset != 0);
  if (style.offset != 0)
    pipe.PolygonOffset(style.offset, style.offset);
  pipe.BindArrayBuffer(0);
  pipe.DisableArray(DPipe::NORMAL_ARRAY);
  pipe.DisableArray(DPipe::COLOR_ARRAY);
  pipe.DisableTexCoordArray();
  pipe.EnableArray(DPipe::VERTEX_ARRAY);
  const float scale = app ? app->GetDisplay().Scale() : 1;
  glLineWidth(style.width * scale);
  if (style.stipple != 0xFFFF)
    glEnable(GL_LINE_STIPPLE);
  glLineStipple(std::max(static_cast<GLint>(std::lround(scale)), 1), style.stipple);
  glPointSize(style.width * scale);
  const QColor& c = style.color;
  glColor4ub(static_cast<GLubyte>(c.GetR()), static_cast<GLubyte>(c.GetG()), static_cast<GLubyte>(c.GetB()),
             static_cast<GLubyte>(c.GetA()));
}

bool Overlap(const QRect& a, const QRect& b)
{
  return a.x < b.x + b.wid && b.x < a.x + a.wid && a.y < b.y + b.hgt && b.y < a.y + a.hgt;
}

void Draw(GLenum what, std::span<const DVector3> points, const DOverlayStyle& style)
{
  if (!DGlobals().hasContext || points.empty())
    return;
  Setup(style);
  glVertexPointer(3, GL_FLOAT, sizeof(DVector3), points.data());
  glDrawArrays(what, 0, static_cast<GLsizei>(points.size()));
  glDisable(GL_LINE_STIPPLE); // nobody else knows of it
}

} // namespace

void QGLOverlay::Points(std::span<const DVector3> points, const DOverlayStyle& style)
{
  Draw(GL_POINTS, points, style);
}

void QGLOverlay::Lines(std::span<const DVector3> points, const DOverlayStyle& style)
{
  Draw(GL_LINES, points, style);
}

void QGLOverlay::LineLoop(std::span<const DVector3> points, const DOverlayStyle& style)
{
  Draw(GL_LINE_LOOP, points, style);
}

void QGLOverlay::Triangles(std::span<const DVector3> corners, const DOverlayStyle& style)
{
  Draw(GL_TRIANGLES, corners, style);
}

void QGLOverlay::Quads(std::span<const DVector3> corners, const DOverlayStyle& style)
{
  Draw(GL_QUADS, corners, style);
}

void QGLOverlay::Text(const DVector3& at, std::string_view text, const DOverlayStyle& style)
{
  if (!DGlobals().hasContext || !app || !app->GetShell())
    return;
  DMatrix4 model, projection;
  GLint view[4];
  glGetFloatv(GL_MODELVIEW_MATRIX, glm::value_ptr(model));
  glGetFloatv(GL_PROJECTION_MATRIX, glm::value_ptr(projection));
  glGetIntegerv(GL_VIEWPORT, view);
  const DVector4 clip = projection * model * DVector4(at, 1.0f);
  if (clip.w <= 0 || glm::abs(clip.x) > clip.w || glm::abs(clip.y) > clip.w)
    return;
  const float x = static_cast<float>(view[0]) + (clip.x / clip.w + 1) * 0.5f * static_cast<float>(view[2]);
  const float y = static_cast<float>(view[1]) + (clip.y / clip.w + 1) * 0.5f * static_cast<float>(view[3]);
  const QFont* font = canvas.GetFont() ? canvas.GetFont() : app->GetSystemFont();
  const float scale = app->GetDisplay().Scale();
  const int height = static_cast<int>(font->GetHeight());
  QOverlayLabel& label = labels.emplace_back();
  label.rect = {static_cast<int>(x / scale), app->GetShell()->rect.hgt - static_cast<int>(y / scale) - height,
                static_cast<int>(std::ceil(font->GetWidth(text))), height};
  label.distance = clip.w;
  label.always = style.always;
  label.color = style.color;
  label.text = text;
}

void QGLOverlay::Flush()
{
  if (labels.empty())
    return;
  canvas.SetFont(canvas.GetFont() ? canvas.GetFont() : app->GetSystemFont());
  canvas.SetBlending(true);
  for (const size_t i : QChooseLabels(labels)) {
    canvas.SetColor(labels[i].color);
    canvas.Text(labels[i].text, labels[i].rect.x, labels[i].rect.y);
  }
  labels.clear();
}

std::vector<size_t> QChooseLabels(std::span<const QOverlayLabel> labels)
{
  std::vector<size_t> order(labels.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
    return labels[a].always != labels[b].always ? labels[a].always : labels[a].distance < labels[b].distance;
  });
  std::vector<size_t> chosen; // few: the shell holds no more
  for (const size_t i : order) {
    const auto covers = [&](size_t other) { return Overlap(labels[i].rect, labels[other].rect); };
    if (labels[i].always || std::none_of(chosen.begin(), chosen.end(), covers))
      chosen.push_back(i);
  }
  return chosen;
}
