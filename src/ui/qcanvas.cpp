#include "ui/qcanvas.h"

#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qglbatch.h"
#include "ui/qgloverlay.h"
#include "ui/qglyphs.h"
#include "ui/qtext.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

struct PaletteEntry
{
  uint8_t r, g, b, a;
  bool blend;
};
constexpr PaletteEntry PALETTE[] = {
    {255, 255, 255, 255, false}, {0, 0, 0, 255, false},       {224, 224, 224, 255, false}, {212, 208, 200, 255, false},
    {128, 128, 128, 255, false}, {255, 0, 0, 255, false},     {39, 73, 78, 255, false},    {68, 126, 142, 128, true},
    {83, 153, 165, 255, false},  {110, 208, 221, 255, false}, {139, 201, 219, 255, false}, {255, 255, 255, 255, true},
};

// Without blending a colour covers what it is painted on, whatever its alpha.
uint32_t Packed(const QColor& c, bool blending)
{
  const int alpha = blending ? c.GetA() : 255;
  return static_cast<uint32_t>(c.GetR()) | static_cast<uint32_t>(c.GetG()) << 8 |
         static_cast<uint32_t>(c.GetB()) << 16 | static_cast<uint32_t>(alpha) << 24;
}

QRect Intersection(const QRect& a, const QRect& b)
{
  const int x = std::max(a.x, b.x);
  const int y = std::max(a.y, b.y);
  return {x, y, std::max(0, std::min(a.x + a.wid, b.x + b.wid) - x),
          std::max(0, std::min(a.y + a.hgt, b.y + b.hgt) - y)};
}

// Draws at the end of a call outside Begin and End.
class Run
{
public:
  Run()
  {
    if (app)
      app->GetBatch().Begin();
  }
  ~Run()
  {
    if (app)
      app->GetBatch().End();
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
};

} // namespace

bool QCanvas::Ready()
{
  return DGlobals().hasContext && app;
}

void QCanvas::Begin()
{
  if (Ready())
    app->GetBatch().Begin();
}

void QCanvas::End()
{
  if (Ready())
    app->GetBatch().End();
}

void QCanvas::Flush()
{
  if (Ready())
    app->GetBatch().Flush();
}

void QCanvas::Swap()
{
  Flush();
  if (app)
    app->GetDisplay().Swap();
}

void QCanvas::Clear()
{
  bitmap ? FillBitMap({0, 0, bitmap->GetWidth(), bitmap->GetHeight()})
         : Rectfill(0, 0, window->rect.wid, window->rect.hgt);
}

void QCanvas::FillBitMap(const QRect& r)
{
  QRect inside = Intersection(r, {0, 0, bitmap->GetWidth(), bitmap->GetHeight()});
  if (clipped)
    inside = Intersection(inside, clip);
  if (inside.wid > 0 && inside.hgt > 0)
    bitmap->Fill(&inside, color, false);
}

void QCanvas::SetColor(int px, int alpha)
{
  if (px < 0 || px >= static_cast<int>(std::size(PALETTE))) {
    QWARN("QCanvas::SetColor(%d) unknown PX_xxx", px);
    color = QColor(0, 255, 0);
    return;
  }
  const PaletteEntry& entry = PALETTE[px];
  color = QColor(entry.r, entry.g, entry.b, alpha < 0 ? entry.a : alpha);
  if (entry.blend)
    blending = true;
}

void QCanvas::SetClipRect(int x, int y, int wid, int hgt)
{
  clip = {x, y, wid, hgt};
  clipped = true;
}

// Where drawing may reach, on the top-level window.
QRect QCanvas::ClipOnRoot() const
{
  QRect r = window->RootRect();
  if (!clipped)
    return {0, 0, 32767, 32767};
  return {r.x + clip.x, r.y + clip.y, clip.wid, clip.hgt};
}

