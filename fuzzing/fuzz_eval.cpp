#include "fuzzing/eval.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  FuzzEval({reinterpret_cast<const char*>(data), size});
  return 0;
}
