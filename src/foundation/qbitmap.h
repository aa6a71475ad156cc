#pragma once

#include "foundation/qblock.h"
#include "foundation/qcolor.h"
#include "foundation/qdrawable.h"
#include "foundation/qrect.h"

#include <cstddef>
#include <cstdint>
#include <span>
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
  // By a Format. False when the picture or the format can't be written (reported) or the file (not reported);
  // "%NAME%" in the file's name becomes that environment variable.
  [[nodiscard]] bool Write(const char* fileName, int format, int quality = 90) const;

protected:
  void TakePicture(QBitMap&& other); // its pixels and sizes; other is left empty

private:
  friend bool QReadTGA(std::span<const std::byte> file, QBitMap& picture, const char* name);
  // As Alloc, with pixels that are yet to be set.
  bool AllocUnset(int depth, int wid, int hgt, uint32_t flags, uint8_t* block);
  void ScaleNearest(const QBitMap& from);

  uint32_t flags = 0;
  int depth = 0; // bits a pixel
  int wid = 0;
  int hgt = 0;
  uint8_t* mem = nullptr; // into own, or someone else's
  int memSize = 0;
  QBlock own;
};