void QCanvas::Quad(QRect r, const std::array<QColor, 4>& corners)
{
  const QRect root = window->RootRect();
  r.x += root.x;
  r.y += root.y;
  if (clipped)
    r = Intersection(r, ClipOnRoot());
  if (r.wid <= 0 || r.hgt <= 0)
    return;
  const Run run;
  QGlyphAtlas& atlas = app->GetGlyphAtlas();
  const uint32_t texture = atlas.Texture();
  const float w = atlas.White();
  const auto x = static_cast<float>(r.x), y = static_cast<float>(r.y);
  const auto right = static_cast<float>(r.x + r.wid), below = static_cast<float>(r.y + r.hgt);
  app->GetBatch().Quad(texture, {{{x, y, w, w, Packed(corners[0], blending)},
                                  {right, y, w, w, Packed(corners[1], blending)},
                                  {right, below, w, w, Packed(corners[2], blending)},
                                  {x, below, w, w, Packed(corners[3], blending)}}});
}

void QCanvas::Rectfill(int x, int y, int wid, int hgt)
{
  if (bitmap)
    FillBitMap({x, y, wid, hgt});
  else if (Ready())
    Quad({x, y, wid, hgt}, {color, color, color, color});
}

void QCanvas::Rectfill(const QRect& r, const std::array<QColor, 4>& corners)
{
  if (bitmap)
    FillBitMap(r);
  else if (Ready())
    Quad(r, corners);
}

void QCanvas::Rectangle(int x, int y, int wid, int hgt)
{
  if ((!bitmap && !Ready()) || wid <= 0 || hgt <= 0)
    return;
  const Run run;
  Rectfill(x, y, wid, 1);
  Rectfill(x, y + hgt - 1, wid, 1);
  Rectfill(x, y + 1, 1, hgt - 2);
  Rectfill(x + wid - 1, y + 1, 1, hgt - 2);
}

void QCanvas::Line(int x1, int y1, int x2, int y2)
{
  if (bitmap) {
    QWARN("Canvas:Line not supported for X");
    return;
  }
  if (!Ready())
    return;
  if (x1 == x2 || y1 == y2) {
    Rectfill(std::min(x1, x2), std::min(y1, y2), std::abs(x2 - x1) + 1, std::abs(y2 - y1) + 1);
    return;
  }
  // One pixel a step along the longer side: what clipping and batching know is rectangles.
  const Run run;
  const int steps = std::max(std::abs(x2 - x1), std::abs(y2 - y1));
  for (int i = 0; i <= steps; ++i) {
    const auto along = [&](int a, int b) {
      return a + static_cast<int>(std::lround(static_cast<double>(b - a) * i / steps));
    };
    Rectfill(along(x1, x2), along(y1, y2), 1, 1);
  }
}

void QCanvas::Edges(const QRect& r, const QColor& topLeft, const QColor& bottomRight)
{
  if (bitmap) {
    QWARN("QCanvas:Outline not support for ISX");
    return;
  }
  if (!Ready())
    return;
  const Run run;
  const QColor before = color;
  color = topLeft;
  Rectfill(r.x, r.y, r.wid, 1);
  Rectfill(r.x, r.y + 1, 1, r.hgt - 1);
  color = bottomRight;
  Rectfill(r.x + 1, r.y + r.hgt - 1, r.wid - 1, 1);
  Rectfill(r.x + r.wid - 1, r.y + 1, 1, r.hgt - 2);
  color = before;
}

void QCanvas::Outline(const QRect& r)
{
  Edges(r, QColor(224, 224, 224), QColor(64, 64, 64));
}

void QCanvas::Inline(const QRect& r)
{
  Edges(r, QColor(64, 64, 64), QColor(224, 224, 224));
}

void QCanvas::Text(std::string_view text, int x, int y, int len)
{
  if (!font) {
    QWARN("QCanvas:Text(); no font selected");
    return;
  }
  if (textStyle != 0)
    QWARN("QCanvas:Text(); can't handle styles nyi/win32");
  if (len >= 0)
    text = text.substr(0, static_cast<size_t>(len));
  if (bitmap || !Ready() || !font->IsCreated())
    return;
  const Run run;
  font->IsTexFont() ? TexFontText(text, x, y) : OutlineText(text, x, y);
}

