// What changes the pixels of a picture.
#include "foundation/qbitmap.h"
#include "foundation/qreport.h"

#include <algorithm>
#include <cstring>

namespace {

// A rectangle of one picture that goes to a place in another, cut to what both have. y from the top.
struct Copied
{
  int sx, sy, dx, dy, wid, hgt;

  void Clip(const QBitMap& source, const QBitMap& target)
  {
    ClipAxis(sx, dx, wid, source.GetWidth(), target.GetWidth());
    ClipAxis(sy, dy, hgt, source.GetHeight(), target.GetHeight());
  }

private:
  static void ClipAxis(int& s, int& d, int& size, int sourceSize, int targetSize)
  {
    const int64_t skipped = std::max({int64_t{0}, -int64_t{s}, -int64_t{d}});
    const int64_t first = s + skipped;
    const int64_t place = d + skipped;
    const int64_t left = std::min({size - skipped, sourceSize - first, targetSize - place});
    size = static_cast<int>(std::max<int64_t>(left, 0));
    s = size > 0 ? static_cast<int>(first) : 0;
    d = size > 0 ? static_cast<int>(place) : 0;
  }
};

uint8_t* PixelFromTop(const QBitMap& picture, int x, int y)
{
  return picture.GetPixelAddress(x, picture.GetHeight() - y - 1);
}

bool IsColor(const uint8_t* pixel, const QColor& color)
{
  return pixel[0] == color.GetR() && pixel[1] == color.GetG() && pixel[2] == color.GetB();
}

template <typename Change>
void ForEachPixel(const QBitMap& picture, Change change)
{
  if (picture.GetDepth() != 32)
    return;
  uint8_t* const end = picture.GetBuffer() + picture.GetMemSize();
  for (uint8_t* pixel = picture.GetBuffer(); pixel != end; pixel += 4)
    change(pixel);
}

} // namespace

std::unique_ptr<QBitMap> QBitMap::CreateClone(bool copyPixels) const
{
  auto clone = std::make_unique<QBitMap>();
  if (!clone->Alloc(depth, wid, hgt, flags)) {
    QERR("Unable to create clone bitmap");
    return nullptr;
  }
  if (copyPixels && memSize > 0)
    std::memcpy(clone->mem, mem, static_cast<size_t>(memSize));
  return clone;
}

void QBitMap::CopyPixelsFrom(const QBitMap& src, int sx, int sy, int swid, int shgt, int dx, int dy)
{
  if (depth != 32 || src.depth != 32)
    return;
  if (swid > wid) {
    QWARN("QBitMap:CopyPixelsFrom() swid>wid (%d>%d); capping", swid, wid);
    swid = wid;
  }
  if (shgt > hgt) {
    QWARN("QBitMap:CopyPixelsFrom() shgt>hgt(%d>%d); capping", shgt, hgt);
    shgt = hgt;
  }
  Copied c{sx, sy, dx, dy, swid, shgt};
  c.Clip(src, *this);
  for (int y = 0; y < c.hgt && c.wid > 0; ++y)
    std::memmove(PixelFromTop(*this, c.dx, c.dy + y), PixelFromTop(src, c.sx, c.sy + y),
                 static_cast<size_t>(c.wid) * 4);
}

void QBitMap::CopyChannel(const QBitMap& src, int sx, int sy, int swid, int shgt, int srcChannel, int channel, int dx,
                          int dy)
{
  if (depth != 32 || src.depth != 32) {
    QWARN("QBitMap::CopyChannel() only supported for 32-bit");
    return;
  }
  Copied c{sx, sy, dx, dy, swid == -1 ? src.wid : swid, shgt == -1 ? src.hgt : shgt};
  c.Clip(src, *this);
  for (int y = 0; y < c.hgt; ++y)
    for (int x = 0; x < c.wid; ++x)
      PixelFromTop(*this, c.dx + x, c.dy + y)[channel & 3] = PixelFromTop(src, c.sx + x, c.sy + y)[srcChannel & 3];
}

void QBitMap::InvertChannel(int channel, int x, int y, int rectWid, int rectHgt)
{
  if (depth != 32) {
    QWARN("QBitMap::InvertChannel() only supported for 32-bit");
    return;
  }
  Copied c{x, y, x, y, rectWid == -1 ? wid : rectWid, rectHgt == -1 ? hgt : rectHgt};
  c.Clip(*this, *this);
  for (int row = 0; row < c.hgt; ++row)
    for (int column = 0; column < c.wid; ++column) {
      uint8_t& value = PixelFromTop(*this, c.dx + column, c.dy + row)[channel & 3];
      value = static_cast<uint8_t>(255 - value);
    }
}

