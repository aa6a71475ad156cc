#include "ui/qglyphs.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "ui/qapp.h"
#include "ui/qglbatch.h"
#include "ui/qtext.h"

#include <algorithm>
#include <cmath>
#include <epoxy/gl.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <utility>

struct QGlyphAtlas::FreeType
{
  FT_Library library = nullptr;
  FreeType()
  {
    if (FT_Init_FreeType(&library) != 0)
      library = nullptr;
  }
  ~FreeType()
  {
    if (library)
      FT_Done_FreeType(library);
  }
  FreeType(const FreeType&) = delete;
  FreeType& operator=(const FreeType&) = delete;
};

QGlyphAtlas::QGlyphAtlas() :
    freetype(std::make_unique<FreeType>()), pixels(static_cast<size_t>(size) * static_cast<size_t>(size) * 4)
{
  constexpr int SPOT = 4;
  const std::vector<uint8_t> white(SPOT * SPOT, 255);
  QGlyph spot;
  Add(SPOT, SPOT, white.data(), SPOT, spot);
}

QGlyphAtlas::~QGlyphAtlas() = default;

void* QGlyphAtlas::Library()
{
  return freetype->library;
}

// What was gathered to be drawn refers to the old size, and so goes out first.
bool QGlyphAtlas::Grow()
{
  if (size >= MAX_SIZE)
    return false;
  if (DGlobals().hasContext)
    app->GetBatch().Flush();
  const auto row = static_cast<size_t>(size) * 4;
  std::vector<uint8_t> larger(row * row);
  for (size_t y = 0; y < static_cast<size_t>(size); ++y)
    std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(y * row), row,
                larger.begin() + static_cast<std::ptrdiff_t>(y * row * 2));
  pixels = std::move(larger);
  // Places go on below what is there; the room at its right stays free.
  penX = 0;
  penY = size;
  rowHeight = 0;
  size *= 2;
  ReleaseTexture();
  return true;
}

bool QGlyphAtlas::Place(int wid, int hgt, QGlyph& glyph)
{
  if (wid < 0 || hgt < 0 || wid > MAX_SIZE || hgt > MAX_SIZE)
    return false;
  for (;;) {
    if (penX + wid > size) {
      penX = 0;
      penY += rowHeight;
      rowHeight = 0;
    }
    if (wid <= size && penY + hgt <= size)
      break;
    if (!Grow()) {
      if (!std::exchange(fullReported, true))
        QWARN("QGlyphAtlas: no room for more characters; some will be missing");
      return false;
    }
  }
  glyph.x = penX;
  glyph.y = penY;
  glyph.wid = wid;
  glyph.hgt = hgt;
  penX += wid + 1; // a clear line between neighbours
  rowHeight = std::max(rowHeight, hgt + 1);
  dirtyBegin = std::min(dirtyBegin, glyph.y);
  dirtyEnd = std::max(dirtyEnd, glyph.y + hgt);
  return true;
}

void QGlyphAtlas::SetPixel(const QGlyph& glyph, int x, int y, const uint8_t* rgba)
{
  std::copy_n(rgba, 4, pixels.begin() + (static_cast<std::ptrdiff_t>(glyph.y + y) * size + glyph.x + x) * 4);
}

bool QGlyphAtlas::Add(int wid, int hgt, const uint8_t* rows, int pitch, QGlyph& glyph)
{
  if (!Place(wid, hgt, glyph))
    return false;
  for (int y = 0; y < hgt; ++y)
    for (int x = 0; x < wid; ++x) {
      const uint8_t rgba[] = {255, 255, 255, rows[y * pitch + x]};
      SetPixel(glyph, x, y, rgba);
    }
  return true;
}

