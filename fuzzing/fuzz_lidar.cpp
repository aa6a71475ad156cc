#include "fuzzing/lidar.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  FuzzLidar({reinterpret_cast<const char*>(data), size});
  return 0;
}
