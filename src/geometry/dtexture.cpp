#include "geometry/dtexture.h"

#include "foundation/qbitmap.h"
#include "foundation/qfilename.h"
#include "foundation/qimage.h"
#include "foundation/qreport.h"
#include "geometry/ddds.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dmaterial.h"
#include "geometry/dpipe.h"

#include <algorithm>
#include <epoxy/gl.h>
#include <utility>

DTexture::DTexture() = default;

DTexturePtr::DTexturePtr(DTexture* referred) : texture(referred)
{
  if (texture)
    texture->Attach();
}

void DTexturePtr::reset()
{
  if (DTexture* released = std::exchange(texture, nullptr); released && released->Detach())
    delete released;
}

DTexture::~DTexture()
{
  if (refCount > 0) {
    QERR("DTexture dtor (%s); reference count was still %d! Use D3_DETACH_TEXTURE (Detach()), not delete!",
         GetName() ? GetName() : "", refCount);
    QERR("DTexture dtor: Expecting crash, dangling texture pointer.");
  }
  DGlobals().texturePool.Remove(this);
  // A context takes its textures along, and another one may have given the number to a texture of its own.
  if (glTexture == 0 || !DGlobals().hasContext || context != DGlobals().context)
    return;
  DisablePbo();
  DThePipe().ForgetTexture(glTexture);
  glDeleteTextures(1, &glTexture);
}

bool DTexture::Detach()
{
  --refCount;
  if (refCount < 0)
    QERR("DTexture:Detach(); refCount<0 (refCount=%d); too many Detach() calls", refCount);
  return refCount == 0;
}

void DTexture::Select()
{
  if (!DGlobals().hasContext) {
    QERR("DTexture:Select(); no OpenGL context yet");
    return;
  }
  if (glTexture == 0)
    CreateTexture();
  else
    DThePipe().SelectTexture(target, glTexture);
}

void DTexture::SetSize(int w, int h)
{
  if (width != 0 || height != 0) {
    QERR("DTexture::SetSize() called twice for the same object (%s)", GetName() ? GetName() : "");
    return;
  }
  width = w;
  height = h;
}

namespace {

// Names that were still alive when a context began.
void ReportLeaks(const DTexture& created)
{
  static uint32_t leaked = 0;
  if (created.glTexture == leaked)
    qinfo("Creation of texture ID %d (%s) spotted; this ID was previously marked as still in use, so perhaps leaking",
          static_cast<int>(leaked), created.GetName() ? created.GetName() : "");
  if (created.glTexture != 1)
    return;
  constexpr GLuint LAST = 999;
  int count = 0;
  for (GLuint name = 1; name <= LAST; ++name) {
    if (!glIsTexture(name))
      continue;
    QWARN("Texture ID %d is still in use; possible memory leak", static_cast<int>(name));
    leaked = count++ == 0 ? name : leaked;
  }
  if (count > 0)
    QERR("Unreleased texture(s) exist (%d are active)", count);
  QDBG("## First texture; verify that all textures are released\n");
}

} // namespace

void DTexture::CreateTexture()
{
  if (glTexture != 0) {
    QWARN("DTexture::CreateTexture(); texture was already created (%s)", GetName() ? GetName() : "");
    return;
  }
  if (!DGlobals().hasContext)
    return;
  glGenTextures(1, &glTexture);
  context = DGlobals().context;
  ReportLeaks(*this);
  DThePipe().SelectTexture(target, glTexture);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
  ApplyState();
  Upload();
  bytesPerPixel = DBytesPerPixel(internalFormat);
}

void DTexture::Upload()
{
  if (target == GL_TEXTURE_2D)
    glTexImage2D(target, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
}

void DTexture::ApplyState() const
{
  if (glTexture == 0 || !DGlobals().hasContext)
    return;
  DThePipe().SelectTexture(target, glTexture);
  glTexParameteri(target, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(minFilter));
  glTexParameteri(target, GL_TEXTURE_MAG_FILTER, static_cast<GLint>(magFilter));
  glTexParameteri(target, GL_TEXTURE_WRAP_S, static_cast<GLint>(wrapS));
  glTexParameteri(target, GL_TEXTURE_WRAP_T, static_cast<GLint>(wrapT));
  glTexParameteri(target, GL_TEXTURE_WRAP_R, static_cast<GLint>(wrapR));
  glTexParameterf(target, GL_TEXTURE_MIN_LOD, minLod);
  glTexParameterf(target, GL_TEXTURE_MAX_LOD, maxLod);
  glTexParameterf(target, GL_TEXTURE_LOD_BIAS, lodBias);
  glTexParameteri(target, GL_TEXTURE_BASE_LEVEL, baseLevel);
  glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, maxLevel);
  const int samples = DGlobals().maxAnisotropy;
  if (samples > 1 && (flags & MIPMAP) && epoxy_has_gl_extension("GL_EXT_texture_filter_anisotropic"))
    glTexParameterf(target, GL_TEXTURE_MAX_ANISOTROPY_EXT, static_cast<float>(samples));
}

