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

  // By the extension's text, wherever it stands in the name; a reader is there for ".tga" alone, and ".png" gives true
  // with the picture as it is. False, with a report for a format that is known, when there is no picture.
  bool Read(const std::string& fileName);

private:
  bool ReadTGA(const std::string& fileName);

  bool loadFailed = false;
};
