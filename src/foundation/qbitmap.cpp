#include "foundation/qbitmap.h"

#include "foundation/qjpg.h"
#include "foundation/qreport.h"
#include "foundation/qrgb.h"
#include "foundation/qsafewrite.h"
#include "foundation/qstring.h"
#include "foundation/qtga.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

#define STB_IMAGE_RESIZE_STATIC
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#include <stb/stb_image_resize.h>

namespace {

// Bytes of a picture; -1 when there can't be such a one.
int SizeOf(int depth, int wid, int hgt)
{
  if (depth <= 0 || depth > 64 || wid < 0 || hgt < 0)
    return -1;
  const int64_t row = int64_t{(depth + 7) / 8} * wid; // 34 bits at most
  return hgt > 0 && row > INT_MAX / hgt ? -1 : static_cast<int>(row * hgt);
}

bool TakeBlock(QBlock& block, size_t size)
{
  try {
    block = QBlock(size);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

void PutColor(uint8_t* pixel, const QColor& color, bool keepAlpha)
{
  pixel[0] = static_cast<uint8_t>(color.GetR());
  pixel[1] = static_cast<uint8_t>(color.GetG());
  pixel[2] = static_cast<uint8_t>(color.GetB());
  if (!keepAlpha)
    pixel[3] = static_cast<uint8_t>(color.GetA());
}

// The part of r inside a picture.
QRect ClipForFill(QRect r, int wid, int hgt)
{
  if (r.x < 0) {
    QWARN("r->x<0");
    r.wid += r.x;
    r.x = 0;
  }
  if (int64_t{r.x} + r.wid > wid) {
    QWARN("Fill r->x+r->wid>wid (%d+%d>%d)", r.x, r.wid, wid);
    r.wid = wid - r.x;
  }
  if (r.y < 0) {
    QWARN("r->y<0");
    r.hgt += r.y;
    r.y = 0;
  }
  if (int64_t{r.y} + r.hgt > hgt) {
    QWARN("Fill r->y+r->hgt>hgt (%d+%d>%d)", r.y, r.hgt, hgt);
    r.hgt = hgt - r.y;
  }
  return r;
}

} // namespace

QBitMap::QBitMap(int newDepth, int newWid, int newHgt, uint32_t newFlags) : flags(newFlags)
{
  if (newDepth != 0 && newWid != 0 && newHgt != 0)
    Alloc(newDepth, newWid, newHgt, newFlags);
}

uint8_t* QBitMap::GetPixelAddress(int x, int row) const
{
  return mem + (static_cast<size_t>(row) * static_cast<size_t>(wid) + static_cast<size_t>(x)) *
                   static_cast<size_t>((depth + 7) / 8);
}

bool QBitMap::Alloc(int newDepth, int newWid, int newHgt, uint32_t newFlags, uint8_t* block)
{
  if (!AllocUnset(newDepth, newWid, newHgt, newFlags, block))
    return false;
  if (!block)
    std::memset(mem, 0, static_cast<size_t>(memSize));
  return true;
}

bool QBitMap::AllocUnset(int newDepth, int newWid, int newHgt, uint32_t newFlags, uint8_t* block)
{
  Free();
  const int size = SizeOf(newDepth, newWid, newHgt);
  if (size < 0 || (!block && !TakeBlock(own, static_cast<size_t>(size)))) {
    QERR("QBitMap::Alloc() failed on %dx%d, depth %d, flags %d\n", newWid, newHgt, newDepth,
         static_cast<int>(newFlags));
    return false;
  }
  flags = (newFlags & ~uint32_t{FOREIGN_MEMORY}) | (block ? FOREIGN_MEMORY : 0u);
  depth = newDepth;
  wid = newWid;
  hgt = newHgt;
  mem = block ? block : reinterpret_cast<uint8_t*>(own.Data());
  memSize = size;
  return true;
}

void QBitMap::Free()
{
  own = QBlock();
  flags &= ~uint32_t{FOREIGN_MEMORY};
  depth = wid = hgt = memSize = 0;
  mem = nullptr;
}

void QBitMap::TakePicture(QBitMap&& other)
{
  Free();
  flags = other.flags;
  depth = other.depth;
  wid = other.wid;
  hgt = other.hgt;
  mem = other.mem;
  memSize = other.memSize;
  own = std::move(other.own);
  other.Free();
}

void QBitMap::Clear()
{
  if (depth == 32)
    std::memset(mem, 0, static_cast<size_t>(memSize));
}

void QBitMap::Fill(const QRect* rect, const QColor& color, bool keepAlpha)
{
  if (depth != 32)
    return;
  const QRect r = rect ? ClipForFill(*rect, wid, hgt) : QRect{0, 0, wid, hgt};
  for (int y = r.y; y < r.y + r.hgt; ++y)
    for (int x = r.x; x < r.x + r.wid; ++x)
      PutColor(GetPixelAddress(x, hgt - y - 1), color, keepAlpha);
}

void QBitMap::GetColorAt(int x, int y, QColor& color) const
{
  if (depth != 32 || wid == 0 || hgt == 0)
    return;
  const uint8_t* p = GetPixelAddress(std::clamp(x, 0, wid - 1), hgt - std::clamp(y, 0, hgt - 1) - 1);
  color = QColor(p[0], p[1], p[2], p[3]);
}

void QBitMap::SetColorAt(int x, int y, const QColor& color)
{
  if (x < 0 || y < 0 || x >= wid || y >= hgt)
    QWARN("QBitMap:SetColorAt(%d,%d) out of range (%dx%d)", x, y, wid, hgt);
  else if (depth == 32)
    PutColor(GetPixelAddress(x, hgt - y - 1), color, false);
}

bool QBitMap::HasTransparency() const
{
  if (depth != 32)
    return false;
  for (int i = 3; i < memSize; i += 4)
    if (mem[i] < 255)
      return true;
  return false;
}

// Each pixel is the one that lies at its place.
void QBitMap::ScaleNearest(const QBitMap& from)
{
  for (int y = 0; y < hgt; ++y)
    for (int x = 0; x < wid; ++x)
      std::memcpy(GetPixelAddress(x, y),
                  from.GetPixelAddress(static_cast<int>(int64_t{x} * from.wid / wid),
                                       static_cast<int>(int64_t{y} * from.hgt / hgt)),
                  4);
}

bool QBitMap::Resize(int newWid, int newHgt, bool scale)
{
  QBitMap result;
  const int size = SizeOf(32, newWid, newHgt);
  if (size <= 0 || !TakeBlock(result.own, static_cast<size_t>(size))) {
    QERR("QBitMap::Alloc() failed on %dx%d, depth %d", newWid, newHgt, 32);
    return false;
  }
  result.flags = flags & ~uint32_t{FOREIGN_MEMORY};
  result.depth = 32;
  result.wid = newWid;
  result.hgt = newHgt;
  result.mem = reinterpret_cast<uint8_t*>(result.own.Data());
  result.memSize = size;
  if (!scale || depth != 32 || memSize == 0) {
    result.Clear();
  } else {
    // Alpha is a channel like the others: colours under a transparent pixel are part of the picture.
    const bool shrinks = int64_t{newWid} * newHgt < int64_t{wid} * hgt;
    const int good = stbir_resize_uint8_generic(
        mem, wid, hgt, 0, result.mem, newWid, newHgt, 0, 4, STBIR_ALPHA_CHANNEL_NONE, 0, STBIR_EDGE_CLAMP,
        shrinks ? STBIR_FILTER_BOX : STBIR_FILTER_TRIANGLE, STBIR_COLORSPACE_LINEAR, nullptr);
    if (!good) {
      QWARN("QBitMap:Resize() failed; %s", "out of memory");
      result.ScaleNearest(*this);
    }
  }
  TakePicture(std::move(result));
  return true;
}

std::string QBitMap::Encode(const std::string& fileName, int format, int quality) const
{
  switch (format) {
  case RGB:
    return QWriteRGB(*this, fileName);
  case TGA:
  case TGA_GREY:
    return QWriteTGA(*this, format);
  case JPG:
    return QWriteJPG(*this, quality, fileName.c_str());
  default:
    QERR("QBitMap:Write(); unsupported format %d to write '%s'", format, fileName.c_str());
    return {};
  }
}

bool QBitMap::Write(const char* fileName, int format, int quality) const
{
  qstring path(fileName);
  path.ConvertEnv();
  const std::string file = Encode(path.Str(), format, quality);
  const bool written = !file.empty() && QWriteFile(path.Str(), file);
  if (!written && !file.empty() && format == JPG)
    QERR("QBitMap::WriteJPG(%s); can't open file", path.c_str());
  return written;
}
