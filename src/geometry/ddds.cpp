#include "geometry/ddds.h"

#include "foundation/qbytes.h"
#include "foundation/qfile.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"

#include <algorithm>
#include <cstring>
#include <epoxy/gl.h>
#include <utility>

namespace {

constexpr size_t HEADER_SIZE = 124;
constexpr int MAX_SIZE = 16384;
constexpr uint32_t HAS_CODE = 0x4; // of the pixel format's flags

size_t BlockSize(DDDS::Format format)
{
  return format == DDDS::PLAIN ? 4 : format == DDDS::DXT1 ? 8 : 16;
}

// How many rows of pixels of a block lie in a level.
int RowsOfBlock(int hgt)
{
  return std::min(hgt, 4);
}

// The four index bytes of the colours, a row each. A level that is less than a block high has only some of them.
void FlipColors(uint8_t* rows, int count)
{
  std::reverse(rows, rows + count);
}

// Four rows of 12 bits each.
void FlipAlphaIndices(uint8_t* bytes, int count)
{
  uint64_t all = 0;
  for (size_t i = 0; i < 6; ++i)
    all |= uint64_t{bytes[i]} << 8 * i;
  uint64_t flipped = 0;
  for (int row = 0; row < 4; ++row) {
    const int from = row < count ? count - 1 - row : row;
    flipped |= (all >> 12 * from & 0xFFF) << 12 * row;
  }
  for (size_t i = 0; i < 6; ++i)
    bytes[i] = static_cast<uint8_t>(flipped >> 8 * i);
}

template <DDDS::Format FORMAT>
void FlipBlock(uint8_t* block, int count)
{
  if constexpr (FORMAT == DDDS::DXT1) {
    FlipColors(block + 4, count);
  } else {
    if constexpr (FORMAT == DDDS::DXT3) {
      std::array<uint16_t, 4> rows;
      std::memcpy(rows.data(), block, sizeof rows);
      std::reverse(rows.begin(), rows.begin() + count);
      std::memcpy(block, rows.data(), sizeof rows);
    } else {
      FlipAlphaIndices(block + 2, count);
    }
    FlipColors(block + 12, count);
  }
}

// Rows of blocks change places and blocks are turned, both in one pass.
template <DDDS::Format FORMAT>
void FlipBlocks(const DDDS::Level& level)
{
  constexpr size_t SIZE = FORMAT == DDDS::DXT1 ? 8 : 16;
  const size_t rowSize = static_cast<size_t>((level.wid + 3) / 4) * SIZE;
  const size_t rows = static_cast<size_t>((level.hgt + 3) / 4);
  const int count = RowsOfBlock(level.hgt);
  auto* pixels = reinterpret_cast<uint8_t*>(level.pixels.data());
  for (size_t i = 0; i < (rows + 1) / 2; ++i) {
    uint8_t* a = pixels + i * rowSize;
    uint8_t* b = pixels + (rows - 1 - i) * rowSize;
    for (size_t at = 0; at < rowSize; at += SIZE) {
      FlipBlock<FORMAT>(a + at, count);
      if (a == b)
        continue;
      FlipBlock<FORMAT>(b + at, count);
      std::swap_ranges(a + at, a + at + SIZE, b + at);
    }
  }
}

// Blue and red change places too.
void FlipPlain(const DDDS::Level& level)
{
  const size_t rowSize = static_cast<size_t>(level.wid) * 4;
  auto* pixels = reinterpret_cast<uint8_t*>(level.pixels.data());
  for (size_t at = 0; at < level.pixels.size(); at += 4)
    std::swap(pixels[at], pixels[at + 2]);
  for (size_t i = 0, j = static_cast<size_t>(level.hgt) - 1; i < j; ++i, --j)
    std::swap_ranges(pixels + i * rowSize, pixels + (i + 1) * rowSize, pixels + j * rowSize);
}

bool IsOpaqueBlock(DDDS::Format format, const uint8_t* block)
{
  uint64_t words[2] = {};
  std::memcpy(words, block, BlockSize(format));
  if (format == DDDS::DXT3)
    return words[0] == ~uint64_t{0};
  if (format == DDDS::DXT5) // both ends opaque, or all pixels at the end that is
    return (words[0] & 0xFFFF) == 0xFFFF || ((words[0] & 0xFF) == 0xFF && words[0] >> 16 == 0);
  const auto first = static_cast<uint16_t>(words[0]);
  const auto second = static_cast<uint16_t>(words[0] >> 16);
  const auto indices = static_cast<uint32_t>(words[0] >> 32);
  return first > second || (indices & indices >> 1 & 0x55555555) == 0; // index 3 is the invisible one
}

bool IsOpaque(DDDS::Format format, const DDDS::Level& level)
{
  const auto* pixels = reinterpret_cast<const uint8_t*>(level.pixels.data());
  const size_t step = BlockSize(format);
  for (size_t at = 0; at < level.pixels.size(); at += step)
    if (format == DDDS::PLAIN ? pixels[at + 3] < 255 : !IsOpaqueBlock(format, pixels + at))
      return false;
  return true;
}

GLenum InternalFormat(DDDS::Format format)
{
  const bool srgb = !DGlobals().linear && DGlobals().srgbTextures;
  switch (format) {
  case DDDS::DXT1:
    return srgb ? GL_COMPRESSED_SRGB_ALPHA_S3TC_DXT1_EXT : GL_COMPRESSED_RGBA_S3TC_DXT1_EXT;
  case DDDS::DXT3:
    return srgb ? GL_COMPRESSED_SRGB_ALPHA_S3TC_DXT3_EXT : GL_COMPRESSED_RGBA_S3TC_DXT3_EXT;
  case DDDS::DXT5:
    return srgb ? GL_COMPRESSED_SRGB_ALPHA_S3TC_DXT5_EXT : GL_COMPRESSED_RGBA_S3TC_DXT5_EXT;
  default:
    return srgb ? GL_SRGB8_ALPHA8 : GL_RGBA;
  }
}

// Holds the picture until OpenGL has it.
class DDSTexture : public DTexture
{
public:
  explicit DDSTexture(DDDS&& picture) : dds(std::make_unique<DDDS>(std::move(picture)))
  {
    SetSize(dds->GetWidth(), dds->GetHeight());
    bytesPerPixel = 4;
    uploaded = InternalFormat(dds->GetFormat());
    if (dds->HasTransparency())
      flags |= HAS_TRANSPARENCY;
    if (!dds->Levels().empty())
      SetLevels(0, static_cast<int>(dds->Levels().size()) - 1);
    if (!DGlobals().hasContext)
      dds.reset();
  }

protected:
  void Upload() override
  {
    for (size_t i = 0; dds && i < dds->Levels().size(); ++i)
      UploadLevel(static_cast<GLint>(i), dds->Levels()[i]);
    dds.reset();
  }

private:
  void UploadLevel(GLint i, const DDDS::Level& level) const
  {
    if (dds->GetFormat() == DDDS::PLAIN) {
      glTexImage2D(target, i, static_cast<GLint>(uploaded), level.wid, level.hgt, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                   level.pixels.data());
      return;
    }
    glCompressedTexImage2D(target, i, uploaded, level.wid, level.hgt, 0, static_cast<GLsizei>(level.pixels.size()),
                           level.pixels.data());
    GLint compressed = GL_FALSE;
    glGetTexLevelParameteriv(target, i, GL_TEXTURE_COMPRESSED, &compressed);
    if (!compressed)
      QWARN("DDDS:CreateTexture(); mipmap level %d indicated compression failed", i);
  }

