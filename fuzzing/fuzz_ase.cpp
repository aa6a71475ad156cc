#include "fuzzing/ase.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  FuzzAse({reinterpret_cast<const char*>(data), size});
  return 0;
}
