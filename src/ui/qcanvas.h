#pragma once

#include "foundation/qcolor.h"
#include "foundation/qobject.h"
#include "foundation/qrect.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

class QBitMap;
class QDrawable;
class QFont;
struct QGlyph;
class QWindow;

// The colours of the interface.
enum QPaletteColor : int
{
  PX_WHITE = 0,
  PX_BLACK = 1,
  PX_LTGRAY = 2,
  PX_MDGRAY = 3,
  PX_DKGRAY = 4,
  PX_RED = 5,
  PX_DKTEAL = 6,
  PX_FACE = 7, // half transparent
  PX_PRESSED = 8,
  PX_FOCUS = 9,
  PX_PALETEAL = 10,
  PX_OVERLAY = 11,
};

enum class QAlign
{
  LEFT,
  CENTER,
  RIGHT
};

// Draws on a window in pixels from its top left corner, y down. Without a context nothing happens.
// Outside Begin and End each call draws at once; between them primitives are gathered, and the run goes out in a few
// draw calls at the outermost End. Pairs nest, also across the canvases of several windows.
class QCanvas : public QObject
{
public:
  explicit QCanvas(QWindow& owner) : window(&owner) {}
  // Onto a plain picture of 32 bits, without OpenGL: rectangles are filled, all else is reported. It must live longer.
  explicit QCanvas(QBitMap& target) : bitmap(&target) {}
  QCanvas(const QCanvas&) = delete;
  QCanvas& operator=(const QCanvas&) = delete;
  const char* GetClassName() const override { return "QCanvas"; }

  void Begin();
  void End();
  // 2D drawing needs no preparation; Set3D sends out what was gathered, so that 3D drawing can follow.
  void Set2D() {}
  void Set3D() { Flush(); }
  void Clear(); // all of the window, to the current colour
  void Flush();
  void Swap();

  void SetColor(const QColor& c) { color = c; }
  void SetColor(int r, int g, int b, int a = 255) { color = QColor(r, g, b, a); }
  // A colour of the palette; alpha -1 is its own. The half transparent ones turn blending on.
  void SetColor(int px, int alpha = -1);
  const QColor& GetColor() const { return color; }
  void SetBlending(bool on) { blending = on; }
  void SetFont(QFont* f) { font = f; } // not owned
  QFont* GetFont() const { return font; }
  void SetClipRect(int x, int y, int wid, int hgt);
  void DisableClipping() { clipped = false; }

  void Rectfill(int x, int y, int wid, int hgt);
  void Rectfill(const QRect& r) { Rectfill(r.x, r.y, r.wid, r.hgt); }
  // Colours of top left, top right, bottom right, bottom left.
  void Rectfill(const QRect& r, const std::array<QColor, 4>& corners);
  void Rectangle(int x, int y, int wid, int hgt);
  void Rectangle(const QRect& r) { Rectangle(r.x, r.y, r.wid, r.hgt); }
  void Line(int x1, int y1, int x2, int y2);
  void Edges(const QRect& r, const QColor& topLeft, const QColor& bottomRight); // one pixel
  void Outline(const QRect& r);                                                 // raised
  void Inline(const QRect& r);                                                  // sunken
  // One line of text, x, y at the top left; len -1 for all of it.
  void Text(std::string_view text, int x, int y, int len = -1);
  void Text(std::u32string_view text, int x, int y, int len = -1);
  // At a point of the 3D view, as the current matrices place it; outline fonts only. Reported without a font.
  void Text3D(std::string_view text, float x, float y);
  // Bold, slanted and the like belong to the font: a style other than 0 is reported with the next text.
  void SetTextStyle(int style) { textStyle = style; }
  // Pixels from the top row down, red in the lowest byte, at their own size; at once, over what was drawn before.
  void DrawPixels(int x, int y, int wid, int hgt, std::span<const uint32_t> rgba);
  // Part of a picture (QBitMap), source from its top left; false for anything else. With blend by its alpha, else
  // whole.
  bool Blit(const QDrawable& source, int dx, int dy, int wid, int hgt, int sx, int sy, bool blend);
  // Up to 10 lines, the block in the middle of the rectangle.
  void TextML(std::string_view text, const QRect& r, QAlign align = QAlign::CENTER);
  // Part of a texture of OpenGL; source in texels from the top.
  void Texture(uint32_t glTexture, int texWid, int texHgt, const QRect& src, const QRect& dst);

private:
  struct Corner
  {
    float x, y, u, v;
  };

  void OutlineText(std::string_view text, int x, int y);
  void TexFontText(std::string_view text, int x, int y);
  // Stretched into a place on the top-level window, cut at the limit.
  void Glyph(const QGlyph& glyph, float x, float y, float wid, float hgt, const QRect& limit);
  bool Ready();
  void Quad(QRect r, const std::array<QColor, 4>& corners);
  QRect ClipOnRoot() const;

  void FillBitMap(const QRect& r);

  QWindow* window = nullptr; // one of the two
  QBitMap* bitmap = nullptr;
  int textStyle = 0;
  QColor color{255, 255, 255};
  QFont* font = nullptr;
  bool blending = false;
  bool clipped = false;
  QRect clip;
};
