#include "app/demo/fontmaker.h"

#include "app/demo/trackfiles.h"
#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "foundation/qtga.h"

#include <ft2build.h>

#include FT_FREETYPE_H

#include <filesystem>
#include <memory>

namespace {

constexpr int SIZE = 12;   // pixels to the em; the lines of the screen are 16 apart
constexpr int WIDTH = 256; // of the picture, for that size
constexpr int MAX_HEIGHT = 1024;

struct FontCloser
{
  void operator()(FT_Library library) const { FT_Done_FreeType(library); }
  void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using LibraryOwner = std::unique_ptr<FT_LibraryRec_, FontCloser>;
using FaceOwner = std::unique_ptr<FT_FaceRec_, FontCloser>;

// A character's place in the picture, counted from its top left.
struct Place
{
  int code = 0, x = 0, y = 0, wid = 0;
  double advance = 0, bearing = 0;
};

// All characters in rows of one height, each with a free pixel around it.
class Sheet
{
public:
  Sheet(FT_Face from, QBitMap& to) : face(from), picture(to)
  {
    ascent = static_cast<int>((face->size->metrics.ascender + 63) >> 6);
    height = ascent + static_cast<int>((63 - face->size->metrics.descender) >> 6);
  }
  int Height() const { return height; }
  int UsedRows() const { return penY + height + 1; }
  // False when the font or the picture can't take it.
  bool Add(int code, Place& place)
  {
    if (FT_Load_Char(face, static_cast<FT_ULong>(code), FT_LOAD_RENDER | FT_LOAD_TARGET_NORMAL) != 0)
      return false;
    const FT_GlyphSlot glyph = face->glyph;
    const int wid = static_cast<int>(glyph->bitmap.width);
    if (penX + wid + 1 > picture.GetWidth()) {
      penX = 1;
      penY += height + 1;
    }
    if (wid + 2 > picture.GetWidth() || UsedRows() > picture.GetHeight())
      return false;
    place = {
        code, penX, penY, wid, static_cast<double>(glyph->advance.x) / 64, static_cast<double>(glyph->bitmap_left)};
    Copy(glyph->bitmap, ascent - glyph->bitmap_top);
    penX += wid + 1;
    return true;
  }

private:
  // White, with the ink as alpha; what stands out above or below the row is cut.
  void Copy(const FT_Bitmap& ink, int down)
  {
    for (int y = 0; y < static_cast<int>(ink.rows); ++y)
      for (int x = 0; x < static_cast<int>(ink.width); ++x)
        if (down + y >= 0 && down + y < height)
          picture.GetPixelAddress(penX + x, picture.GetHeight() - 1 - (penY + down + y))[3] =
              ink.buffer[y * ink.pitch + x];
  }

  FT_Face face;
  QBitMap& picture;
  int ascent, height, penX = 1, penY = 1;
};

void MakeWhite(QBitMap& picture)
{
  for (int row = 0; row < picture.GetHeight(); ++row)
    for (int x = 0; x < picture.GetWidth(); ++x) {
      uint8_t* p = picture.GetPixelAddress(x, row);
      p[0] = p[1] = p[2] = 255;
      p[3] = 0;
    }
}

bool DrawAll(FT_Face face, QBitMap& picture, std::vector<Place>& places, int& height)
{
  MakeWhite(picture);
  Sheet sheet(face, picture);
  height = sheet.Height();
  for (int code = 32; code <= 255; ++code)
    if (code < 127 || code >= 160)
      if (!sheet.Add(code, places.emplace_back()))
        return false;
  return true;
}

std::string Table(const std::vector<Place>& places, int height)
{
  DemoIni ini;
  ini.Open("general").Key("version", 2).Key("minchar", 32).Key("maxchar", 255).Key("outline", 0).Close().Open("chars");
  for (const Place& p : places) {
    ini.Open(DemoNumbered("char", p.code, 1)).Key("x", p.x).Key("y", p.y).Key("wid", p.wid).Key("hgt", height);
    ini.Key("advance", p.advance).Key("bearingx", p.bearing).Close();
  }
  return ini.Close().Take();
}

// The picture and the table of one size, times the usual one. False when the font can't be drawn so.
bool AddSize(FT_Face face, int times, const std::string& base, QFileSet& files)
{
  std::vector<Place> places;
  int height = 0;
  QBitMap picture;
  bool drawn = false;
  if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(times * SIZE)) == 0)
    for (int rows = 128; rows <= MAX_HEIGHT && !drawn; rows *= 2) {
      places.clear();
      picture.Alloc(32, times * WIDTH, rows);
      drawn = DrawAll(face, picture, places, height);
    }
  if (!drawn)
    return false;
  // A file that can't be written is noticed when all are put in their place.
  static_cast<void>(files.Add(base + ".tga", QWriteTGA(picture, QBitMap::TGA)) &&
                    files.Add(base + ".dtf", Table(places, height)));
  return true;
}

} // namespace

bool DemoMakeFont(const std::string& root, const std::string& fontFile)
{
  FT_Library rawLibrary = nullptr;
  FT_Face rawFace = nullptr;
  if (FT_Init_FreeType(&rawLibrary) != 0) {
    QERR("DemoMakeFont(); no font library");
    return false;
  }
  const LibraryOwner library(rawLibrary);
  if (FT_New_Face(rawLibrary, fontFile.c_str(), 0, &rawFace) != 0) {
    QERR("DemoMakeFont(); '%s' is no font", fontFile.c_str());
    return false;
  }
  const FaceOwner face(rawFace); // goes before its library
  const std::string directory = root + "/data/fonts";
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  QFileSet files;
  if (!AddSize(rawFace, 1, directory + "/eurostile11", files) ||
      !AddSize(rawFace, 2, directory + "/eurostile11@2x", files)) {
    QERR("DemoMakeFont(); the characters of '%s' don't fit", fontFile.c_str());
    return false;
  }
  if (!files.Commit()) {
    QERR("DemoMakeFont(); can't write '%s'", directory.c_str());
    return false;
  }
  return true;
}
