#include "fuzzing/sound.h"

// The library forgets the stream's description when an OGG file's head is cut.
extern "C" const char* __lsan_default_suppressions()
{
  return "leak:vorbis_info_init";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  FuzzSound({reinterpret_cast<const char*>(data), size});
  return 0;
}
