#include "geometry/ddds.h"

#include "foundation/qbytes.h"
#include "foundation/qpastcache.h"
#include "foundation/qpiecereader.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"

#include <algorithm>
#include <cstring>
#include <epoxy/gl.h>
#include <new>
#include <utility>

namespace {

constexpr size_t HEADER_SIZE = 124;
constexpr int MAX_SIZE = 16384;
constexpr uint32_t HAS_CODE = 0x4; // of the pixel format's flags

constexpr size_t BlockSize(DDDS::Format format)
{
  return format == DDDS::PLAIN ? 4 : format == DDDS::DXT1 ? 8 : 16;
}

// The eight bytes of a block that tell of colours, and of the alpha that stands before them.
struct BlockWords
{
  uint64_t alpha;
  uint64_t colors;
};

template <DDDS::Format FORMAT>
BlockWords LoadBlock(const std::byte* from)
{
  BlockWords block{};
  if constexpr (FORMAT == DDDS::DXT1)
    std::memcpy(&block.colors, from, 8);
  else
    std::memcpy(&block, from, 16);
  return block;
}

template <DDDS::Format FORMAT, bool BIG>
void StoreBlock(const BlockWords& block, std::byte* to)
{
  if constexpr (FORMAT == DDDS::DXT1)
    std::memcpy(to, &block.colors, 8);
  else if constexpr (BIG)
    QStorePastCache(QSixteenBytes{block.alpha, block.colors}, to);
  else
    std::memcpy(to, &block, 16);
}

// The first COUNT rows of four, of so many bits each, are turned upside down; they lie in the word's upper end.
template <int BITS, int COUNT>
uint64_t FlipRows(uint64_t word)
{
  if constexpr (BITS == 8 && COUNT == 4) // one instruction
    return (word & 0xFFFFFFFF) | uint64_t{__builtin_bswap32(static_cast<uint32_t>(word >> 32))} << 32;
  constexpr int START = 64 - 4 * BITS;
  constexpr uint64_t MASK = (uint64_t{1} << BITS) - 1;
  const auto row = [&](int to) {
    const int from = to < COUNT ? COUNT - 1 - to : to;
    return (word >> (START + BITS * from) & MASK) << (START + BITS * to);
  };
  const uint64_t head = START == 0 ? 0 : word & ((uint64_t{1} << START) - 1);
  return head | row(0) | row(1) | row(2) | row(3);
}

template <DDDS::Format FORMAT, int COUNT>
BlockWords FlipBlock(const BlockWords& block)
{
  uint64_t alpha = 0;
  if constexpr (FORMAT == DDDS::DXT3)
    alpha = FlipRows<16, COUNT>(block.alpha);
  else if constexpr (FORMAT == DDDS::DXT5)
    alpha = FlipRows<12, COUNT>(block.alpha);
  return {alpha, FlipRows<8, COUNT>(block.colors)};
}

template <DDDS::Format FORMAT>
bool IsOpaque(const BlockWords& block)
{
  if (FORMAT == DDDS::DXT3)
    return block.alpha == ~uint64_t{0};
  if (FORMAT == DDDS::DXT5) // both ends opaque, or all pixels at the end that is
    return (block.alpha & 0xFFFF) == 0xFFFF || ((block.alpha & 0xFF) == 0xFF && block.alpha >> 16 == 0);
  const auto first = static_cast<uint16_t>(block.colors);
  const auto second = static_cast<uint16_t>(block.colors >> 16);
  const auto indices = static_cast<uint32_t>(block.colors >> 32);
  return first > second || (indices & indices >> 1 & 0x55555555) == 0; // index 3 is the invisible one
}

// A row of blocks to its place. True when any pixel isn't opaque.
template <DDDS::Format FORMAT, int COUNT, bool BIG = false>
bool FlipBlocks(std::span<const std::byte> from, std::byte* to)
{
  constexpr size_t SIZE = BlockSize(FORMAT);
  bool opaque = true;
  for (size_t at = 0; at < from.size(); at += SIZE) {
    const auto block = LoadBlock<FORMAT>(from.data() + at);
    opaque = opaque && IsOpaque<FORMAT>(block);
    StoreBlock<FORMAT, BIG>(FlipBlock<FORMAT, COUNT>(block), to + at);
  }
  return !opaque;
}

// A level that is less than a block high has only the block's first rows.
template <DDDS::Format FORMAT>
bool FlipBlocks(std::span<const std::byte> from, std::byte* to, const DDDS::Level& level)
{
  switch (level.hgt) {
  case 1:
    return FlipBlocks<FORMAT, 1>(from, to);
  case 2:
    return FlipBlocks<FORMAT, 2>(from, to);
  case 3:
    return FlipBlocks<FORMAT, 3>(from, to);
  default:
    return level.pixels.size() < QBEYOND_CACHE ? FlipBlocks<FORMAT, 4>(from, to)
                                               : FlipBlocks<FORMAT, 4, true>(from, to);
  }
}

// A row of pixels; blue and red change places.
bool SwapRow(std::span<const std::byte> from, std::byte* to)
{
  uint32_t all = ~uint32_t{0};
  for (size_t at = 0; at < from.size(); at += 4) {
    uint32_t pixel;
    std::memcpy(&pixel, from.data() + at, sizeof pixel);
    all &= pixel;
    pixel = (pixel & 0xFF00FF00) | (pixel & 0xFF) << 16 | (pixel >> 16 & 0xFF);
    std::memcpy(to + at, &pixel, sizeof pixel);
  }
  return all >> 24 != 0xFF;
}

bool PutRow(DDDS::Format format, std::span<const std::byte> from, std::byte* to, const DDDS::Level& level)
{
  switch (format) {
  case DDDS::DXT1:
    return FlipBlocks<DDDS::DXT1>(from, to, level);
  case DDDS::DXT3:
    return FlipBlocks<DDDS::DXT3>(from, to, level);
  case DDDS::DXT5:
    return FlipBlocks<DDDS::DXT5>(from, to, level);
  default:
    return SwapRow(from, to);
  }
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

size_t DDDS::RowSize(const Level& level) const
{
  const int across = format == PLAIN ? level.wid : (level.wid + 3) / 4;
  return static_cast<size_t>(across) * BlockSize(format);
}

size_t DDDS::Rows(const Level& level) const
{
  return static_cast<size_t>(format == PLAIN ? level.hgt : (level.hgt + 3) / 4);
}

// Each level's size is known by its number; none may go beyond the file. Only then is their memory taken.
bool DDDS::AllocLevels(size_t bytes)
{
  size_t whole = 0;
  for (int i = 0; i < mipCount; ++i) {
    const Level level{std::max(wid >> i, 1), std::max(hgt >> i, 1), {}};
    whole += RowSize(level) * Rows(level);
    if (whole > bytes) {
      QERR("DDDS:Load(%s); mipmap level %d goes beyond the file's end", name.c_str(), i);
      return false;
    }
    levels[static_cast<size_t>(i)] = level;
  }
  try {
    pixels = QBlock(whole);
  } catch (const std::bad_alloc&) {
    QERR("DDDS:Load(%s); out of memory for mipmap level %d", name.c_str(), 0);
    return false;
  }
  levelCount = mipCount;
  std::span<std::byte> left(pixels.Data(), whole);
  for (Level& level : std::span(levels).first(static_cast<size_t>(levelCount))) {
    level.pixels = left.first(RowSize(level) * Rows(level));
    left = left.subspan(level.pixels.size());
  }
  return true;
}

// Rows of blocks come from the top and go to their place from the bottom, turned on the way; rows of plain pixels stay
// in their order. False when the file ends early.
bool DDDS::ReadLevel(QPieceReader& in, const Level& level, bool& seesThrough) const
{
  const size_t rowSize = RowSize(level);
  const size_t rows = Rows(level);
  const size_t rowsAPiece = std::max<size_t>(QPieceReader::PIECE / rowSize, 1);
  std::byte* to = level.pixels.data();
  std::ptrdiff_t step = static_cast<std::ptrdiff_t>(rowSize);
  if (format != PLAIN) {
    to += level.pixels.size() - rowSize;
    step = -step;
  }
  for (size_t row = 0; row < rows; row += rowsAPiece) {
    const size_t count = std::min(rowsAPiece, rows - row);
    const auto piece = in.Take(count * rowSize);
    if (piece.empty())
      return false;
    for (size_t i = 0; i < count; ++i)
      seesThrough |=
          PutRow(format, piece.subspan(i * rowSize, rowSize), to + step * static_cast<std::ptrdiff_t>(row + i), level);
  }
  QFinishStores();
  return true;
}

bool DDDS::Decode(QPieceReader& in)
{
  levelCount = 0;
  const auto header = in.Take(4 + HEADER_SIZE);
  if (header.empty() || std::memcmp(header.data(), "DDS ", 4) != 0 || !ReadHeader(header.subspan(4)) ||
      !AllocLevels(in.Left()))
    return false;
  for (int i = 0; i < levelCount; ++i) {
    bool seesThrough = false;
    if (!ReadLevel(in, levels[static_cast<size_t>(i)], seesThrough)) {
      levelCount = 0;
      return false;
    }
    if (i == 0)
      transparent = seesThrough;
  }
  return true;
}

bool DDDS::Load(const std::string& fileName)
{
  name = fileName;
  QPieceReader in(fileName);
  return in.IsOpen() && Decode(in);
}

bool DDDS::Load(std::span<const std::byte> bytes, const std::string& fileName)
{
  name = fileName;
  QPieceReader in(bytes);
  return Decode(in);
}

DTexturePtr DDDS::CreateTexture()
{
  return std::make_unique<DDSTexture>(std::move(*this));
}
