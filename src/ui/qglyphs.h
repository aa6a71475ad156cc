#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// One character in the atlas; the device's pixels.
struct QGlyph
{
  int x = 0, y = 0; // in the atlas
  int wid = 0, hgt = 0;
  int left = 0; // from the pen to the picture's left edge
  int top = 0;  // from the base line up to its top edge
  float advance = 0;
};

// The picture that holds the characters of all fonts, and a white spot for plain rectangles: so a run of rectangles and
// texts needs no change of texture, which costs a software renderer more than the drawing. Pictures of outline fonts
// are made when a character is first needed.
class QGlyphAtlas
{
public:
  static constexpr int SIZE = 1024;
  // Inside the white spot, in texture coordinates.
  static constexpr float WHITE = 2.0f / SIZE;
  QGlyphAtlas();
  ~QGlyphAtlas();
  QGlyphAtlas(const QGlyphAtlas&) = delete;
  QGlyphAtlas& operator=(const QGlyphAtlas&) = delete;
  // Finds a place for a picture and sets the glyph's place and size. False when the atlas is full.
  bool Place(int wid, int hgt, QGlyph& glyph);
  // White with one byte of opacity a pixel.
  bool Add(int wid, int hgt, const uint8_t* rows, int pitch, QGlyph& glyph);
  // Red, green, blue and alpha in that order.
  void SetPixel(const QGlyph& glyph, int x, int y, const uint8_t* rgba);
  // OpenGL's name, with all characters so far; only with a context.
  uint32_t Texture();
  // While the context is still there.
  void ReleaseTexture();
  // The font library; null when it couldn't be started.
  void* Library();

private:
  struct FreeType;
  std::unique_ptr<FreeType> freetype;
  std::vector<uint8_t> pixels; // four bytes each
  uint32_t texture = 0;
  int dirtyBegin = 0, dirtyEnd = SIZE; // rows that OpenGL doesn't have yet
  int penX = 0, penY = 0, rowHeight = 0;
};

// A face of the machine at one size, its characters in the application's atlas.
class QOutlineFace
{
public:
  // pixels: of the interface. Null when there is no font at all. The nearest to what is asked is taken, as the
  // machine's font settings say.
  static std::unique_ptr<QOutlineFace> Open(std::string_view family, int pixels, bool italic, bool bold, bool mono);
  ~QOutlineFace();
  QOutlineFace(const QOutlineFace&) = delete;
  QOutlineFace& operator=(const QOutlineFace&) = delete;
  // Never null. The picture is empty for a character that can't be drawn.
  const QGlyph* Glyph(char32_t c);
  // In pixels of the interface, as the characters are made for the screen's finer ones.
  float Width(std::string_view text);
  int Ascent() const;
  int Descent() const;
  int DeviceAscent() const { return ascent; }
  const std::string& File() const { return file; }

private:
  QOutlineFace() = default;
  struct Face;
  std::unique_ptr<Face> face;
  std::string file;
  float scale = 1;
  int ascent = 0, descent = 0; // the device's pixels
  std::map<char32_t, QGlyph> glyphs;
};
