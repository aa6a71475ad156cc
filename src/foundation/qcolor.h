#pragma once

#include "foundation/qobject.h"

#include <cstdint>

// One packed value: red in the top byte, then green, blue and alpha.
class QColor : public QObject
{
public:
  QColor() = default;
  QColor(int r, int g, int b, int a = 255) :
      rgba(static_cast<uint32_t>(r & 255) << 24 | static_cast<uint32_t>(g & 255) << 16 |
           static_cast<uint32_t>(b & 255) << 8 | static_cast<uint32_t>(a & 255))
  {}
  const char* GetClassName() const override { return "QColor"; }
  int GetR() const { return static_cast<int>(rgba >> 24); }
  int GetG() const { return static_cast<int>(rgba >> 16 & 255); }
  int GetB() const { return static_cast<int>(rgba >> 8 & 255); }
  int GetA() const { return static_cast<int>(rgba & 255); }
  uint32_t GetRGBA() const { return rgba; }

private:
  uint32_t rgba = 0x000000FF;
};
