#pragma once

#include "foundation/qbitmap.h"

#include <string>

// A picture that fills itself from a file. The object's name is the file's.
class QImage : public QBitMap
{
public:
  // On failure (reported) the image exists, and LoadFailed answers true.
  explicit QImage(const std::string& fileName, int depth = 0, int wid = 0, int hgt = 0, uint32_t flags = 0);
  const char* GetClassName() const override { return "QImage"; }
  void DbgReport() const override;
  bool LoadFailed() const { return loadFailed; }

  // By the extension's text, wherever it stands in the name: .rgb, .tga, .jpg, .jpe, .psd, .mip, .bmp; from the disk or
  // an open archive. ".png" gives true with the picture as it is. False, reported, when there is no picture.
  bool Read(const std::string& fileName);
  // The reader that a name chooses.
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
  static FileFormat FormatOf(const std::string& fileName);

private:
  bool loadFailed = false;
};
