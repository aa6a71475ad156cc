#include "foundation/qpathcase.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

// A directory that changed long ago is not read again at each look; what changes afterwards is seen all the same.
class PathCase : public testing::Test
{
protected:
  void Age(const char* directory) const
  {
    fs::last_write_time(dir.Path(directory), fs::file_time_type::clock::now() - std::chrono::hours(1));
  }
  std::string Found(const char* name) const
  {
    const std::string found = QFindPath(dir.Path(name));
    return found == dir.Path(name) ? "same" : found.substr(dir.Path().size() + 1);
  }
  TempDir dir;
};

} // namespace

TEST_F(PathCase, TheExactNameWinsThenTheLeastOfEqualOnes)
{
  dir.Write("Textures/Grass.TGA", "");
  dir.Write("Textures/GRASS.tga", "");
  dir.Write("Textures/sand.tga", "");
  for (int look = 0; look < 3; ++look) {
    SCOPED_TRACE(look);
    EXPECT_EQ("Textures/GRASS.tga", Found("textures\\grass.tga"));
    EXPECT_EQ("Textures/Grass.TGA", Found("textures/Grass.TGA"));
    EXPECT_EQ("same", Found("Textures/sand.tga"));
    EXPECT_EQ("same", Found("textures/san.tga"));
    EXPECT_EQ("same", Found("textures/sand.tgaa"));
    EXPECT_EQ("same", Found("other/sand.tga"));
    Age("Textures");
    Age(".");
  }
}

TEST_F(PathCase, SeesWhatChangesAfterALook)
{
  dir.Write("a/One.txt", "");
  Age("a");
  EXPECT_EQ("a/One.txt", Found("a/ONE.txt"));
  EXPECT_EQ("same", Found("a/TWO.txt"));
  dir.Write("a/Two.txt", "");
  EXPECT_EQ("a/Two.txt", Found("a/TWO.txt"));
  dir.Write("a/Three.txt", ""); // in the same tick, perhaps
  EXPECT_EQ("a/Three.txt", Found("a/THREE.txt"));
  Age("a");
  EXPECT_EQ("a/Three.txt", Found("a/THREE.txt"));
  fs::rename(dir.Path("a/Three.txt"), dir.Path("a/tHree.txt"));
  EXPECT_EQ("a/tHree.txt", Found("a/THREE.txt"));
  fs::remove(dir.Path("a/One.txt"));
  EXPECT_EQ("same", Found("a/ONE.txt"));
  // Another directory under the name of one that was looked at, with its time.
  Age("a");
  EXPECT_EQ("a/Two.txt", Found("a/TWO.txt"));
  const auto time = fs::last_write_time(dir.Path("a"));
  fs::rename(dir.Path("a"), dir.Path("b"));
  dir.Write("a/tWo.txt", "");
  fs::last_write_time(dir.Path("a"), time);
  EXPECT_EQ("a/tWo.txt", Found("a/TWO.txt"));
  for (int i = 0; i < 30; ++i) { // more directories than are kept
    const std::string name = "d" + std::to_string(i);
    dir.Write(name + "/File", "");
    Age(name.c_str());
    EXPECT_EQ(name + "/File", Found((name + "/file").c_str()));
  }
  EXPECT_EQ("b/Two.txt", Found("b/TWO.txt"));
}
