#include "ui/qfont.h"

#include "foundation/qreport.h"
#include "geometry/dtexfont.h"
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
  if (texFont->Load(family))
    return true;
  QWARN("Couldn't load texture of tex font '%s'", family.c_str());
  texFont.reset();
  return false;
}

void QFont::Destroy()
{
  smaller.reset();
  face.reset();
  texFont.reset();
}

std::string QFont::TexFontText(std::string_view text) const
{
  std::string codes;
  for (size_t at = 0; at < text.size();) {
    const char32_t c = QNextChar(text, at);
    const auto& ranges = texFont->Ranges();
    const bool known = c < 256 && std::any_of(ranges.begin(), ranges.end(), [c](const DTexFont::Range& r) {
                         return static_cast<int>(c) >= r.first && static_cast<int>(c) <= r.last;
                       });
    if (known)
      codes += static_cast<char>(c);
    else if (c != '\n' && missing.insert(c).second)
      static_cast<void>(texFont->Find(static_cast<int>(c)));
  }
  return codes;
}

float QFont::GetHeight(const char* text) const
{
  if (!IsCreated())
    return 0;
  const std::string_view lines = text ? text : "";
  const auto count = 1 + std::count(lines.begin(), lines.end(), '\n');
  const float line =
      texFont ? static_cast<float>(texFont->Height()) * scaleY : static_cast<float>(face->Ascent() + face->Descent());
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
  texFont->xScale = scaleX;
  return texFont->Width(TexFontText(text));
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
