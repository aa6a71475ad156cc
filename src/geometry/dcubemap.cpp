#include "geometry/dcubemap.h"

#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"

#include <epoxy/gl.h>

DCubeMap::DCubeMap()
{
  target = GL_TEXTURE_CUBE_MAP;
  SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE, wrapQ);
}

DCubeMap::~DCubeMap() = default;

bool DCubeMap::LoadImages(const std::string& base)
{
  QDBG("  LoadImages '%s'\n", base.c_str());
  bool all = true;
  int side = 0; // of all pictures: OpenGL wants squares of one size
  for (size_t i = 0; i < SIDES; ++i) {
    bool found = false;
    pending[i] = d3LoadTextureMap(base + SIDE_NAMES[i] + ".tga", &found, true);
    all = all && found;
    side = side == 0 ? pending[i]->GetWidth() : side;
    if (pending[i]->GetWidth() != side || pending[i]->GetHeight() != side)
      all = pending[i]->Resize(side, side) && all;
  }
  if (width == 0)
    SetSize(side, side);
  if (!DGlobals().hasContext)
    pending = {};
  return all;
}

void DCubeMap::Upload()
{
  for (size_t i = 0; i < SIDES; ++i)
    if (pending[i])
      glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(i), 0, static_cast<GLint>(internalFormat),
                   width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pending[i]->GetBuffer());
  if (flags & MIPMAP)
    glGenerateMipmap(target);
  pending = {};
}
