#include "foundation/qsafewrite.h"
#include "support/tempdir.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

bool Add(QFileBatch& batch, const std::string& name, std::string_view content)
{
  return batch.Add(name, std::as_bytes(std::span(content)));
}

long CountFiles(const TempDir& dir)
{
  return std::distance(fs::directory_iterator(dir.Path()), fs::directory_iterator());
}

} // namespace

TEST(QFileBatch, OldFilesStandUntilTheCommitAndTakeTheNewContent)
{
  const TempDir dir;
  const TempDir elsewhere;
  dir.Write("plain.dof", "old");
  dir.Write("Case.DOF", "old");
  elsewhere.Write("target.dof", "old");
  fs::create_symlink(elsewhere.Path("target.dof"), dir.Path("link.dof"));
  QFileBatch batch(dir.Path());
  for (const char* name : {"plain.dof", "case.dof", "link.dof", "new.dof"})
    EXPECT_TRUE(Add(batch, name, "new"));
  EXPECT_EQ("old", FileText(dir.Path("plain.dof")));
  EXPECT_EQ(4u, batch.Pending());
  EXPECT_TRUE(batch.Commit().empty());
  for (const std::string& path :
       {dir.Path("plain.dof"), dir.Path("Case.DOF"), dir.Path("new.dof"), elsewhere.Path("target.dof")})
    EXPECT_EQ("new", FileText(path)) << path;
  EXPECT_TRUE(fs::is_symlink(dir.Path("link.dof")));
  EXPECT_EQ(4, CountFiles(dir));
  EXPECT_TRUE(batch.Commit().empty()) << "of nothing";
}

TEST(QFileBatch, OneThatFailsDoesNotHoldUpTheOthers)
{
  const TempDir dir;
  dir.Write("taken.dof/inside", "");
  {
    QFileBatch batch(dir.Path());
    EXPECT_FALSE(Add(batch, "taken.dof", "new"));
    EXPECT_TRUE(Add(batch, "late.dof", "new"));
    EXPECT_TRUE(Add(batch, "good.dof", "new"));
    fs::create_directory(dir.Path("late.dof")); // meanwhile
    const std::vector<std::string> failed = batch.Commit();
    ASSERT_EQ(1u, failed.size());
    EXPECT_EQ("late.dof", fs::path(failed[0]).filename());
    EXPECT_EQ("new", FileText(dir.Path("good.dof")));
    EXPECT_TRUE(Add(batch, "dropped.dof", "new"));
  }
  EXPECT_EQ(3, CountFiles(dir)) << "temporary files stay behind";
  QFileBatch nowhere(dir.Path("none"));
  EXPECT_FALSE(Add(nowhere, "a.dof", "new"));
}