bool QBitMap::Crop(const QRect& rect)
{
  Copied c{rect.x, rect.y, 0, 0, rect.wid, rect.hgt};
  QBitMap part;
  if (depth != 32)
    return false;
  c.Clip(*this, *this);
  if (!part.Alloc(32, c.wid, c.hgt, flags & ~uint32_t{FOREIGN_MEMORY}))
    return false;
  part.CopyPixelsFrom(*this, c.sx, c.sy, c.wid, c.hgt, 0, 0);
  TakePicture(std::move(part));
  return true;
}

void QBitMap::ClearTransparentColors()
{
  ForEachPixel(*this, [](uint8_t* pixel) {
    if (pixel[3] == 0)
      pixel[0] = pixel[1] = pixel[2] = 0;
  });
}

void QBitMap::KeyTransparent(const QColor& color)
{
  ForEachPixel(*this, [&](uint8_t* pixel) { pixel[3] = IsColor(pixel, color) ? 0 : 255; });
}

int QBitMap::MakeColorTransparent(const QColor& color)
{
  int count = 0;
  ForEachPixel(*this, [&](uint8_t* pixel) {
    if (!IsColor(pixel, color))
      return;
    std::memset(pixel, 0, 4);
    ++count;
  });
  return count;
}

int QBitMap::MakeMagentaTransparent()
{
  return MakeColorTransparent(QColor(255, 0, 255));
}

void QBitMap::Lut(int level, bool anyAlpha)
{
  const auto raised = static_cast<uint8_t>(std::clamp(level, 0, 255));
  ForEachPixel(*this, [&](uint8_t* pixel) {
    const bool takesPart = anyAlpha ? pixel[3] > 0 : pixel[3] >= 254;
    const int luminance = ((pixel[0] + 2 * pixel[1]) * 29 + pixel[2] * 13) / 100;
    if (takesPart && luminance < level)
      pixel[0] = pixel[1] = pixel[2] = raised;
  });
}

void QBitMap::SetAlpha(int value)
{
  ForEachPixel(*this, [value](uint8_t* pixel) { pixel[3] = static_cast<uint8_t>(value); });
}

void QBitMap::ScaleAlpha(int mul, int div, int add)
{
  if (div == 0)
    return;
  ForEachPixel(*this, [=](uint8_t* pixel) {
    const int64_t scaled = int64_t{pixel[3]} * mul / div + add;
    pixel[3] = static_cast<uint8_t>(std::clamp<int64_t>(scaled, 0, 255));
  });
}

void QBitMap::AlphaToColor()
{
  ForEachPixel(*this, [](uint8_t* pixel) { std::memset(pixel, pixel[3] != 0 ? 255 : 0, 3); });
}

void QBitMap::SwapBytes()
{
  ForEachPixel(*this, [](uint8_t* pixel) { std::reverse(pixel, pixel + 4); });
}

bool QBitMap::MergeAlpha(const QBitMap& other)
{
  if (depth != 32 || other.depth != 32)
    QWARN("Only supported for 32-bit");
  else if (wid != other.wid)
    QWARN("Bitmaps must be the same size/width");
  else if (hgt != other.hgt)
    QWARN("Bitmaps must be the same size/height");
  else {
    for (int i = 0; i < memSize; i += 4)
      mem[i + 3] = other.mem[i];
    return true;
  }
  return false;
}

bool QBitMap::Rotate(int angle, const QRect* srcRect, QBitMap& dst, int dx, int dy) const
{
  if (angle != 0 && angle != 90 && angle != 180 && angle != 270) {
    QWARN("QBitMap:Rotate(); angle %d not supported", angle);
    return false;
  }
  if (depth != 32 || dst.depth != 32 || &dst == this)
    return false;
  const QRect whole{0, 0, wid, hgt};
  const QRect& r = srcRect ? *srcRect : whole;
  Copied c{r.x, r.y, r.x, r.y, r.wid, r.hgt};
  c.Clip(*this, *this);
  for (int y = 0; y < c.hgt; ++y)
    for (int x = 0; x < c.wid; ++x) {
      // Clockwise, as a person sees it.
      const int across = angle == 0 ? x : angle == 90 ? c.hgt - 1 - y : angle == 180 ? c.wid - 1 - x : y;
      const int down = angle == 0 ? y : angle == 90 ? x : angle == 180 ? c.hgt - 1 - y : c.wid - 1 - x;
      const int64_t toX = int64_t{dx} + across;
      const int64_t toY = int64_t{dy} + down;
      if (toX >= 0 && toY >= 0 && toX < dst.wid && toY < dst.hgt)
        std::memcpy(PixelFromTop(dst, static_cast<int>(toX), static_cast<int>(toY)),
                    PixelFromTop(*this, c.sx + x, c.sy + y), 4);
    }
  return true;
}
