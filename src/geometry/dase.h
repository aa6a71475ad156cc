#pragma once

#include "geometry/dblock.h"
#include "geometry/dtextreader.h"

#include <cstdint>
#include <string>

// What the objects of an ASE file share.
struct DAseFile
{
  DTextReader in;
  std::string name;          // for reports
  DArray<int32_t> faceIndex; // source vertices of the last object, three a face
};
