#include "geometry/dtexfont.h"

#include "foundation/qbitmap.h"
#include "foundation/qfilename.h"
#include "foundation/qimage.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dtexture.h"

#include <algorithm>
#include <charconv>

DTexFont::DTexFont() = default;

DTexFont::~DTexFont() = default;

namespace {

constexpr std::string_view ENTRY = "char";

struct Picture
{
  DTexturePtr texture;
  DVector2 size{1.0f}; // never 0: coordinates are divided by it
};

Picture LoadPicture(const std::string& path)
{
  Picture picture;
  auto image = std::make_unique<QImage>(path);
  if (image->LoadFailed() || !image->GetBuffer())
    return picture;
  picture.size = {std::max(image->GetWidth(), 1), std::max(image->GetHeight(), 1)};
  picture.texture = std::make_unique<DBitMapTexture>(std::move(image));
  picture.texture->SetName(QFileBase(path.c_str()));
  picture.texture->EnableMipmap(false);
  picture.texture->SetMinFilter(0x2601); // GL_LINEAR
  picture.texture->SetMagFilter(0x2601);
  return picture;
}

// Place and size by the keys below path, and the texture coordinates that follow. x is -1 without the key.
void ReadPlace(const QInfo& info, const std::string& path, const DVector2& size, DTexFont::Char& c)
{
  c.x = info.GetInt(path + ".x", -1);
  c.y = info.GetInt(path + ".y", path.ends_with(".outline") ? -1 : 0);
  c.wid = info.GetInt(path + ".wid", 0);
  c.hgt = info.GetInt(path + ".hgt", 0);
  const auto x = static_cast<float>(c.x);
  const auto y = static_cast<float>(c.y);
  c.u0 = x / size.x;
  c.u1 = c.u0 + static_cast<float>(c.wid) / size.x;
  c.v0 = 1 - (y + static_cast<float>(c.hgt)) / size.y; // the picture's row 0 is at the bottom
  c.v1 = 1 - y / size.y;
}

int CodeOf(std::string_view name)
{
  int code = 0;
  if (name.starts_with(ENTRY))
    name.remove_prefix(ENTRY.size());
  std::from_chars(name.data(), name.data() + name.size(), code);
  return code;
}

} // namespace

bool DTexFont::Load(const std::string& base)
{
  const std::string description = base + ".dtf";
  if (!QFileExists(description)) {
    QWARN("DTexFont:Load(%s) failed", base.c_str());
    return false;
  }
  const QInfo info(description);
  const Picture picture = LoadPicture(base + ".tga");
  const Picture outlinePicture = info.GetInt("general.outline", 0) > 0 ? LoadPicture(base + "_outline.tga") : Picture();
  texture = picture.texture;
  outlineTexture = outlinePicture.texture;
  if (!Read(info, base, picture.size, outlinePicture.size))
    qfatal("DTexFont (%s) has too many ranges", base.c_str());
  return true;
}

bool DTexFont::AddToRange(int code)
{
  if (!ranges.empty() && int64_t{code} == int64_t{ranges.back().last} + 1) {
    ranges.back().last = code;
    return true;
  }
  if (ranges.size() >= MAX_RANGES)
    return false;
  ranges.push_back({code, code, static_cast<int>(chars.size())});
  return true;
}

bool DTexFont::Read(const QInfo& info, const std::string& base, DVector2 size, DVector2 outlineSize)
{
  const bool hasAdvance = info.GetInt("general.version", 2) >= 2;
  chars.clear();
  outlines.clear();
  ranges.clear();
  height = 0;
  const QInfoNode* section = info.FindNode("chars");
  for (const QInfoNode* node = section ? section->FirstChild() : nullptr; node; node = node->Next()) {
    if (node->type == QInfoNode::COMMENT)
      continue;
    const std::string path = "chars." + std::string(node->Name());
    Char c;
    c.code = CodeOf(node->Name());
    ReadPlace(info, path, size, c);
    if (c.x < 0) {
      QWARN("No X defined for texfont %s, entry %d\n", base.c_str(), static_cast<int>(chars.size()));
      break;
    }
    c.advance = static_cast<float>(c.wid) + 1.0f;
    if (hasAdvance) {
      c.advance = info.GetFloat(path + ".advance", c.advance);
      c.bearingx = info.GetFloat(path + ".bearingx", 0.0f);
    }
    Char outline = c;
    ReadPlace(info, path + ".outline", outlineSize, outline);
    if (c.code > 255)
      flags |= WIDE;
    if (!AddToRange(c.code))
      return false;
    height = std::max(height, c.hgt);
    chars.push_back(c);
    outlines.push_back(outline);
  }
  return true;
}

const DTexFont::Char* DTexFont::Find(int code) const
{
  for (const Range& r : ranges)
    if (code >= r.first && code <= r.last)
      return &chars[static_cast<size_t>(r.index + (code - r.first))];
  QWARN("DTexFont: can't find char 0x%x", static_cast<unsigned>(code));
  return nullptr;
}

float DTexFont::Width(std::string_view text) const
{
  float width = 0;
  for (const char letter : text)
    if (const Char* c = Find(static_cast<unsigned char>(letter)))
      width += c->advance * xScale;
  return width;
}

DTexFont::Quads DTexFont::Layout(std::string_view text) const
{
  Quads quads;
  for (const char letter : text) {
    const Char* c = Find(static_cast<unsigned char>(letter));
    if (!c)
      continue;
    const float left = quads.width + c->bearingx * xScale;
    const float right = left + static_cast<float>(c->wid) * xScale;
    const auto bottom = -static_cast<float>(c->hgt);
    quads.position.insert(quads.position.end(), {{left, bottom}, {right, bottom}, {right, 0}, {left, 0}});
    quads.texCoord.insert(quads.texCoord.end(), {{c->u0, c->v0}, {c->u1, c->v0}, {c->u1, c->v1}, {c->u0, c->v1}});
    quads.width += c->advance * xScale;
  }
  return quads;
}
