#include "fuzzing/ase.h"
#include "fuzzing/dds.h"
#include "fuzzing/dof.h"
#include "fuzzing/shd.h"
#include "fuzzing/texfont.h"
#include "fuzzing/wrl.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

// Every file of a fuzz target's corpus; the target's own checks end the program.
class FuzzReplay : public testing::TestWithParam<std::pair<const char*, void (*)(std::string_view)>>
{};

TEST_P(FuzzReplay, Corpus)
{
  const auto [name, target] = GetParam();
  int count = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::string(PAVEX_SOURCE_DIR "/fuzzing/corpus/") + name)) {
    SCOPED_TRACE(entry.path().string());
    std::ifstream in(entry.path(), std::ios::binary);
    target(std::string(std::istreambuf_iterator<char>(in), {}));
    ++count;
  }
  EXPECT_GT(count, 0);
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay,
                         testing::Values(std::pair{"ase", &FuzzAse}, std::pair{"dds", &FuzzDds},
                                         std::pair{"dof", &FuzzDof}, std::pair{"shd", &FuzzShd},
                                         std::pair{"texfont", &FuzzTexfont}, std::pair{"wrl", &FuzzWrl}),
                         [](const auto& one) { return one.param.first; });
