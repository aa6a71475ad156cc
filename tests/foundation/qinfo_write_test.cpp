#include "foundation/textinfo.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Answers the overwrite question, and keeps what was asked.
class Answer
{
public:
  explicit Answer(bool cancel)
  {
    QReports().systemMessage = [this, cancel](std::string_view title, std::string_view text, bool okOnly) {
      asked += std::string(title) + ": " + std::string(text) + (okOnly ? "" : " [OK/Cancel]");
      return cancel;
    };
  }
  ~Answer() { QReports().systemMessage = nullptr; }
  std::string asked;
};

// As by another program, well after it was read.
void ChangeFile(const std::string& path)
{
  timespec times[2] = {{1000, 1}, {1000, 2}};
  utimensat(AT_FDCWD, path.c_str(), times, 0);
}

} // namespace

TEST(QInfoWriteText, SetsIndentAndKinds)
{
  const char* text = "; head\na=1\nt=v\n{\n  ;in\n  u\n  {\n    k= 2 \n  }\n}\nr~t.u\n{\n}\n";
  EXPECT_EQ(text, TextInfo(text).WriteToText());
  EXPECT_EQ("bare=\n", TextInfo("bare\n").WriteToText());
  EXPECT_EQ("x=1\ny=2\n", TextInfo("root {\nx=1\n}\ny=2\n").WriteToText().substr(2)) << "children only, indented";
}

TEST(QInfoWriteText, WritesReferenceThenValue)
{
  ReportCapture reports;
  const TextInfo info("base {\nk=1\n}\nname=value\n~base\n");
  EXPECT_EQ("base\n{\n  k=1\n}\nname~base=value\n{\n}\n", info.WriteToText());
  EXPECT_EQ(0, reports.Problems());
  const TextInfo again(info.WriteToText());
  EXPECT_TRUE(reports.Contains("unknown tree 'base=value'"));
}

TEST(QInfoFileWrite, HappensOnlyWhenSomethingChanged)
{
  const TempDir dir;
  const std::string path = dir.Write("a.ini", "a = 1\r\n\r\n");
  {
    QInfo info(path);
    EXPECT_TRUE(info.SetString("a", " 1"));
    EXPECT_TRUE(info.Write());
  }
  EXPECT_EQ("a = 1\r\n\r\n", FileText(path)) << "neither the order nor the destructor writes what didn't change";
  {
    QInfo info(path);
    EXPECT_TRUE(info.SetInt("b", 2));
  }
  EXPECT_EQ("a= 1\nb=2\n", FileText(path)) << "the destructor writes what did";
  QInfo info(path);
  EXPECT_TRUE(info.Write(dir.Path("copy.ini").c_str(), false));
  EXPECT_EQ("a= 1\nb=2\n", FileText(dir.Path("copy.ini"))) << "a path that is given is always written";
}

TEST(QInfoFileWrite, CreatesAnAbsentFileOnceAKeyWasSet)
{
  const TempDir dir;
  const std::string path = dir.Path("new.ini");
  QInfo info(path, QInfo::NO_OPEN_WARNING);
  EXPECT_TRUE(info.Write());
  EXPECT_NE(0, access(path.c_str(), F_OK));
  EXPECT_TRUE(info.SetInt("a", 1));
  EXPECT_TRUE(info.Write());
  EXPECT_EQ("a=1\n", FileText(path));
}

TEST(QInfoFileWrite, AsksBeforeAFileThatAnotherChanged)
{
  for (const bool cancel : {false, true}) {
    SCOPED_TRACE(cancel);
    const TempDir dir;
    const std::string path = dir.Write("a.ini", "a=1\n");
    Answer answer(cancel);
    QInfo info(path);
    info.SetInt("a", 2);
    EXPECT_TRUE(info.Write());
    EXPECT_EQ("", answer.asked) << "its own write isn't another's";
    info.SetInt("a", 3);
    ChangeFile(path);
    EXPECT_EQ(!cancel, info.Write());
    EXPECT_EQ("File was modified: The file '" + path +
                  "' was modified - it will be overwritten; do you want to overwrite? [OK/Cancel]",
              answer.asked);
    EXPECT_EQ(cancel ? "a=2\n" : "a=3\n", FileText(path));
    EXPECT_FALSE(info.IsModified());
    EXPECT_EQ(3, info.GetInt("a"));
  }
}

