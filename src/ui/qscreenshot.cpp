#include "ui/qscreenshot.h"

#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "ui/qapp.h"
#include "ui/qglbatch.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <epoxy/gl.h>
#include <filesystem>
#include <string>

namespace {

// The device's pixels of a rectangle of the interface.
QRect OnDevice(const QRect& r)
{
  const float scale = app->GetDisplay().Scale();
  const auto device = [=](int at) { return static_cast<int>(std::lround(static_cast<float>(at) * scale)); };
  const int x = device(r.x), y = device(r.y);
  return {x, y, device(r.x + r.wid) - x, device(r.y + r.hgt) - y};
}

} // namespace

bool QReadBackBuffer(QBitMap& bitmap, const QRect* part)
{
  if (!DGlobals().hasContext || !app || !app->GetShell())
    return false;
  const QRect whole = OnDevice(app->GetShell()->RootRect());
  const QRect r = part ? OnDevice(*part) : whole;
  if (!bitmap.Alloc(32, r.wid, r.hgt))
    return false;
  app->GetBatch().Flush();
  glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glPixelStorei(GL_PACK_ROW_LENGTH, 0);
  glReadBuffer(GL_BACK);
  glReadPixels(r.x, whole.hgt - r.y - r.hgt, r.wid, r.hgt, GL_RGBA, GL_UNSIGNED_BYTE, bitmap.GetBuffer());
  glPopClientAttrib();
  // What blending left in the window's alpha isn't part of what is seen.
  uint8_t* pixels = bitmap.GetBuffer();
  for (int i = 3; i < bitmap.GetMemSize(); i += 4)
    pixels[i] = 255;
  return true;
}

namespace {

// The first name of the row that isn't taken; empty when all are.
std::string FreeName(const char* kind)
{
  for (int n = 1; n < 100000; ++n) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "temp/%s%05d.tga", kind, n);
    std::error_code ignored;
    if (!std::filesystem::exists(name.data(), ignored))
      return name.data();
  }
  return {};
}

} // namespace

bool QSaveScreenshot(QWindow* window, bool whole)
{
  if (!window) {
    qinfo(whole ? "> No UI present.\n" : "> No BC present.\n");
    return false;
  }
  std::error_code ignored;
  std::filesystem::create_directory("temp", ignored);
  const std::string name = FreeName(whole ? "ui" : "bc");
  // The picture of the last frame is gone once it was shown: paint it again.
  if (const auto& idle = app->GetIdleProc())
    idle();
  else
    app->GetWindowManager()->PaintAll();
  QBitMap picture;
  const QRect r = window->RootRect();
  if (name.empty() || !QReadBackBuffer(picture, &r))
    return false;
  qinfo(whole ? "> Saving screenshot of UI in '%s'\n" : "> Saving screenshot of BC in '%s'\n", name.c_str());
  if (picture.Write(name.c_str(), QBitMap::TGA))
    return true;
  QWARN("Can't write screenshot '%s'", name.c_str());
  return false;
}
