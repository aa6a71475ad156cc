// The upload of a texture's pixels through a buffer object.
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>

bool DTexture::EnablePbo()
{
  if (!DGlobals().hasContext || flags & PBO)
    return flags & PBO;
  Select();
  if (target != GL_TEXTURE_2D || bytesPerPixel == 0) {
    QWARN("DTexture::EnablePbo() Internalformat %d not supported for PBO's", static_cast<int>(internalFormat));
    return false;
  }
  pboData.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(bytesPerPixel));
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(target, 0, bytesPerPixel == 4 ? GL_RGBA : GL_RGB, GL_UNSIGNED_BYTE, pboData.data());
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glGenBuffers(1, &pbo);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, pbo);
  glBufferData(GL_PIXEL_UNPACK_BUFFER, static_cast<GLsizeiptr>(pboData.size()), nullptr, GL_STREAM_DRAW);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  flags |= PBO;
  return true;
}

void DTexture::DisablePbo()
{
  if (pbo != 0 && DGlobals().hasContext)
    glDeleteBuffers(1, &pbo);
  pbo = 0;
  pboData = {};
  flags &= ~static_cast<uint32_t>(PBO);
}

bool DTexture::ApplyPbo()
{
  if (!(flags & PBO) || !DGlobals().hasContext)
    return false;
  Select();
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, pbo);
  const auto size = static_cast<GLsizeiptr>(pboData.size());
  glBufferData(GL_PIXEL_UNPACK_BUFFER, size, nullptr, GL_STREAM_DRAW); // the last one may still be on its way
  glBufferSubData(GL_PIXEL_UNPACK_BUFFER, 0, size, pboData.data());
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(target, 0, 0, 0, width, height, bytesPerPixel == 4 ? GL_RGBA : GL_RGB, GL_UNSIGNED_BYTE, nullptr);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  if (glGetError() == GL_NO_ERROR)
    return true;
  QWARN("DTexture::ApplyPbo() Failed");
  return false;
}
