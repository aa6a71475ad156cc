#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "ui/qfilelist.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> Names(const QFileList& list)
{
  std::vector<std::string> names;
  for (const QFileEntry& entry : list.Entries())
    names.push_back(entry.name + (entry.isDirectory ? "/" : ""));
  return names;
}

TEST(QFileList, SortsAsAPersonExpects)
{
  // Each belongs before the next.
  const std::vector<std::vector<const char*>> rows = {
      {"a", "B", "c"},
      {"part2", "part10", "part99999999999999999999", "part100000000000000000000"},
      {"lap7", "lap08", "Lap9", "lap010"},
      {"Ecole",
       "\xC3\xA9"
       "cole2",
       "Edge", "e\xCC\x81toile", "Zoo",
       "\xC5\xBC"
       "u"},
      {"road", "road.ase", "road1.ase"},
      {"\xCE\x91", "\xCE\xB2", "\xCE\x93"}, // alpha, beta, gamma
  };
  for (const auto& row : rows)
    for (size_t i = 0; i < row.size(); ++i)
      for (size_t j = 0; j < row.size(); ++j) {
        SCOPED_TRACE(std::string(row[i]) + " and " + row[j]);
        EXPECT_EQ(i <=> j, QCompareNatural(QNaturalKey(row[i]), QNaturalKey(row[j])));
      }
}

TEST(QFileList, HoldsAllDirectoriesAndTheFilesThatPass)
{
  TempDir dir;
  for (const char* name : {"b10.ase", "b2.ASE", "a.txt", ".hidden.ase", "noextension", "zebra.ase"})
    dir.Write(name, "1234");
  for (const char* name : {"sub2", "Sub10", ".git"})
    fs::create_directory(dir.Path(name));
  fs::create_directory_symlink("sub2", dir.Path("link"));
  fs::create_symlink("nowhere", dir.Path("dangling.ase"));
  const struct
  {
    const char* filter;
    std::vector<std::string> files;
  } cases[] = {
      {"*.ase", {"b2.ASE", "b10.ase", "dangling.ase", "zebra.ase"}},
      {"*.txt; b2*", {"a.txt", "b2.ASE"}},
      {"*.*", {"a.txt", "b2.ASE", "b10.ase", "dangling.ase", "noextension", "zebra.ase"}},
      {"", {"a.txt", "b2.ASE", "b10.ase", "dangling.ase", "noextension", "zebra.ase"}},
      {"*.dof", {}},
  };
  QFileList list;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.filter);
    std::vector<std::string> expected = {"../", "link/", "sub2/", "Sub10/"};
    expected.insert(expected.end(), c.files.begin(), c.files.end());
    EXPECT_TRUE(list.Read(dir.Path(), c.filter));
    EXPECT_EQ(expected, Names(list));
  }
  EXPECT_TRUE(list.Read(dir.Path(), ".*"));
  EXPECT_EQ((std::vector<std::string>{"../", ".git/", "link/", "sub2/", "Sub10/", ".hidden.ase"}), Names(list));
  EXPECT_EQ(4, list.Entries().back().size);
  EXPECT_EQ(3, list.Find("sub2"));
  EXPECT_EQ(-1, list.Find("SUB2"));

  ReportCapture reports;
  EXPECT_FALSE(list.Read(dir.Path() + "/gone", "*"));
  EXPECT_EQ((std::vector<std::string>{"../"}), Names(list));
  EXPECT_TRUE(reports.Contains("Can't read directory"));
}

TEST(QFileList, FindsTheNearestDirectoryThatExists)
{
  TempDir dir;
  dir.Write("file", "");
  const std::string here = fs::canonical(dir.Path()).string();
  for (const char* below : {"", "/", "/gone", "/gone/further/", "/file", "/gone/..", "/."})
    EXPECT_EQ(here, QNearestDirectory(here + below)) << below;
  EXPECT_EQ("/", QNearestDirectory("/no-such-directory/at/all"));
  EXPECT_EQ(fs::current_path().string(), QNearestDirectory(""));
  EXPECT_EQ(fs::current_path().string(), QNearestDirectory("."));
}

} // namespace
