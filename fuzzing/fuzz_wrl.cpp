#include "fuzzing/wrl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  FuzzWrl({reinterpret_cast<const char*>(data), size});
  return 0;
}