void QCanvas::Text(std::u32string_view text, int x, int y, int len)
{
  std::string narrow;
  for (const char32_t c : text.substr(0, len < 0 ? text.size() : static_cast<size_t>(len)))
    QAppendChar(narrow, c);
  Text(std::string_view(narrow), x, y);
}

void QCanvas::Text3D(std::string_view text, float x, float y)
{
  if (!font) {
    QWARN("QCanvas:Text3D(); no font selected");
    return;
  }
  if (font->IsTexFont()) {
    QWARN("QCanvas:Text3D does not support texfonts");
    return;
  }
  DOverlayStyle style;
  style.color = color;
  QGLOverlay(*this).Text({x, y, 0}, text, style);
}

void QCanvas::DrawPixels(int x, int y, int wid, int hgt, std::span<const uint32_t> rgba)
{
  if (bitmap) {
    QWARN("QCanvas::DrawPixels() not implemented for USEX");
    return;
  }
  if (!Ready() || wid <= 0 || hgt <= 0 || rgba.size() / static_cast<size_t>(wid) < static_cast<size_t>(hgt))
    return;
  const QRect root = window->RootRect();
  app->GetBatch().Pixels({root.x + x, root.y + y, wid, hgt}, rgba.data(), blending, ClipOnRoot());
}

bool QCanvas::Blit(const QDrawable& source, int dx, int dy, int wid, int hgt, int sx, int sy, bool blend)
{
  const auto* picture = dynamic_cast<const QBitMap*>(&source);
  if (!picture || picture->GetDepth() != 32 || !picture->GetBuffer())
    return false;
  const QRect part = Intersection({sx, sy, wid, hgt}, {0, 0, picture->GetWidth(), picture->GetHeight()});
  if (part.wid <= 0 || part.hgt <= 0)
    return true;
  std::vector<uint32_t> rows(static_cast<size_t>(part.wid) * static_cast<size_t>(part.hgt));
  for (int row = 0; row < part.hgt; ++row) // the picture's lowest row comes first
    std::memcpy(rows.data() + row * part.wid, picture->GetPixelAddress(part.x, picture->GetHeight() - 1 - part.y - row),
                static_cast<size_t>(part.wid) * 4);
  const bool before = std::exchange(blending, blend);
  DrawPixels(dx + part.x - sx, dy + part.y - sy, part.wid, part.hgt, rows);
  blending = before;
  return true;
}

void QCanvas::Glyph(const QGlyph& glyph, float x, float y, float wid, float hgt, const QRect& limit)
{
  const float left = std::max(x, static_cast<float>(limit.x));
  const float top = std::max(y, static_cast<float>(limit.y));
  const float right = std::min(x + wid, static_cast<float>(limit.x + limit.wid));
  const float bottom = std::min(y + hgt, static_cast<float>(limit.y + limit.hgt));
  if (right <= left || bottom <= top)
    return;
  const float texel = 1.0f / static_cast<float>(app->GetGlyphAtlas().Size());
  const float perX = static_cast<float>(glyph.wid) / wid, perY = static_cast<float>(glyph.hgt) / hgt;
  const auto u = [&](float at) { return (static_cast<float>(glyph.x) + (at - x) * perX) * texel; };
  const auto v = [&](float at) { return (static_cast<float>(glyph.y) + (at - y) * perY) * texel; };
  const uint32_t rgba = Packed(color, blending);
  app->GetBatch().Quad(app->GetGlyphAtlas().Texture(), {{{left, top, u(left), v(top), rgba},
                                                         {right, top, u(right), v(top), rgba},
                                                         {right, bottom, u(right), v(bottom), rgba},
                                                         {left, bottom, u(left), v(bottom), rgba}}});
}

