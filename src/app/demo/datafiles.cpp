#include "app/demo/datafiles.h"

#include "app/demo/textures.h"
#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "foundation/qtga.h"

#include <filesystem>

namespace {

// 16 squares of 16 x 16: red to the right, green up, blue from square to square. It changes no colour.
std::unique_ptr<QBitMap> ColorGrade()
{
  return DemoPaint(256, 16, [](double u, double v) {
    const int x = static_cast<int>(u * 256), y = static_cast<int>(v * 16);
    return DemoColor(x % 16 / 15.0, y / 15.0, x / 16 / 15.0, 1);
  });
}

std::unique_ptr<QBitMap> FadeOut()
{
  return DemoPaint(16, 16, [](double, double) { return DemoColor(0, 0, 0, 1); });
}

std::unique_ptr<QBitMap> Chequer(const DemoColor& a, const DemoColor& b)
{
  return DemoPaint(
      64, 64, [&](double u, double v) { return (static_cast<int>(u * 8) + static_cast<int>(v * 8)) % 2 == 0 ? a : b; });
}

} // namespace

bool DemoWriteData(const std::string& root)
{
  const struct
  {
    const char* file;
    std::unique_ptr<QBitMap> picture;
  } pictures[] = {
      {"data/images/colorgrade_default.tga", ColorGrade()},
      {"data/images/fadeout.tga", FadeOut()},
      {"images/stub.tga", Chequer({0.85, 0.15, 0.15, 1}, {0.15, 0.15, 0.85, 1})},
      {"images/mytexture.tga", Chequer({0.85, 0.85, 0.80, 1}, {0.55, 0.55, 0.58, 1})},
  };
  QFileSet files;
  bool written = true;
  for (const auto& p : pictures) {
    const std::filesystem::path path = std::filesystem::path(root) / p.file;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    written = written && files.Add(path.string(), QWriteTGA(*p.picture, QBitMap::TGA));
  }
  if (!written || !files.Commit()) {
    QERR("DemoWriteData(); can't write the pictures below '%s'", root.c_str());
    return false;
  }
  return true;
}
