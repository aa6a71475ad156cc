#include "fuzzing/dof.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  FuzzDof(std::as_bytes(std::span(data, size)));
  return 0;
}