uint32_t QGlyphAtlas::Texture()
{
  if (dirtyBegin >= dirtyEnd)
    return texture;
  GLint bound = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  if (texture == 0) {
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    // On whole pixels both filters give the same; characters drawn narrower need the smooth one.
    for (const auto& [parameter, value] : {std::pair{GL_TEXTURE_MIN_FILTER, GL_LINEAR},
                                           {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                                           {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
                                           {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}})
      glTexParameteri(GL_TEXTURE_2D, static_cast<GLenum>(parameter), value);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  } else {
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, dirtyBegin, size, dirtyEnd - dirtyBegin, GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.data() + static_cast<size_t>(dirtyBegin) * static_cast<size_t>(size) * 4);
  }
  dirtyBegin = size;
  dirtyEnd = 0;
  glPopClientAttrib();
  glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
  return texture;
}

void QGlyphAtlas::ReleaseTexture()
{
  if (texture != 0 && DGlobals().hasContext)
    glDeleteTextures(1, &texture);
  texture = 0;
  dirtyBegin = 0;
  dirtyEnd = size;
}

namespace {

struct FontFile
{
  std::string path;
  int index = 0;
};

// The old names stand for a look, not for a file: a narrow-running sans serif, and a typewriter.
FontFile FindFontFile(std::string_view family, int pixels, bool italic, bool bold, bool mono, char32_t having = 0)
{
  FontFile found;
  FcPattern* pattern = FcPatternCreate();
  const auto addFamily = [&](const char* name) {
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(name));
  };
  if (family == "ms sans serif")
    for (const char* name : {"Liberation Sans", "Arimo", "DejaVu Sans Condensed", "Nimbus Sans", "sans-serif"})
      addFamily(name);
  else if (family == "courier")
    for (const char* name : {"DejaVu Sans Mono", "Liberation Mono", "monospace"})
      addFamily(name);
  else
    addFamily(std::string(family).c_str());
  FcPatternAddDouble(pattern, FC_PIXEL_SIZE, pixels);
  FcPatternAddInteger(pattern, FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddInteger(pattern, FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
  if (mono)
    FcPatternAddInteger(pattern, FC_SPACING, FC_MONO);
  FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
  if (having != 0) {
    FcCharSet* set = FcCharSetCreate();
    FcCharSetAddChar(set, having);
    FcPatternAddCharSet(pattern, FC_CHARSET, set);
    FcCharSetDestroy(set);
  }
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result = FcResultNoMatch;
  if (FcPattern* match = FcFontMatch(nullptr, pattern, &result)) {
    FcChar8* file = nullptr;
    if (FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch)
      found.path = reinterpret_cast<const char*>(file);
    FcPatternGetInteger(match, FC_INDEX, 0, &found.index);
    FcPatternDestroy(match);
  }
  FcPatternDestroy(pattern);
  return found;
}

} // namespace

struct QOutlineFace::Face
{
  FT_Face face = nullptr;
  ~Face()
  {
    if (face)
      FT_Done_Face(face);
  }
};

QOutlineFace::~QOutlineFace() = default;

std::unique_ptr<QOutlineFace> QOutlineFace::Open(std::string_view family, int pixels, bool italic, bool bold, bool mono)
{
  if (!app || !app->GetGlyphAtlas().Library())
    return nullptr;
  const FontFile file = FindFontFile(family, pixels, italic, bold, mono);
  std::unique_ptr<QOutlineFace> opened(new QOutlineFace);
  opened->file = file.path;
  opened->face = std::make_unique<Face>();
  FT_Face& face = opened->face->face;
  if (file.path.empty() ||
      FT_New_Face(static_cast<FT_Library>(app->GetGlyphAtlas().Library()), file.path.c_str(), file.index, &face) != 0) {
    face = nullptr;
    return nullptr;
  }
  opened->scale = app->GetDisplay().Scale();
  opened->devicePixels = static_cast<int>(std::lround(static_cast<float>(pixels) * opened->scale));
  if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(opened->devicePixels)) != 0)
    return nullptr;
  opened->ascent = static_cast<int>((face->size->metrics.ascender + 63) >> 6);
  opened->descent = static_cast<int>((-face->size->metrics.descender + 63) >> 6);
  return opened;
}

// The face itself, or else one of the machine's others; the face itself when none has the character.
QOutlineFace::Face* QOutlineFace::FaceWith(char32_t c)
{
  const auto has = [c](const Face& f) { return FT_Get_Char_Index(f.face, c) != 0; };
  if (has(*face))
    return face.get();
  for (const auto& other : others)
    if (has(*other))
      return other.get();
  constexpr size_t MOST = 8; // a text in so many scripts is noise
  if (others.size() == MOST)
    return face.get();
  const FontFile found = FindFontFile("sans-serif", devicePixels, false, false, false, c);
  auto other = std::make_unique<Face>();
  if (found.path.empty() || FT_New_Face(static_cast<FT_Library>(app->GetGlyphAtlas().Library()), found.path.c_str(),
                                        found.index, &other->face) != 0) {
    other->face = nullptr;
    return face.get();
  }
  if (FT_Set_Pixel_Sizes(other->face, 0, static_cast<FT_UInt>(devicePixels)) != 0 || !has(*other))
    return face.get();
  return others.emplace_back(std::move(other)).get();
}

const QGlyph* QOutlineFace::Find(char32_t c)
{
  const auto known = glyphs.find(c);
  if (known != glyphs.end())
    return &known->second;
  QGlyph& glyph = glyphs[c];
  if (c < latin.size())
    latin[c] = &glyph;
  Face& drawn = *FaceWith(c);
  // Stems on whole pixels: at these sizes that reads best.
  if (FT_Load_Char(drawn.face, c, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT) != 0)
    return &glyph;
  const FT_GlyphSlot slot = drawn.face->glyph;
  glyph.advance = static_cast<float>((slot->advance.x + 32) >> 6);
  glyph.left = slot->bitmap_left;
  glyph.top = slot->bitmap_top;
  const int wid = static_cast<int>(slot->bitmap.width);
  const int hgt = static_cast<int>(slot->bitmap.rows);
  if (wid > 0 && hgt > 0 && slot->bitmap.pixel_mode == FT_PIXEL_MODE_GRAY)
    app->GetGlyphAtlas().Add(wid, hgt, slot->bitmap.buffer, slot->bitmap.pitch, glyph);
  return &glyph;
}

float QOutlineFace::Width(std::string_view text)
{
  float width = 0;
  for (size_t at = 0; at < text.size();)
    width += Glyph(QNextChar(text, at))->advance;
  return width / scale;
}

int QOutlineFace::Ascent() const
{
  return static_cast<int>(std::ceil(static_cast<float>(ascent) / scale));
}

int QOutlineFace::Descent() const
{
  return static_cast<int>(std::ceil(static_cast<float>(descent) / scale));
}
