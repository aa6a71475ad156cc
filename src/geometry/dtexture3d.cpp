#include "geometry/dtexture3d.h"

#include "foundation/qbitmap.h"
#include "foundation/qfile.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"

#include <cstring>
#include <epoxy/gl.h>

namespace {

constexpr size_t FLOAT_FILE_SIZE = 0x1000000;

} // namespace

DTexture3D::DTexture3D(const std::string& fileName)
{
  target = GL_TEXTURE_3D;
  if (!FromFloat32File(fileName))
    QERR("DTexture3D(%s); can't open file", fileName.c_str());
}

DTexture3D::DTexture3D(const QBitMap& strip)
{
  target = GL_TEXTURE_3D;
  const int slice = strip.GetWidth() / SLICES;
  if (strip.GetDepth() != 32 || slice == 0)
    return;
  SetSize(slice, strip.GetHeight());
  depth = SLICES;
  internalFormat = GL_RGBA;
  EnableMipmap(false);
  Clamp();
  if (!DGlobals().hasContext)
    return;
  const size_t rowSize = static_cast<size_t>(slice) * 4;
  pending.resize(rowSize * static_cast<size_t>(height) * SLICES);
  std::byte* to = pending.data();
  for (int z = 0; z < SLICES; ++z)
    for (int y = 0; y < height; ++y, to += rowSize)
      std::memcpy(to, strip.GetPixelAddress(z * slice, y), rowSize);
}

bool DTexture3D::FromFloat32File(const std::string& fileName)
{
  if (!QReadFile(fileName, pending, true) || pending.size() < FLOAT_FILE_SIZE) {
    pending.clear();
    return false;
  }
  SetSize(256, 128);
  depth = 32;
  type = GL_FLOAT;
  internalFormat = GL_RGBA32F;
  flags &= ~static_cast<uint32_t>(MIPMAP);
  minFilter = magFilter = GL_LINEAR;
  Clamp();
  if (!DGlobals().hasContext)
    pending.clear();
  return true;
}

void DTexture3D::Clamp()
{
  SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE, wrapQ);
}

void DTexture3D::Upload()
{
  if (pending.empty())
    return;
  glTexImage3D(target, 0, static_cast<GLint>(internalFormat), width, height, depth, 0, GL_RGBA, type, pending.data());
  pending = {};
}
