#pragma once

#include "foundation/qobject.h"
#include "geometry/dtextureptr.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class QBitMap;

// A texture of OpenGL, made when it is first selected. Without a context it is a name and a few numbers.
class DTexture : public QObject
{
public:
  enum Flag : uint32_t
  {
    HAS_TRANSPARENCY = 0x01,
    MIPMAP = 0x02,
    COMPRESSION = 0x08,
    PBO = 0x10,
    MARKED = 0x20
  };

  DTexture();
  ~DTexture() override;
  DTexture(const DTexture&) = delete;
  DTexture& operator=(const DTexture&) = delete;
  const char* GetClassName() const override { return "DTexture"; }
  virtual const char* GetTypeName() const { return "texture2D"; }

  // A texture that others share is destroyed through its last reference alone: DTexturePtr counts for its holder.
  void Attach() { ++refCount; }
  // True when that was the last one: the caller destroys the texture. One too many is reported.
  [[nodiscard]] bool Detach();
  int GetRefCount() const { return refCount; }

  // Binds it to the current unit, through the pipe. Reports and does nothing without a context.
  void Select();
  void SetSize(int w, int h); // once
  void CreateTexture();
  void SetWrap(uint32_t s, uint32_t t, uint32_t r, uint32_t q);
  void SetMinFilter(uint32_t filter);
  void SetMagFilter(uint32_t filter);
  void SetLodRange(float min, float max, float bias);
  void SetLevels(int base, int max);
  void EnableMipmap(bool on);
  void EnableCompression(); // on upload; nothing happens where the renderer doesn't allow it
  void DisableCompression() { flags &= ~static_cast<uint32_t>(COMPRESSION); }
  bool HasTransparency() const { return flags & HAS_TRANSPARENCY; }
  // Keeps a copy of the pixels, which ApplyPbo sends again through a buffer of OpenGL's. False, reported, for a format
  // that can't be; without a context nothing happens.
  bool EnablePbo();
  void DisablePbo();
  bool ApplyPbo(); // false, reported, when the buffer can't be had

  uint32_t flags = MIPMAP;
  uint32_t glTexture = 0;
  int width = 0;
  int height = 0;
  int bytesPerPixel = 0;
  uint32_t target = 0x0DE1;         // GL_TEXTURE_2D
  uint32_t internalFormat = 0x1908; // GL_RGBA
  uint32_t minFilter = 0x2703;      // GL_LINEAR_MIPMAP_LINEAR
  uint32_t magFilter = 0x2601;      // GL_LINEAR
  uint32_t wrapS = 0x2901;          // GL_REPEAT
  uint32_t wrapT = 0x2901;
  uint32_t wrapR = 0x2901;
  uint32_t wrapQ = 0x2901;
  float minLod = 0;
  float maxLod = 1000.0f;
  float lodBias = 0;
  int baseLevel = 0;
  int maxLevel = 1000;
  uint32_t pbo = 0; // OpenGL's buffer
  std::vector<std::byte> pboData;

  uint32_t context = 0; // in which it was created

protected:
  // Sends the pixels, with the texture bound. Here: an empty image, which the texture's maker fills.
  virtual void Upload();
  void ApplyState() const;

private:
  int refCount = 0;
};

// A texture of a picture. It keeps the picture until it went to OpenGL, and none without a context.
class DBitMapTexture : public DTexture
{
public:
  DBitMapTexture();
  explicit DBitMapTexture(std::unique_ptr<QBitMap> bitmap);
  // As d3LoadTextureMap finds it: a stub, reported, when it can't be loaded. Named by the file's base name.
  explicit DBitMapTexture(const std::string& fileName);
  ~DBitMapTexture() override;
  const char* GetClassName() const override { return "DBitMapTexture"; }
  const char* GetTypeName() const override { return "bitmapTexture"; }
  // Takes the picture and its size; a texture that is in use shows it at once. Nothing happens without pixels.
  void FromBitMap(std::unique_ptr<QBitMap> bitmap);

protected:
  void Upload() override;

private:
  std::unique_ptr<QBitMap> pending;
  bool srgb = false;
};

// A texture that is copied from what was drawn.
class DDrawableTexture : public DTexture
{
public:
  DDrawableTexture(int wid, int hgt);
  const char* GetClassName() const override { return "DDrawableTexture"; }
  const char* GetTypeName() const override { return "drawableTexture"; }
  // The corner at x, y of the back or the front buffer, y from the bottom.
  void CopyFrom(int x, int y, bool front = false);
};

// OpenGL's internal format for GL_RGB or GL_RGBA: compressed or not, of linear or of sRGB colours.
uint32_t DInternalFormat(uint32_t asked, bool compressed, bool linear);
// 3 or 4 for bytes of red, green and blue, without or with alpha; 0 for any other format.
int DBytesPerPixel(uint32_t internalFormat);
// Of pictures that have no alpha: magenta becomes transparent. True when there was some.
bool d3KeyTransparency(QBitMap& picture, const std::string& fileName);

// The picture of a file, looked for in the global map path. textures off gives a plain stub; a file that can't be
// loaded gives a red and blue one, reported unless silent, and found false. Never null.
std::unique_ptr<QBitMap> d3LoadTextureMap(const std::string& fileName, bool* found = nullptr, bool silent = false);
// 0: 2 x 2 chequered red and blue; 1: 1 x 1 in the next of eight colours. Never null.
std::unique_ptr<QBitMap> d3MakeStubImage(int type);
// The file of a picture's name in the global map path; the name itself when there is none.
std::string d3FindMap(const std::string& fileName);
// A name out of a file may lead below the directories that are searched, never out of them: an absolute one, or one
// with "..", keeps its last part alone.
std::string d3InsideName(const std::string& name);
