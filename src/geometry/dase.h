#pragma once

#include "geometry/dtextreader.h"

#include <cstdint>
#include <string>
#include <vector>

// What the objects of an ASE file share.
struct DAseFile
{
  DTextReader in;
  std::string name;               // for reports
  std::vector<int32_t> faceIndex; // source vertices of the last object, three a face
};
