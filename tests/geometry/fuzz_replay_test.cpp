#include "fuzzing/dof.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

// Every file of the fuzz target's corpus; the target's own checks end the program.
TEST(FuzzReplay, Dof)
{
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(PAVEX_SOURCE_DIR "/fuzzing/corpus/dof")) {
    SCOPED_TRACE(entry.path().string());
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(in), {});
    FuzzDof(std::as_bytes(std::span(content)));
    ++count;
  }
  EXPECT_GT(count, 0);
}