void DTexture::SetWrap(uint32_t s, uint32_t t, uint32_t r, uint32_t q)
{
  wrapS = s;
  wrapT = t;
  wrapR = r;
  wrapQ = q;
  ApplyState();
}

void DTexture::SetMinFilter(uint32_t filter)
{
  minFilter = filter;
  ApplyState();
}

void DTexture::SetMagFilter(uint32_t filter)
{
  magFilter = filter;
  ApplyState();
}

void DTexture::SetLodRange(float min, float max, float bias)
{
  minLod = min;
  maxLod = max;
  lodBias = bias;
  ApplyState();
}

void DTexture::SetLevels(int base, int max)
{
  baseLevel = base;
  maxLevel = max;
  ApplyState();
}

void DTexture::EnableCompression()
{
  if (DGlobals().compressionOn)
    flags |= COMPRESSION;
}

void DTexture::EnableMipmap(bool on)
{
  if (glTexture != 0) {
    QWARN("DTexture:EnableMipmap() called after creation (%s)", GetName() ? GetName() : "");
    return;
  }
  flags = on ? flags | MIPMAP : flags & ~static_cast<uint32_t>(MIPMAP);
  if (!on) {
    minFilter = GL_NEAREST;
    magFilter = GL_LINEAR;
  }
}

DBitMapTexture::DBitMapTexture() = default;

DBitMapTexture::DBitMapTexture(std::unique_ptr<QBitMap> bitmap)
{
  FromBitMap(std::move(bitmap));
}

DBitMapTexture::DBitMapTexture(const std::string& fileName)
{
  FromBitMap(d3LoadTextureMap(fileName));
  SetName(QFileBase(fileName.c_str()));
}

DBitMapTexture::~DBitMapTexture() = default;

void DBitMapTexture::FromBitMap(std::unique_ptr<QBitMap> bitmap)
{
  if (!bitmap || !bitmap->GetBuffer())
    return;
  if (flags & PBO && (width != bitmap->GetWidth() || height != bitmap->GetHeight()))
    DisablePbo(); // its copy has the former size
  width = bitmap->GetWidth();
  height = bitmap->GetHeight();
  srgb = !DGlobals().linear && DGlobals().srgbTextures;
  internalFormat = DInternalFormat(GL_RGBA, false, !srgb);
  bytesPerPixel = DBytesPerPixel(internalFormat);
  flags &= ~static_cast<uint32_t>(HAS_TRANSPARENCY);
  if (bitmap->HasTransparency())
    flags |= HAS_TRANSPARENCY;
  if (!DGlobals().hasContext)
    return;
  pending = std::move(bitmap);
  if (glTexture == 0)
    return; // goes with the first Select
  Select();
  Upload();
}

void DBitMapTexture::Upload()
{
  if (!pending)
    return;
  internalFormat = DInternalFormat(GL_RGBA, flags & COMPRESSION, !srgb);
  glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(internalFormat), width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
               pending->GetBuffer());
  if (flags & MIPMAP)
    glGenerateMipmap(GL_TEXTURE_2D);
  pending.reset();
}

DDrawableTexture::DDrawableTexture(int wid, int hgt)
{
  SetSize(wid, hgt);
  EnableMipmap(false);
  minFilter = GL_LINEAR;
}

void DDrawableTexture::CopyFrom(int x, int y, bool front)
{
  Select();
  if (!DGlobals().hasContext)
    return;
  glReadBuffer(front ? GL_FRONT : GL_BACK);
  glCopyTexSubImage2D(target, 0, 0, 0, x, y, width, height);
  glReadBuffer(GL_BACK);
}

uint32_t DInternalFormat(uint32_t asked, bool compressed, bool linear)
{
  const bool alpha = asked == GL_RGBA;
  if (compressed && !linear)
    return GL_COMPRESSED_SRGB_ALPHA;
  if (compressed)
    return alpha ? GL_COMPRESSED_RGBA : GL_COMPRESSED_RGB;
  if (!linear)
    return alpha ? GL_SRGB8_ALPHA8 : GL_SRGB8;
  return asked;
}

int DBytesPerPixel(uint32_t internalFormat)
{
  switch (internalFormat) {
  case GL_RGB:
  case GL_RGB8:
  case GL_SRGB8:
  case GL_COMPRESSED_RGB:
    return 3;
  case GL_RGBA:
  case GL_RGBA8:
  case GL_SRGB8_ALPHA8:
  case GL_COMPRESSED_RGBA:
  case GL_COMPRESSED_SRGB_ALPHA:
    return 4;
  default:
    return 0;
  }
}

bool d3KeyTransparency(QBitMap& picture, const std::string& fileName)
{
  const bool keyed = fileName.find(".bmp") != std::string::npos || fileName.find(".BMP") != std::string::npos;
  return keyed && picture.MakeMagentaTransparent() > 0;
}

namespace {

// A power of two for the divided size, below the maximum.
int ReducedSize(int size, int divider, int max)
{
  return std::max(1, std::min(QNearestPowerOf2(size / std::max(divider, 1)), max));
}

} // namespace

