#pragma once

#include "foundation/qblock.h"
#include "geometry/dtextureptr.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

class QPieceReader;

// A DDS picture with its levels, as it goes to OpenGL: blocks turned upside down, since their origin is the top. The
// simulator doesn't turn plain pixels, so neither is done here.
class DDDS
{
public:
  static constexpr int MAX_LEVELS = 16;
  enum Format
  {
    PLAIN, // four bytes a pixel: red, green, blue, alpha
    DXT1,
    DXT3,
    DXT5
  };
  struct Level
  {
    int wid, hgt;
    std::span<std::byte> pixels;
  };

  // From the disk or an open archive. False when there is no such file or its bytes aren't such a picture; kinds that
  // aren't read are reported. A count of levels of 0 means one; those beyond MAX_LEVELS aren't looked at.
  bool Load(const std::string& fileName);
  // The same of a file's bytes; the name stands in reports.
  bool Load(std::span<const std::byte> bytes, const std::string& fileName);
  int GetWidth() const { return wid; }
  int GetHeight() const { return hgt; }
  Format GetFormat() const { return format; }
  std::span<const Level> Levels() const { return {levels.data(), static_cast<size_t>(levelCount)}; }
  // Any pixel of the first level that isn't opaque.
  bool HasTransparency() const { return transparent; }
  // The picture moves into the texture, which uploads it when it is first selected.
  DTexturePtr CreateTexture();

private:
  bool Decode(QPieceReader& in);
  bool ReadHeader(std::span<const std::byte> header);
  size_t RowSize(const Level& level) const; // bytes of a row of blocks, or of pixels
  size_t Rows(const Level& level) const;
  bool AllocLevels(size_t bytes);
  bool ReadLevel(QPieceReader& in, const Level& level, bool& seesThrough) const;

  std::string name;
  QBlock pixels; // of all levels
  int wid = 0;
  int hgt = 0;
  int mipCount = 0;
  Format format = PLAIN;
  bool transparent = false;
  std::array<Level, MAX_LEVELS> levels{};
  int levelCount = 0;
};

// Does a name ask for this format? ".dds" or ".DDS" anywhere in it.
bool DIsDDSName(const std::string& name);
