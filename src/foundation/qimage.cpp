#include "foundation/qimage.h"

#include "foundation/qfile.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "foundation/qtga.h"

#include <cerrno>
#include <vector>

namespace {

// Format codes of the files that are known by name.
enum FileFormat
{
  FORMAT_RGB,
  FORMAT_TGA,
  FORMAT_NONE,
  FORMAT_JPG,
  FORMAT_BMP,
  FORMAT_PSD,
  FORMAT_MIP,
  FORMAT_PNG
};

// The first text found anywhere in the name decides; names like "road.tga.bak" are pictures, too.
FileFormat FormatOf(const std::string& fileName)
{
  static constexpr struct
  {
    const char* text;
    FileFormat format;
  } formats[] = {{".RGB", FORMAT_RGB}, {".TGA", FORMAT_TGA}, {".JPG", FORMAT_JPG}, {".JPE", FORMAT_JPG},
                 {".PSD", FORMAT_PSD}, {".MIP", FORMAT_MIP}, {".PNG", FORMAT_PNG}, {".BMP", FORMAT_BMP}};
  qstring name(fileName);
  name.ToUpper();
  for (const auto& f : formats)
    if (name.Contains(f.text))
      return f.format;
  return FORMAT_NONE;
}

} // namespace

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

bool QImage::Read(const std::string& fileName)
{
  qstring path(fileName);
  path.ConvertEnv();
  switch (FormatOf(path.Str())) {
  case FORMAT_TGA:
    return ReadTGA(path.Str());
  case FORMAT_PNG:
    return true; // the picture that stands there stays
  case FORMAT_NONE:
    return false;
  default:
    QERR("QImage:Read(%s); no reader for this format", path.c_str());
    return false;
  }
}

bool QImage::ReadTGA(const std::string& fileName)
{
  std::vector<std::byte> member;
  const QFileServices& services = QFileHooks();
  if (services.archiveHas && services.archiveRead && services.archiveHas(fileName))
    return services.archiveRead(fileName, member) && QReadTGA(member, *this, fileName.c_str());
  QBlock file;
  size_t size = 0;
  if (QReadFile(fileName, file, size))
    return QReadTGA({file.Data(), size}, *this, fileName.c_str());
  if (errno == ENOMEM)
    QERR("QImage:ReadTGA(); no memory to read '%s'", fileName.c_str());
  return false;
}