  std::unique_ptr<DDDS> dds;
  GLenum uploaded = GL_RGBA;
};

} // namespace

bool DIsDDSName(const std::string& name)
{
  return name.find(".dds") != std::string::npos || name.find(".DDS") != std::string::npos;
}

bool DDDS::ReadHeader(std::span<const std::byte> header)
{
  QByteReader in(header);
  in.Skip(8);
  const uint32_t height = in.GetU32();
  const uint32_t width = in.GetU32();
  in.Skip(8);
  mipCount = static_cast<int>(std::clamp<uint32_t>(in.GetU32(), 1, MAX_LEVELS));
  in.Skip(76 - 28);
  const uint32_t pixelFlags = in.GetU32();
  const std::string_view code = in.GetText(4);
  const uint32_t bits = in.GetU32();
  if (in.Failed() || width == 0 || height == 0 || width > MAX_SIZE || height > MAX_SIZE)
    return false;
  wid = static_cast<int>(width);
  hgt = static_cast<int>(height);
  if (!(pixelFlags & HAS_CODE)) {
    if (bits != 32) {
      QWARN("DDDS:Load(%s); unknown DDS format (rgb bitcount not 32, not DXT5)", name.c_str());
      return false;
    }
    QWARN("DDDS:Load(%s); DDS format might be unreliable, pls use DXT5.", name.c_str());
    format = PLAIN;
    return true;
  }
  constexpr std::pair<std::string_view, Format> CODES[] = {{"DXT1", DXT1}, {"DXT3", DXT3}, {"DXT5", DXT5}};
  const auto found = std::ranges::find(CODES, code, &std::pair<std::string_view, Format>::first);
  if (found == std::end(CODES)) {
    QWARN("DDDS:Load(%s); unknown compressed format (%s)", name.c_str(), std::string(code).c_str());
    return false;
  }
  format = found->second;
  return true;
}

