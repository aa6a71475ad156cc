#include "ui/qglbatch.h"

#include "geometry/dglobal.h"
#include "ui/qapp.h"

#include <cmath>
#include <epoxy/gl.h>

namespace {

// Top left is 0, 0. What the renderer left behind must not colour the interface.
void Setup2D()
{
  const QRect window = app->GetShell() ? app->GetShell()->RootRect() : QRect{0, 0, 1, 1};
  glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT | GL_TRANSFORM_BIT | GL_VIEWPORT_BIT |
               GL_CURRENT_BIT | GL_POLYGON_BIT | GL_LIGHTING_BIT);
  glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
  const float scale = app->GetDisplay().Scale();
  const auto device = [=](int size) { return static_cast<GLsizei>(std::lround(static_cast<float>(size) * scale)); };
  glViewport(0, 0, device(window.wid), device(window.hgt));
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  glOrtho(0, window.wid, window.hgt, 0, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  GLint units = 1;
  glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
  for (GLint unit = units - 1; unit >= 0; --unit) {
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    for (GLenum target : {GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP, GL_TEXTURE_GEN_S,
                          GL_TEXTURE_GEN_T, GL_TEXTURE_GEN_R})
      glDisable(target);
  }
  glMatrixMode(GL_TEXTURE);
  glPushMatrix();
  glLoadIdentity();
  for (GLenum cap : {GL_LIGHTING, GL_CULL_FACE, GL_DEPTH_TEST, GL_ALPHA_TEST, GL_FOG, GL_STENCIL_TEST, GL_SCISSOR_TEST,
                     GL_COLOR_LOGIC_OP, GL_POLYGON_OFFSET_FILL})
    glDisable(cap);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glShadeModel(GL_SMOOTH);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void Restore()
{
  glMatrixMode(GL_TEXTURE);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glPopClientAttrib();
  glPopAttrib();
}

void SetupArrays(const QGLBatch::Vertex& first)
{
  glBindBuffer(GL_ARRAY_BUFFER, 0);
  glDisableClientState(GL_NORMAL_ARRAY);
  GLint units = 1;
  glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
  for (GLint unit = units - 1; unit >= 0; --unit) {
    glClientActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  }
  constexpr GLsizei STRIDE = sizeof(QGLBatch::Vertex);
  glEnableClientState(GL_VERTEX_ARRAY);
  glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  glEnableClientState(GL_COLOR_ARRAY);
  glVertexPointer(2, GL_FLOAT, STRIDE, &first.x);
  glTexCoordPointer(2, GL_FLOAT, STRIDE, &first.u);
  glColorPointer(4, GL_UNSIGNED_BYTE, STRIDE, &first.rgba);
}

} // namespace

void QGLBatch::End()
{
  if (--depth == 0)
    Flush();
}

void QGLBatch::Quad(uint32_t texture, const std::array<Vertex, 4>& corners)
{
  vertices.insert(vertices.end(), corners.begin(), corners.end());
  if (pieces.empty() || pieces.back().texture != texture)
    pieces.push_back({texture, 0});
  pieces.back().end = vertices.size();
}

void QGLBatch::Draw()
{
  size_t begin = 0;
  for (const Piece& piece : pieces) {
    if (piece.texture != 0) {
      glEnable(GL_TEXTURE_2D);
      glBindTexture(GL_TEXTURE_2D, piece.texture);
    } else {
      glDisable(GL_TEXTURE_2D);
    }
    glDrawArrays(GL_QUADS, static_cast<GLint>(begin), static_cast<GLsizei>(piece.end - begin));
    begin = piece.end;
    ++calls;
  }
}

void QGLBatch::Flush()
{
  if (vertices.empty())
    return;
  if (DGlobals().hasContext) {
    GLint program = 0, buffer = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &buffer);
    Setup2D();
    glUseProgram(0);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    SetupArrays(vertices.front());
    Draw();
    glUseProgram(static_cast<GLuint>(program));
    glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(buffer));
    Restore();
  }
  vertices.clear();
  pieces.clear();
}

void QGLBatch::Pixels(const QRect& r, const uint32_t* rgba, bool blend, const QRect& clip)
{
  Flush();
  if (!DGlobals().hasContext)
    return;
  const float scale = app->GetDisplay().Scale();
  const auto device = [=](int at) { return static_cast<int>(std::lround(static_cast<float>(at) * scale)); };
  const int bottom = device(app->GetShell()->RootRect().hgt);
  GLint program = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &program);
  Setup2D();
  glUseProgram(0);
  glDisable(GL_TEXTURE_2D);
  glPushAttrib(GL_SCISSOR_BIT | GL_PIXEL_MODE_BIT);
  glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  glEnable(GL_SCISSOR_TEST);
  glScissor(device(clip.x), bottom - device(clip.y + clip.hgt), device(clip.wid), device(clip.hgt));
  blend ? glEnable(GL_BLEND) : glDisable(GL_BLEND);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelZoom(scale, -scale);
  glWindowPos2i(device(r.x), bottom - device(r.y));
  glDrawPixels(r.wid, r.hgt, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
  glPopClientAttrib();
  glPopAttrib();
  glUseProgram(static_cast<GLuint>(program));
  Restore();
}
