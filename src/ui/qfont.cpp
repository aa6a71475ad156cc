#include "ui/qfont.h"

#include "foundation/qreport.h"
#include "ui/qglyphs.h"

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

void QFont::Destroy()
{
  smaller.reset();
  face.reset();
}

float QFont::GetHeight(const char* text) const
{
  if (!face)
    return 0;
  const std::string_view lines = text ? text : "";
  const auto count = 1 + std::count(lines.begin(), lines.end(), '\n');
  return static_cast<float>(face->Ascent() + face->Descent()) * static_cast<float>(count);
}

float QFont::GetAscent() const
{
  return face ? static_cast<float>(face->Ascent()) : 0;
}

float QFont::GetWidth(std::string_view text, int len) const
{
  return face ? face->Width(len < 0 ? text : text.substr(0, static_cast<size_t>(len))) : 0;
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
}

QFont* QFont::Smaller()
{
  if (type != OUTLINE_FONT || !face || size <= SMALLEST_SIZE)
    return nullptr;
  if (!smaller) {
    smaller = std::make_unique<QFont>(family, size - 1, slant, weight, type);
    static_cast<void>(smaller->Create());
  }
  return smaller->face ? smaller.get() : nullptr;
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
