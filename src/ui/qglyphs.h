#pragma once

#include <array>
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
  static constexpr int MAX_SIZE = 4096;
  // Of its sides, in texels; doubled when it is full.
  int Size() const { return size; }
  // Inside the white spot, in texture coordinates.
  float White() const { return 2.0f / static_cast<float>(size); }
  QGlyphAtlas();
  ~QGlyphAtlas();
  QGlyphAtlas(const QGlyphAtlas&) = delete;
  QGlyphAtlas& operator=(const QGlyphAtlas&) = delete;
  // Finds a place for a picture and sets the glyph's place and size. False, reported, when the largest atlas is full.
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
  bool Grow();
  struct FreeType;
  std::unique_ptr<FreeType> freetype;
  int size = 1024;
  std::vector<uint8_t> pixels; // four bytes each
  uint32_t texture = 0;
  bool fullReported = false;
  int dirtyBegin = 0, dirtyEnd = size; // rows that OpenGL doesn't have yet
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
  // Never null. A character that the face doesn't have comes from another face of the machine that has it; the picture
  // is empty for one that can't be drawn.
  const QGlyph* Glyph(char32_t c)
  {
    const QGlyph* known = c < latin.size() ? latin[c] : nullptr;
    return known ? known : Find(c);
  }
  // In pixels of the interface, as the characters are made for the screen's finer ones.
  float Width(std::string_view text);
  int Ascent() const;
  int Descent() const;
  int DeviceAscent() const { return ascent; }
  const std::string& File() const { return file; }

private:
  QOutlineFace() = default;
  struct Face;
  const QGlyph* Find(char32_t c);
  Face* FaceWith(char32_t c);
  std::unique_ptr<Face> face;
  std::vector<std::unique_ptr<Face>> others; // for what the face itself doesn't have
  std::array<const QGlyph*, 256> latin{};    // of the map below
  int devicePixels = 0;
  std::string file;
  float scale = 1;
  int ascent = 0, descent = 0; // the device's pixels
  std::map<char32_t, QGlyph> glyphs;
};
