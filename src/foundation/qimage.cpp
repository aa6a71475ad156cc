#include "foundation/qimage.h"

#include "foundation/qbmp.h"
#include "foundation/qfile.h"
#include "foundation/qjpg.h"
#include "foundation/qmip.h"
#include "foundation/qpsd.h"
#include "foundation/qreport.h"
#include "foundation/qrgb.h"
#include "foundation/qstring.h"
#include "foundation/qtga.h"

#include <cerrno>

// The first text found anywhere in the name decides; names like "road.tga.bak" are pictures, too.
QImage::FileFormat QImage::FormatOf(const std::string& fileName)
{
  constexpr size_t LONGEST_NAME = 255;
  static constexpr struct
  {
    const char* text;
    FileFormat format;
  } formats[] = {{".RGB", FORMAT_RGB}, {".TGA", FORMAT_TGA}, {".JPG", FORMAT_JPG}, {".JPE", FORMAT_JPG},
                 {".PSD", FORMAT_PSD}, {".MIP", FORMAT_MIP}, {".PNG", FORMAT_PNG}, {".BMP", FORMAT_BMP}};
  qstring name(fileName.substr(0, LONGEST_NAME));
  name.ToUpper();
  for (const auto& f : formats)
    if (name.Contains(f.text))
      return f.format;
  return FORMAT_NONE;
}

QImage::QImage(const std::string& fileName, int startDepth, int startWid, int startHgt, uint32_t startFlags) :
    QBitMap(startDepth, startWid, startHgt, startFlags)
{
  SetName(fileName.c_str());
  if (Read(fileName))
    return;
  loadFailed = true;
  QERR("QImage ctor: can't load '%s'", fileName.c_str());
}

void QImage::DbgReport() const
{
  const void* self = this;
  const char* name = GetName();
  QLOG("@%p: Object %s (class %s) fileName='%s'\n", self, name, GetClassName(), name);
}

namespace {

bool ReadPSD(std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  QPSD psd;
  if (!psd.Load(file)) {
    QERR("QImage: can't read PSD '%s'\n", name);
    return false;
  }
  if (!picture.AllocUnset(32, psd.GetWidth(), psd.GetHeight()))
    return false;
  psd.Render(picture);
  return true;
}

bool Decode(QImage::FileFormat format, std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  switch (format) {
  case QImage::FORMAT_RGB:
    return QReadRGB(file, picture, name);
  case QImage::FORMAT_JPG:
    return QReadJPG(file, picture, name);
  case QImage::FORMAT_BMP:
    return QReadBMP(file, picture, name);
  case QImage::FORMAT_PSD:
    return ReadPSD(file, picture, name);
  case QImage::FORMAT_MIP:
    return QReadMIP(file, picture, name);
  default:
    return false;
  }
}

} // namespace

bool QImage::Read(const std::string& fileName)
{
  qstring path(fileName);
  path.ConvertEnv();
  const FileFormat format = FormatOf(path.Str());
  if (format == FORMAT_PNG)
    return true; // the picture that stands there stays
  if (format == FORMAT_NONE)
    return false;
  if (format == FORMAT_TGA) { // the format of most textures, and read as fast as its bytes come
    QPieceReader file(path.Str());
    if (file.IsOpen())
      return QReadTGA(file, *this, path.c_str());
  } else {
    QBlock file;
    size_t size = 0;
    if (QReadFile(path.Str(), file, size, true))
      return Decode(format, {file.Data(), size}, *this, path.c_str());
  }
  if (errno == ENOMEM)
    QERR("QImage:ReadTGA(); no memory to read '%s'", path.c_str());
  else if (format == FORMAT_JPG)
    qinfo("Can't open %s\n", path.c_str());
  return false;
}
