#include "golden/glwindow.h"

#include "geometry/dglobal.h"
#include "geometry/dpipe.h"

#include <SDL.h>
#include <cstdio>
#include <cstdlib>
#include <epoxy/gl.h>

GlWindow::GlWindow(int w, int h) : wid(w), hgt(h)
{
  setenv("SDL_VIDEODRIVER", "offscreen", 1);
  setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
  if (SDL_Init(SDL_INIT_VIDEO) != 0)
    return;
  SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
  SDL_GL_SetAttribute(SDL_GL_STENCIL_SIZE, 8);
  window = SDL_CreateWindow("golden", 0, 0, wid, hgt, SDL_WINDOW_OPENGL);
  context = window ? SDL_GL_CreateContext(window) : nullptr;
  DResetGlobals();
  DGlobals().hasContext = context != nullptr;
  if (!context)
    return;
  DGlobals().softwareRenderer = true;
  DGlobals().ddsOn = epoxy_has_gl_extension("GL_EXT_texture_compression_s3tc");
  DThePipe().Invalidate();
}

GlWindow::~GlWindow()
{
  DResetGlobals();
  if (context)
    SDL_GL_DeleteContext(context);
  if (window)
    SDL_DestroyWindow(window);
  SDL_Quit();
}

QBitMap& GlWindow::Picture()
{
  if (picture.GetWidth() != wid)
    picture.Alloc(32, wid, hgt);
  glFinish();
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, wid, hgt, GL_RGBA, GL_UNSIGNED_BYTE, picture.GetBuffer());
  picture.SetAlpha(255);
  return picture;
}

int GlWindow::TakeErrors()
{
  int count = 0;
  for (GLenum error = glGetError(); error != GL_NO_ERROR && count < 100; error = glGetError(), ++count)
    std::fprintf(stderr, "OpenGL error 0x%x\n", error);
  return count;
}