std::string d3InsideName(const std::string& name)
{
  const bool climbs = name.find("..") != std::string::npos;
  const bool absolute = !name.empty() && (name[0] == '/' || name[0] == '\\' || name.find(':') != std::string::npos);
  std::string inside = climbs || absolute ? QFileBase(name.c_str()) : name;
  inside.resize(std::min(inside.find('\0'), inside.size()));
  return inside == ".." ? "" : inside;
}

std::string d3FindMap(const std::string& fileName)
{
  qstring full;
  return DGlobals().mapPath.Find(fileName.c_str(), full) ? full.Str() : fileName;
}

std::unique_ptr<QBitMap> d3LoadTextureMap(const std::string& fileName, bool* found, bool silent)
{
  const DGlobal& global = DGlobals();
  if (found)
    *found = true;
  if (!global.texturesOn)
    return d3MakeStubImage(1);
  const std::string path = d3FindMap(fileName);
  if (QFileExists(path)) {
    auto image = std::make_unique<QImage>(path);
    if (!image->LoadFailed() && image->GetBuffer()) {
      const int wid = image->GetWidth();
      const int hgt = image->GetHeight();
      if (global.textureDivider != 1 || wid > global.maxTextureWidth || hgt > global.maxTextureHeight)
        static_cast<void>(image->Resize(ReducedSize(wid, global.textureDivider, global.maxTextureWidth),
                                        ReducedSize(hgt, global.textureDivider, global.maxTextureHeight)));
      return image;
    }
  }
  if (!silent)
    QWARN("d3LoadTextureMap(); can't load '%s'; creating red/blue stub image\n", fileName.c_str());
  if (found)
    *found = false;
  return d3MakeStubImage(0);
}

std::unique_ptr<QBitMap> d3MakeStubImage(int type)
{
  if (type == 1) {
    static const QColor cycle[] = {{0, 0, 255},   {0, 255, 0},   {0, 255, 255},   {255, 0, 0},
                                   {255, 0, 255}, {255, 255, 0}, {255, 255, 255}, {128, 128, 128}};
    static unsigned next = 0;
    auto stub = std::make_unique<QBitMap>(32, 1, 1);
    stub->SetColorAt(0, 0, cycle[next++ % std::size(cycle)]);
    return stub;
  }
  if (type != 0)
    QWARN("DMakeStubImage(%d) unknown; using type 0 instead", type);
  auto stub = std::make_unique<QBitMap>(32, 2, 2);
  stub->SetColorAt(0, 0, QColor(255, 0, 0));
  stub->SetColorAt(1, 1, QColor(255, 0, 0));
  stub->SetColorAt(0, 1, QColor(0, 0, 255));
  stub->SetColorAt(1, 0, QColor(0, 0, 255));
  return stub;
}

namespace {

// The texture, or null and the picture that stands in.
DTexturePtr LoadDDS(const std::string& fileName, bool quiet, std::unique_ptr<QBitMap>& standIn)
{
  if (!DGlobals().ddsOn) {
    if (!quiet)
      qinfo("DDS unsupported; stubbing '%s'", fileName.c_str());
    standIn = std::make_unique<QBitMap>(32, 1, 1);
    standIn->SetColorAt(0, 0, QColor(0, 255, 0));
    return nullptr;
  }
  DDDS dds;
  if (dds.Load(d3FindMap(fileName)))
    return dds.CreateTexture();
  if (!quiet)
    QWARN("Image '%s' loading failed (not found?)", fileName.c_str());
  standIn = d3MakeStubImage(0);
  return nullptr;
}

} // namespace

bool DMaterial::AddBitMap(const std::string& fileName, bool silent, const DGeode* geode, bool quiet)
{
  if (TextureCount() >= MAX_TEXTURES)
    return false;
  DGlobal& global = DGlobals();
  const char* base = QFileBase(fileName.c_str());
  if (texture.empty() && name.empty())
    name = DMaterialNameFilter(base);
  if (global.poolOn)
    if (auto shared = global.texturePool.Find(fileName)) {
      shared->SetWrap(GL_REPEAT, GL_REPEAT, GL_REPEAT, GL_REPEAT);
      if (shared->HasTransparency())
        SetTransparent();
      texture.push_back(std::move(shared));
      return true;
    }
  std::unique_ptr<QBitMap> bitmap;
  DTexturePtr added;
  if (DIsDDSName(fileName) && global.texturesOn) {
    added = LoadDDS(fileName, quiet, bitmap);
  } else {
    bool found = false;
    bitmap = d3LoadTextureMap(fileName, &found, silent);
    d3KeyTransparency(*bitmap, fileName);
    if (!found && !quiet)
      QWARN("Material '%s' of geode '%s' failed to load image '%s'", name.c_str(),
            geode ? geode->name.c_str() : "<no_geode>", fileName.c_str());
  }
  if (!added)
    added = std::make_unique<DBitMapTexture>(std::move(bitmap));
  if (added->HasTransparency())
    SetTransparent();
  added->SetName(base);
  added->SetWrap(GL_REPEAT, GL_REPEAT, GL_REPEAT, GL_REPEAT);
  if (global.poolOn)
    global.texturePool.Add(fileName, added.get());
  texture.push_back(std::move(added));
  return true;
}
