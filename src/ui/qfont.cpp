#include "ui/qfont.h"

#include "foundation/qfilename.h"
#include "foundation/qimage.h"
#include "foundation/qreport.h"
#include "geometry/dtexfont.h"
#include "ui/qapp.h"
#include "ui/qglyphs.h"
#include "ui/qtext.h"

#include <algorithm>

namespace {

constexpr int SMALLEST_SIZE = 7; // points; below that nobody can read it

} // namespace

QFont::QFont(std::string_view name, int points, int slope, int thickness, int kind) :
    family(name), size(points), slant(slope), weight(thickness), type(kind)
{}

QFont::~QFont() = default;

bool QFont::Create()
{
  if (type == TEXTURE_FONT)
    return CreateTexFont();
  if (type != OUTLINE_FONT) {
    QWARN("QFont:Create(): unknown fontType (%d)", type);
    return false;
  }
  const int pixels = std::clamp((size * 96 + 36) / 72, 4, 200);
  const bool mono = family == "courier";
  face = QOutlineFace::Open(family, pixels, slant == ITALIC, weight >= BOLD, mono);
  if (!face)
    QWARN("QFUC_GenDefaultList; can't create font %s/%d (Win error %d)", family.c_str(), size, 0);
  return face != nullptr;
}

bool QFont::CreateTexFont()
{
  if (texFont)
    QERR("QFont:Create(); texFont (%s) was already created", family.c_str());
  texFont = std::make_shared<DTexFont>();
  // On a fine screen twice as fine letters, if there are some.
  const std::string fine = family + "@2x";
  const bool isFine = app && app->GetDisplay().Scale() > 1 && QFileExists(fine + ".dtf");
  density = isFine ? 2.0f : 1.0f;
  const std::string& base = isFine ? fine : family;
  if (app && texFont->Load(base)) {
    CopyTexGlyphs(base);
    return true;
  }
  QWARN("Couldn't load texture of tex font '%s'", family.c_str());
  texFont.reset();
  return false;
}

// Into the atlas, so that texts of several fonts are drawn together.
void QFont::CopyTexGlyphs(const std::string& base)
{
  texGlyphs = std::make_shared<std::map<int, QGlyph>>();
  const QImage picture(base + ".tga");
  QGlyphAtlas& atlas = app->GetGlyphAtlas();
  for (const DTexFont::Char& c : texFont->Chars()) {
    const bool inside = picture.GetBuffer() && picture.GetDepth() == 32 && c.x >= 0 && c.y >= 0 && c.wid > 0 &&
                        c.hgt > 0 && c.wid <= picture.GetWidth() - c.x && c.hgt <= picture.GetHeight() - c.y;
    QGlyph& glyph = (*texGlyphs)[c.code];
    if (!inside || !atlas.Place(c.wid, c.hgt, glyph))
      continue;
    for (int y = 0; y < c.hgt; ++y)
      for (int x = 0; x < c.wid; ++x)
        atlas.SetPixel(glyph, x, y, picture.GetPixelAddress(c.x + x, picture.GetHeight() - 1 - c.y - y));
  }
}

void QFont::Destroy()
{
  smaller.reset();
  face.reset();
  texFont.reset();
  texGlyphs.reset();
}

bool QFont::FindTexChar(char32_t c, TexChar& found) const
{
  const int code = c < 0x10000 ? static_cast<int>(c) : -1;
  const auto glyph = texGlyphs->find(code);
  if (glyph == texGlyphs->end()) {
    if (missing.insert(c).second)
      static_cast<void>(texFont->Find(code));
    return false;
  }
  const DTexFont::Char* record = texFont->Find(code);
  if (!record)
    return false;
  const float perX = scaleX / density;
  found = {&glyph->second, record->bearingx * perX, static_cast<float>(record->wid) * perX,
           static_cast<float>(record->hgt) * scaleY / density, record->advance * perX};
  return true;
}

float QFont::GetHeight(const char* text) const
{
  if (!IsCreated())
    return 0;
  const std::string_view lines = text ? text : "";
  const auto count = 1 + std::count(lines.begin(), lines.end(), '\n');
  const float line = texFont ? static_cast<float>(texFont->Height()) * scaleY / density
                             : static_cast<float>(face->Ascent() + face->Descent());
  return line * static_cast<float>(count);
}

float QFont::GetAscent() const
{
  return face ? static_cast<float>(face->Ascent()) : GetHeight() * 0.8f;
}

float QFont::GetWidth(std::string_view text, int len) const
{
  if (len >= 0)
    text = text.substr(0, static_cast<size_t>(len));
  if (!texFont)
    return face ? face->Width(text) : 0;
  float width = 0;
  TexChar c;
  for (size_t at = 0; at < text.size();)
    if (FindTexChar(QNextChar(text, at), c))
      width += c.advance;
  return width;
}

float QFont::GetScaleX() const
{
  if (type == OUTLINE_FONT)
    QWARN("QFont:GetScaleX(); only useful for texture fonts");
  return scaleX;
}

float QFont::GetScaleY() const
{
  if (type == OUTLINE_FONT)
    QWARN("QFont:GetScaleY(); only useful for texture fonts");
  return scaleY;
}

void QFont::SetScale(float x, float y)
{
  if (type == OUTLINE_FONT) {
    QWARN("QFont:SetScale(); only useful for texture fonts");
    return;
  }
  scaleX = x;
  scaleY = y;
  smaller.reset();
}

QFont* QFont::Smaller()
{
  if (!IsCreated() || size <= SMALLEST_SIZE)
    return nullptr;
  if (smaller)
    return smaller->IsCreated() ? smaller.get() : nullptr;
  smaller = std::make_unique<QFont>(family, size - 1, slant, weight, type);
  if (texFont) { // its pictures stay, drawn narrower
    smaller->texFont = texFont;
    smaller->texGlyphs = texGlyphs;
    smaller->density = density;
    smaller->scaleX = scaleX * static_cast<float>(size - 1) / static_cast<float>(size);
    smaller->scaleY = scaleY;
  } else {
    static_cast<void>(smaller->Create());
  }
  return smaller->IsCreated() ? smaller.get() : nullptr;
}

QFont* QFont::FittingFont(std::string_view text, int wid)
{
  QFont* fitting = this;
  while (fitting->GetWidth(text) > static_cast<float>(wid)) {
    QFont* next = fitting->Smaller();
    if (!next)
      break;
    fitting = next;
  }
  return fitting;
}

namespace {

void GenerateRange(QFont& font, char32_t first, char32_t last)
{
  for (char32_t c = first; font.Face() && c <= last; ++c)
    font.Face()->Glyph(c);
}

} // namespace

void QFUC_GenDefaultList(QFont& font)
{
  GenerateRange(font, 32, 126);
  GenerateRange(font, 160, 255);
}

void QFUC_GenEuroList(QFont& font)
{
  QFUC_GenDefaultList(font);
  GenerateRange(font, 0x100, 0x17F);
  GenerateRange(font, 0x20AC, 0x20AC); // the currency
}

void QFUC_GenCyrillicGreekList(QFont& font)
{
  GenerateRange(font, 0x370, 0x3FF);
  GenerateRange(font, 0x400, 0x45F);
}

void QFUC_GenArabicList(QFont& font)
{
  GenerateRange(font, 0x600, 0x6FF);
}

void QFUC_GenFullList(QFont& font)
{
  QFUC_GenEuroList(font);
  QFUC_GenCyrillicGreekList(font);
  QFUC_GenArabicList(font);
}
