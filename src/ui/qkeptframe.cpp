#include "ui/qkeptframe.h"

#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>

#include <algorithm>

void QKeptFrame::Take(int width, int height)
{
  if (!DGlobals().hasContext)
    return;
  auto taken = std::make_unique<DDrawableTexture>(std::max(width, 1), std::max(height, 1));
  taken->CopyFrom(0, 0);
  picture = std::move(taken);
}

void QKeptFrame::Paint() const
{
  if (!picture || !DGlobals().hasContext)
    return;
  glPushAttrib(GL_ALL_ATTRIB_BITS);
  for (const GLenum cap : {GL_DEPTH_TEST, GL_BLEND, GL_ALPHA_TEST, GL_LIGHTING, GL_CULL_FACE, GL_FOG})
    glDisable(cap);
  for (const GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
    glMatrixMode(mode);
    glPushMatrix();
    glLoadIdentity();
  }
  glViewport(0, 0, picture->width, picture->height);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  glEnable(GL_TEXTURE_2D);
  DThePipe().Invalidate();
  picture->Select();
  glBegin(GL_TRIANGLE_STRIP);
  for (const auto& [x, y] : {std::pair{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}, {1.0f, 1.0f}}) {
    glTexCoord2f(x, y);
    glVertex2f(2 * x - 1, 2 * y - 1);
  }
  glEnd();
  for (const GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
    glMatrixMode(mode);
    glPopMatrix();
  }
  glPopAttrib();
  DThePipe().Invalidate();
}