void QCanvas::TexFontText(std::string_view text, int x, int y)
{
  const QRect root = window->RootRect();
  const QRect limit = ClipOnRoot();
  const float scale = app->GetDisplay().Scale();
  auto pen = static_cast<float>(root.x + x);
  QFont::TexChar c;
  for (size_t at = 0; at < text.size();) {
    if (!font->FindTexChar(QNextChar(text, at), c))
      continue;
    // The left edge on a whole pixel of the screen: a texel is then a pixel, and letters are sharp.
    Glyph(*c.glyph, std::round((pen + c.bearing) * scale) / scale, static_cast<float>(root.y + y), c.wid, c.hgt, limit);
    pen += c.advance;
  }
}

void QCanvas::OutlineText(std::string_view text, int x, int y)
{
  QOutlineFace& face = *font->Face();
  const QRect root = window->RootRect();
  const QRect limit = ClipOnRoot();
  const float scale = app->GetDisplay().Scale();
  // In whole pixels of the screen, for which the characters were made.
  float pen = std::round(static_cast<float>(root.x + x) * scale);
  const float base = std::round(static_cast<float>(root.y + y) * scale) + static_cast<float>(face.DeviceAscent());
  for (size_t at = 0; at < text.size();) {
    const QGlyph& glyph = *face.Glyph(QNextChar(text, at));
    Glyph(glyph, (pen + static_cast<float>(glyph.left)) / scale, (base - static_cast<float>(glyph.top)) / scale,
          static_cast<float>(glyph.wid) / scale, static_cast<float>(glyph.hgt) / scale, limit);
    pen += glyph.advance;
  }
}

void QCanvas::TextML(std::string_view text, const QRect& r, QAlign align)
{
  constexpr size_t BUFFER = 1024;
  constexpr size_t MAX_LINES = 10;
  if (!font) {
    QWARN("QCanvas:Text(); no font selected");
    return;
  }
  if (text.size() >= BUFFER) {
    QWARN("QCanvas::TextML(); text>temp buffer");
    text = text.substr(0, BUFFER - 1);
  }
  std::array<std::string_view, MAX_LINES> lines;
  size_t count = 0;
  for (bool more = true; more;) {
    if (count == MAX_LINES) {
      QWARN("QCanvas::TextML() max #lines reached (10)");
      break;
    }
    const size_t end = text.find('\n');
    lines[count++] = text.substr(0, end);
    more = end != std::string_view::npos;
    text.remove_prefix(more ? end + 1 : text.size());
  }
  if (!Ready())
    return;
  const Run run;
  const int height = static_cast<int>(font->GetHeight());
  int y = r.y + (r.hgt - height * static_cast<int>(count)) / 2;
  for (size_t i = 0; i < count; ++i, y += height) {
    const int room = r.wid - static_cast<int>(font->GetWidth(lines[i]));
    Text(lines[i], r.x + (align == QAlign::LEFT ? 0 : align == QAlign::RIGHT ? room : room / 2), y);
  }
}

void QCanvas::Texture(uint32_t glTexture, int texWid, int texHgt, const QRect& src, const QRect& dst)
{
  if (!Ready() || texWid <= 0 || texHgt <= 0)
    return;
  const Run run;
  const QRect root = window->RootRect();
  const auto x = static_cast<float>(root.x + dst.x), y = static_cast<float>(root.y + dst.y);
  const auto u = [&](int texel) { return static_cast<float>(texel) / static_cast<float>(texWid); };
  const auto v = [&](int texel) { return 1.0f - static_cast<float>(texel) / static_cast<float>(texHgt); };
  const auto wid = static_cast<float>(dst.wid), hgt = static_cast<float>(dst.hgt);
  const uint32_t rgba = Packed(color, blending);
  app->GetBatch().Quad(glTexture, {{{x, y, u(src.x), v(src.y), rgba},
                                    {x + wid, y, u(src.x + src.wid), v(src.y), rgba},
                                    {x + wid, y + hgt, u(src.x + src.wid), v(src.y + src.hgt), rgba},
                                    {x, y + hgt, u(src.x), v(src.y + src.hgt), rgba}}});
}
