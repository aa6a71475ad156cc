#pragma once

#include "geometry/dtextureptr.h"
#include "geometry/dvector.h"

#include <string>
#include <string_view>
#include <vector>

class QInfo;

// A font whose characters are parts of a picture: BASE.dtf and BASE.tga.
class DTexFont
{
public:
  static constexpr int MAX_RANGES = 5;
  enum Flag : unsigned
  {
    PREMULTIPLIED = 0x01,
    WIDE = 0x02
  };
  struct Char
  {
    int code = 0;
    int x = 0; // in the picture, from its top left corner, in pixels
    int y = 0;
    int wid = 0;
    int hgt = 0;
    float advance = 0;
    float bearingx = 0;
    float u0 = 0;
    float v0 = 0; // of the lower edge
    float u1 = 0;
    float v1 = 0;
  };
  struct Range
  {
    int first;
    int last;
    int index; // of the first one's record
  };
  // Two triangles' worth of corners for each character: lower left, lower right, upper right, upper left.
  struct Quads
  {
    std::vector<DVector2> position; // pixels, y up; the text's top left corner is 0, 0
    std::vector<DVector2> texCoord;
    float width = 0;
  };

  DTexFont();
  ~DTexFont();
  DTexFont(const DTexFont&) = delete;
  DTexFont& operator=(const DTexFont&) = delete;

  // False, with a report, when the description can't be opened. More than MAX_RANGES groups of codes are fatal.
  bool Load(const std::string& base);
  // The characters of a description, without pictures: their sizes in pixels are given. False at more groups of codes
  // than MAX_RANGES; base stands in reports.
  [[nodiscard]] bool Read(const QInfo& info, const std::string& base, DVector2 size, DVector2 outlineSize);
  // Null, with a report, for a code that the font doesn't have.
  const Char* Find(int code) const;
  float Width(std::string_view text) const;
  Quads Layout(std::string_view text) const;
  int Height() const { return height; } // of the tallest character
  const std::vector<Char>& Chars() const { return chars; }
  const std::vector<Char>& Outlines() const { return outlines; }
  const std::vector<Range>& Ranges() const { return ranges; }
  const DTexturePtr& Texture() const { return texture; }

  unsigned flags = 0;
  float xScale = 1.0f;

private:
  bool AddToRange(int code);
  std::vector<Char> chars;
  std::vector<Char> outlines;
  std::vector<Range> ranges;
  DTexturePtr texture;
  DTexturePtr outlineTexture;
  int height = 0;
};
