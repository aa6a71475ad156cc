#pragma once

#include "foundation/qobject.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

class DTexFont;
class QOutlineFace;
struct QGlyph;

// A font by its family name. Which face of the machine stands behind it is looked up when it is created.
class QFont : public QObject
{
public:
  enum Slant
  {
    ROMAN,
    ITALIC
  };
  enum Weight
  {
    NORMAL = 400,
    BOLD = 700
  };
  enum Type
  {
    OUTLINE_FONT = 0,
    TEXTURE_FONT = 1
  };
  // size: points, of 96 to the inch in pixels. A texture font's family is the base path of its files.
  explicit QFont(std::string_view family, int size = 10, int slant = ROMAN, int weight = NORMAL,
                 int type = OUTLINE_FONT);
  ~QFont() override;
  QFont(const QFont&) = delete;
  QFont& operator=(const QFont&) = delete;
  const char* GetClassName() const override { return "QFont"; }

  // False, reported, when the machine has no such font; then it measures and draws nothing.
  bool Create();
  void Destroy();
  bool IsCreated() const { return face || texFont; }
  const std::string& GetFamily() const { return family; }
  int GetSize() const { return size; }
  int GetType() const { return type; }

  float GetHeight(const char* text = nullptr) const; // of all lines of the text; of one without
  float GetAscent() const;
  float GetWidth(std::string_view text, int len = -1) const;

  // Texture fonts only; reported for others.
  float GetScaleX() const;
  float GetScaleY() const;
  void SetScale(float x, float y);

  QOutlineFace* Face() const { return face.get(); } // null for a texture font
  // One character of a texture font, as it is to be drawn.
  struct TexChar
  {
    const QGlyph* glyph; // in the atlas
    float bearing;       // pixels from the pen to its left edge
    float wid, hgt;
    float advance;
  };
  bool IsTexFont() const { return texFont != nullptr; }
  // False for what the font doesn't have (reported once each).
  bool FindTexChar(char32_t c, TexChar& found) const;
  // The same font a point smaller; null when that would be too small to read.
  QFont* Smaller();
  // This font, or the largest smaller form of it in which the text is at most wid wide; the smallest when none is.
  QFont* FittingFont(std::string_view text, int wid);

private:
  std::string family;
  int size, slant, weight, type;
  float scaleX = 1, scaleY = 1;
  bool CreateTexFont();
  void CopyTexGlyphs(const std::string& base);
  std::unique_ptr<QOutlineFace> face;
  std::shared_ptr<DTexFont> texFont; // shared with the smaller forms
  // By code; shared as well.
  std::shared_ptr<std::map<int, QGlyph>> texGlyphs;
  mutable std::set<char32_t> missing;
  std::unique_ptr<QFont> smaller;
  float density = 1; // texels to a pixel of the interface
};

// Make the pictures of whole alphabets ahead of the first text that needs them; outline fonts only.
void QFUC_GenDefaultList(QFont& font); // what a keyboard of the Latin world types
void QFUC_GenEuroList(QFont& font);    // all European Latin letters
void QFUC_GenCyrillicGreekList(QFont& font);
void QFUC_GenArabicList(QFont& font);
void QFUC_GenFullList(QFont& font); // all of these