TEST(QInfoFileWrite, DoesntAskWhenToldSoOrMadeFromScratch)
{
  const TempDir dir;
  const std::string path = dir.Write("a.ini", "a=1\n");
  Answer answer(true);
  QInfo read(path);
  read.SetInt("a", 2);
  ChangeFile(path);
  EXPECT_TRUE(read.Write(nullptr, false));
  QInfo scratch(path, QInfo::NO_READ);
  scratch.SetInt("b", 1);
  EXPECT_TRUE(scratch.Write());
  EXPECT_EQ("b=1\n", FileText(path));
  EXPECT_EQ("", answer.asked);
  scratch.SetInt("b", 2);
  ChangeFile(path);
  EXPECT_FALSE(scratch.Write()) << "only the first write is unasked";
}

TEST(QInfoFileWrite, RemembersTheTimeOfTheFileWrittenLast)
{
  const TempDir dir;
  const std::string path = dir.Write("a.ini", "a=1\n");
  ChangeFile(path);
  Answer answer(true);
  QInfo info(path);
  EXPECT_TRUE(info.Write(dir.Path("b.ini").c_str()));
  info.SetInt("a", 2);
  EXPECT_FALSE(info.Write());
  EXPECT_NE("", answer.asked);
}

TEST(QInfoFileWrite, ReloadWritesChangesAndReadsTheFileAnew)
{
  const TempDir dir;
  const std::string path = dir.Write("a.ini", "a=1\n");
  QInfo info(path);
  info.SetInt("b", 2);
  info.Reload();
  EXPECT_EQ("a=1\nb=2\n", FileText(path));
  EXPECT_EQ(2, info.GetInt("b"));
  dir.Write("a.ini", "c=3\n");
  info.Reload();
  EXPECT_FALSE(info.PathExists("a"));
  EXPECT_EQ(3, info.GetInt("c"));
}

TEST(QInfoSafety, AFailedWriteKeepsFileAndChanges)
{
  const TempDir dir;
  dir.Write("plain", "");
  const std::string path = dir.Path("plain/a.ini"); // a file stands where a directory would have to be
  ReportCapture reports;
  {
    QInfo info(path, QInfo::NO_READ);
    info.SetInt("a", 1);
    EXPECT_FALSE(info.Write());
    EXPECT_TRUE(info.IsModified());
    EXPECT_TRUE(reports.Contains("QInfo:Write(); file (" + path + ") can't be written"));
  }
  EXPECT_EQ(2, reports.Count("can't be written")) << "the destructor tries again";
}

// One fault while reading must not cost the author the file.
TEST(QInfoSafety, WhatCouldntBeReadIsNotOverwritten)
{
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizers open files of their own to look at an object, and this test leaves them none";
#endif
  const TempDir dir;
  const std::string path = dir.Write("special.ini", "grid=1\n");
  ReportCapture reports;
  rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none = {0, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  auto info = std::make_unique<QInfo>(path, QInfo::NO_OPEN_WARNING);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_TRUE(info->IsUnreadable());
  EXPECT_TRUE(reports.Contains("QInfo: can't open '" + path + "'"));
  info->SetInt("a", 1);
  EXPECT_FALSE(info->Write(nullptr, false));
  EXPECT_FALSE(info->Write(dir.Path("copy.ini").c_str(), false)) << "an empty copy would pass for the real one";
  EXPECT_EQ(2, reports.Count("can't be written"));
  info.reset();
  EXPECT_EQ("grid=1\n", FileText(path));
  EXPECT_NE(0, access(dir.Path("copy.ini").c_str(), F_OK));
}

TEST(QInfoSafety, AnUnreadableTreeRecoversByReading)
{
  const TempDir dir;
  ReportCapture reports;
  const std::string path = dir.Path("a.ini");
  mkdir(path.c_str(), 0700);
  QInfo info(path);
  EXPECT_TRUE(info.IsUnreadable());
  rmdir(path.c_str());
  dir.Write("a.ini", "a=1\n");
  info.Read();
  EXPECT_FALSE(info.IsUnreadable());
  EXPECT_EQ(1, info.GetInt("a"));
}