// Each level's size is known by its number; none may go beyond the file.
bool DDDS::FindLevels(std::span<std::byte> bytes)
{
  for (int i = 0; i < mipCount; ++i) {
    const int w = std::max(wid >> i, 1);
    const int h = std::max(hgt >> i, 1);
    const size_t across = static_cast<size_t>(format == PLAIN ? w : (w + 3) / 4);
    const size_t down = static_cast<size_t>(format == PLAIN ? h : (h + 3) / 4);
    const size_t size = across * down * BlockSize(format);
    if (size > bytes.size()) {
      QERR("DDDS:Load(%s); mipmap level %d goes beyond the file's end", name.c_str(), i);
      return false;
    }
    levels[static_cast<size_t>(levelCount++)] = {w, h, bytes.first(size)};
    bytes = bytes.subspan(size);
  }
  return true;
}

void DDDS::Flip()
{
  for (const Level& level : Levels())
    switch (format) {
    case DXT1:
      FlipBlocks<DXT1>(level);
      break;
    case DXT3:
      FlipBlocks<DXT3>(level);
      break;
    case DXT5:
      FlipBlocks<DXT5>(level);
      break;
    default:
      FlipPlain(level);
    }
}

bool DDDS::Decode(size_t size)
{
  levelCount = 0;
  const std::span<std::byte> bytes(file.Data(), size);
  if (size < 4 + HEADER_SIZE || std::memcmp(file.Data(), "DDS ", 4) != 0 || !ReadHeader(bytes.subspan(4, HEADER_SIZE)))
    return false;
  if (!FindLevels(bytes.subspan(4 + HEADER_SIZE))) {
    levelCount = 0;
    return false;
  }
  transparent = !IsOpaque(format, levels[0]);
  Flip();
  return true;
}

bool DDDS::Load(const std::string& fileName)
{
  name = fileName;
  size_t size = 0;
  return QReadFile(fileName, file, size, true) && Decode(size);
}

bool DDDS::Load(std::span<const std::byte> bytes, const std::string& fileName)
{
  name = fileName;
  file = QBlock(bytes.size());
  std::ranges::copy(bytes, file.Data());
  return Decode(bytes.size());
}

std::shared_ptr<DTexture> DDDS::CreateTexture()
{
  return std::make_shared<DDSTexture>(std::move(*this));
}
