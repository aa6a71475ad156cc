#include "foundation/qfilename.h"

#include "foundation/qdirectory.h"
#include "foundation/qpath.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

// Puts the process's hooks back.
class Hooks
{
public:
  Hooks() : before(QFileHooks()) {}
  ~Hooks() { QFileHooks() = before; }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;

private:
  QFileServices before;
};

} // namespace

TEST(QFileName, Parts)
{
  const struct
  {
    const char* path;
    const char* base;
    const char* extension; // null: none
  } cases[] = {{"a/b.c/road.dof", "road.dof", ".dof"},
               {"a\\b/c\\x", "x", nullptr},
               {"bare", "bare", nullptr},
               {"dir/", "", nullptr},
               {"a.b/c", "c", ".b/c"},
               {"", "", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_STREQ(c.base, QFileBase(c.path));
    EXPECT_STREQ(c.extension, QFileExtension(c.path));
  }
}

TEST(QFileName, Joins)
{
  const struct
  {
    const char* base;
    const char* name;
    const char* joined;
  } cases[] = {{"data", "tracks", "data/tracks"},
               {"/", "data", "/data"},
               {"", "data", "data"},
               {"a/b", "..", "a"},
               {"/a", "..", "/"},
               {"/", "..", "/"},
               {"a", "..", ""},
               {"", "..", ""},
               {"a\\b", "..", "a"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.base) + " + " + c.name);
    EXPECT_EQ(c.joined, QPathJoin(c.base, c.name));
  }
}

TEST(QFileName, TellsFilesFromDirectories)
{
  const TempDir dir;
  dir.Write("Data/file.ini", "12345");
  ASSERT_EQ(0, mkfifo(dir.Path("pipe").c_str(), 0600));
  const struct
  {
    const char* name;
    bool file;
    bool directory;
    int size;
  } cases[] = {{"Data/file.ini", true, false, 5}, {"data\\FILE.INI", true, false, 5}, {"Data", false, true, -1},
               {"data", false, true, -1},         {"pipe", false, false, 0},          {"none", false, false, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.file, QFileExists(dir.Path(c.name)));
    EXPECT_EQ(c.directory, QDirectoryExists(dir.Path(c.name)));
    EXPECT_EQ(c.size, QFileSize(dir.Path(c.name)));
  }
  EXPECT_FALSE(QFileExists(""));
}

TEST(QFileName, ArchivesAreAskedFirstWhenWanted)
{
  const Hooks hooks;
  EXPECT_FALSE(QFileExists("data/tracks/x/road.dof"));
  QFileHooks().archiveHas = [](const std::string& path) { return path == "data/tracks/x/road.dof"; };
  EXPECT_TRUE(QFileExists("data/tracks/x/road.dof"));
  EXPECT_FALSE(QFileExists("data/tracks/x/road.dof", false));
}

TEST(QFileName, Copies)
{
  const TempDir dir;
  const std::string from = dir.Write("from", std::string(5000, 'x'));
  dir.Write("to", "old");
  EXPECT_TRUE(QCopyFile(from, dir.Path("to")));
  EXPECT_EQ(FileText(from), FileText(dir.Path("to")));
  EXPECT_FALSE(QCopyFile(dir.Path("none"), dir.Path("to")));
  EXPECT_EQ(FileText(from), FileText(dir.Path("to"))); // not emptied by the failure
  EXPECT_FALSE(QCopyFile(from, dir.Path("no/dir")));
  ReportCapture reports;
  EXPECT_TRUE(QCopyFile("same", "same"));
  EXPECT_TRUE(reports.Contains("QCopyFile(); source and dest are the same (same) - returning success"));
}

TEST(QFileName, MakesDirectories)
{
  const TempDir dir;
  dir.Write("file", "");
  EXPECT_TRUE(QCreateDirectory(dir.Path("a")));
  EXPECT_TRUE(QCreateDirectory(dir.Path("a"))); // it is there
  EXPECT_FALSE(QCreateDirectory(dir.Path("b/c")));
  EXPECT_FALSE(QCreateDirectory(dir.Path("file"))); // and isn't a directory
  EXPECT_TRUE(QCreateDirectories(dir.Path("b/c/d//")));
  EXPECT_TRUE(QDirectoryExists(dir.Path("b/c/d")));
  EXPECT_FALSE(QCreateDirectories(dir.Path("file/x")));
  EXPECT_FALSE(QCreateDirectories(""));
}

TEST(QFileName, CurrentDirectory)
{
  const TempDir dir;
  const InDirectory stay(dir.Path());
  std::filesystem::create_directory(dir.Path("Sub"));
  ReportCapture reports;
  EXPECT_TRUE(QSetCurrentDirectory("sub"));
  qstring now;
  QCurrentDir(now);
  EXPECT_EQ(std::filesystem::canonical(dir.Path("Sub")).string(), now.Str());
  EXPECT_FALSE(QSetCurrentDirectory("none"));
  EXPECT_TRUE(reports.Contains("QSetCurrentDirectory(none) failed; errno 2"));
}

