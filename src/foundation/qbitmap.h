#pragma once

#include "foundation/qblock.h"
#include "foundation/qcolor.h"
#include "foundation/qdrawable.h"
#include "foundation/qrect.h"

#include <cstdint>
#include <memory>
#include <string>

// A picture in memory. At 32 bits a pixel is four bytes: red, green, blue, alpha. Rows lie without padding, and row 0
// of the memory is the bottom row. Operations with a y count it from the top; GetPixelAddress alone takes memory rows.
class QBitMap : public QDrawable
{
public:
  enum Flag : uint32_t
  {
    FOREIGN_MEMORY = 2
  }; // the pixels belong to someone else and aren't freed
  enum Format
  {
    RGB = 0,
    TGA = 1,
    TGA_GREY = 2,
    JPG = 3
  };

  // Allocates when none of the three numbers is 0.
  explicit QBitMap(int depth = 0, int wid = 0, int hgt = 0, uint32_t flags = 0);
  const char* GetClassName() const override { return "QBitMap"; }
  int GetWidth() const override { return wid; }
  int GetHeight() const override { return hgt; }
  int GetDepth() const { return depth; }
  uint32_t GetFlags() const { return flags; }
  uint8_t* GetBuffer() const { return mem; }      // null when there is no picture
  int GetMemSize() const { return memSize; }      // bytes
  uint8_t* GetPixelAddress(int x, int row) const; // not checked

  // A picture of zeroes, or over a block of the caller's that must outlive it. False, with a report and no picture,
  // when there is no such memory.
  bool Alloc(int depth, int wid, int hgt, uint32_t flags = 0, uint8_t* block = nullptr);
  // As Alloc, with pixels that are yet to be set.
  bool AllocUnset(int depth, int wid, int hgt, uint32_t flags = 0, uint8_t* block = nullptr);
  void Free();
  void Clear(); // every pixel black and transparent
  // A rectangle, or all of it for null; what lies outside is reported and clipped.
  void Fill(const QRect* rect, const QColor& color, bool keepAlpha = false);
  void GetColorAt(int x, int y, QColor& color) const; // clamped into the picture
  void SetColorAt(int x, int y, const QColor& color); // out of range: reported, nothing changed
  bool HasTransparency() const;                       // any alpha below 255
  // To a 32-bit picture of that size; without scale the pixels are zeroes. False, with a report and the picture as it
  // was, when there is no memory for it.
  bool Resize(int wid, int hgt, bool scale = true);

  // The operations below are for pictures of 32 bits; on others they do nothing. Rectangles are cut to the pictures. A
  // channel is a byte of the pixel: 0 red, 1 green, 2 blue, 3 alpha.
  // Of the same size and flags; null, reported, without the memory.
  std::unique_ptr<QBitMap> CreateClone(bool copyPixels = true) const;
  // A source larger than this picture is reported and capped.
  void CopyPixelsFrom(const QBitMap& src, int sx, int sy, int swid, int shgt, int dx, int dy);
  // A width or height of -1 is the whole picture's.
  void CopyChannel(const QBitMap& src, int sx, int sy, int swid, int shgt, int srcChannel, int channel, int dx = 0,
                   int dy = 0);
  void InvertChannel(int channel, int x = 0, int y = 0, int rectWid = -1, int rectHgt = -1);
  bool Crop(const QRect& rect);                  // false, and nothing changed, without the memory
  void ClearTransparentColors();                 // a pixel with alpha 0 becomes black
  void KeyTransparent(const QColor& color);      // alpha 0 where the colour is this one, else 255
  int MakeColorTransparent(const QColor& color); // pixels of this colour become all zero; how many
  int MakeMagentaTransparent();
  // Pixels that are darker than the level get it as red, green and blue: opaque ones, or all that aren't invisible.
  void Lut(int level, bool anyAlpha = false);
  void SetAlpha(int value);
  void ScaleAlpha(int mul, int div, int add); // alpha * mul / div + add, kept within a byte
  void AlphaToColor();                        // white where alpha isn't 0, else black; alpha stays
  void SwapBytes();                           // each pixel's four, back to front
  // Alpha becomes the other picture's red. False, reported, unless both are of 32 bits and one size.
  bool MergeAlpha(const QBitMap& other);
  // Copies a rectangle, null for all, turned clockwise by 0, 90, 180 or 270 degrees, its corner at dx, dy. False,
  // reported, for another angle.
  bool Rotate(int angle, const QRect* srcRect, QBitMap& dst, int dx, int dy) const;

  // By a Format. False when the picture or the format can't be written (reported) or the file (not reported);
  // "%NAME%" in the file's name becomes that environment variable.
  [[nodiscard]] bool Write(const char* fileName, int format, int quality = 90) const;
  // The bytes that Write puts into the file; empty, reported with the name, when there are none.
  std::string Encode(const std::string& fileName, int format, int quality = 90) const;

protected:
  void TakePicture(QBitMap&& other); // its pixels and sizes; other is left empty

private:
  void ScaleNearest(const QBitMap& from);

  uint32_t flags = 0;
  int depth = 0; // bits a pixel
  int wid = 0;
  int hgt = 0;
  uint8_t* mem = nullptr; // into own, or someone else's
  int memSize = 0;
  QBlock own;
};