TEST(QFileName, DocumentsGoToThePlatform)
{
  const Hooks hooks;
  QFileHooks().openDocument = nullptr;
  ReportCapture reports;
  EXPECT_FALSE(QNotePad("QLOG.txt"));
  EXPECT_FALSE(QOpen("doc", "args"));
  EXPECT_TRUE(reports.Contains("QNotePad: can't open QLOG.txt"));
  EXPECT_TRUE(reports.Contains("QOpen: can't open doc"));
  std::vector<std::string> opened;
  QFileHooks().openDocument = [&](const std::string& what, const std::string& args) {
    opened.push_back(what + "|" + args);
    return true;
  };
  EXPECT_TRUE(QNotePad("a/b.txt") && QOpen("doc", "args"));
  EXPECT_THAT(opened, testing::ElementsAre("a/b.txt|", "doc|args"));
}

TEST(QFileName, PowersOfTwo)
{
  const struct
  {
    int n;
    int power;
  } cases[] = {{-5, 1}, {0, 1}, {1, 1}, {2, 2}, {3, 4}, {256, 256}, {257, 512}, {2147483647, 1 << 30}};
  for (const auto& c : cases)
    EXPECT_EQ(c.power, QNearestPowerOf2(c.n)) << c.n;
  ReportCapture reports;
  EXPECT_EQ(8, QNearestPowerOf2(5, true));
  EXPECT_TRUE(reports.Contains("QNearestPowerOf2(); rounding not yet implemented"));
}

TEST(QFileName, HexDump)
{
  ReportCapture reports;
  QHexDump("0123456789abcdef\x01Z", 18);
  ASSERT_EQ(2u, reports.Entries().size());
  EXPECT_EQ("00000000: 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 0123456789abcdef\n", reports.Entries()[0].text);
  EXPECT_TRUE(reports.Contains("00000010: 01 5A"));
  EXPECT_TRUE(reports.Contains(".Z\n"));
}

TEST(QDirectoryWalk, GivesEveryEntryWithWhatIsKnownOfIt)
{
  const TempDir dir;
  dir.Write("b.dof", "12345");
  dir.Write("a/inside", "");
  std::filesystem::create_symlink("nowhere", dir.Path("dangling"));
  QDirectory walk(dir.Path());
  std::vector<std::string> names;
  std::string name;
  QFileInfo info;
  while (walk.ReadNext(name, &info)) {
    names.push_back(name);
    EXPECT_EQ(name == "b.dof" ? 5 : info.size, info.size);
    EXPECT_EQ(name == "." || name == ".." || name == "a", info.isDirectory) << name;
    EXPECT_EQ(name == "dangling", info.modifyTime == 0) << name;
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre(".", "..", "a", "b.dof", "dangling"));
  EXPECT_TRUE(walk.Read(dir.Path("a")));
  EXPECT_TRUE(walk.ReadNext(name));
  EXPECT_FALSE(walk.Read(dir.Path("none")));
  EXPECT_FALSE(walk.ReadNext(name));
  info.size = 7;
  EXPECT_FALSE(QDirectory::GetInfo(dir.Path("none"), info));
  EXPECT_EQ(0, info.size);
  EXPECT_THAT(QDirectory::SortedFiles(dir.Path()), testing::ElementsAre("b.dof", "dangling"));
}

TEST(QPathSearch, FirstDirectoryThatHasTheFile)
{
  const TempDir dir;
  dir.Write("one/a", "");
  dir.Write("two/a", "");
  dir.Write("two/b", "");
  QPath path;
  path.Add(dir.Path("one"));
  path.Add(dir.Path("two"));
  EXPECT_EQ(dir.Path("one/a"), path.Resolve("a"));
  EXPECT_EQ(dir.Path("two/b"), path.Resolve("b"));
  EXPECT_STREQ("c", path.Resolve("c"));
  qstring full;
  qstring directory;
  EXPECT_TRUE(path.Find("b", full, &directory));
  EXPECT_EQ(dir.Path("two"), directory.Str());
  EXPECT_FALSE(path.Find("c", full, &directory));
  EXPECT_EQ("c", full);
  EXPECT_EQ("", directory);
}

TEST(QPathSearch, HoldsTwentyDirectories)
{
  ReportCapture reports;
  QPath path;
  for (int i = 0; i < 20; ++i)
    EXPECT_TRUE(path.Add("d" + std::to_string(i)));
  EXPECT_EQ(0, reports.Problems());
  EXPECT_FALSE(path.Add("one more"));
  EXPECT_TRUE(reports.Contains("QPath:Add(); maximum (20) reached"));
  EXPECT_EQ(20, path.GetCount());
  EXPECT_STREQ("d19", path.GetPath(19));
  EXPECT_STREQ("", path.GetPath(20));
  EXPECT_TRUE(reports.Contains("QPath:GetPath(20) out of range"));
}
