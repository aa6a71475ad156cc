#include "foundation/qfile.h"

#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

// The reading operations have to agree whether the bytes come from a stream or from memory.
class QFileRead : public testing::TestWithParam<uint32_t>
{
protected:
  QFile Open(const char* text) const { return QFile(dir.Write("f", text), GetParam()); }
  TempDir dir;
};

INSTANTIATE_TEST_SUITE_P(StreamAndMemory, QFileRead, testing::Values(1u, 1u | QFile::MEMORY));

} // namespace

TEST_P(QFileRead, CharactersUpToTheEnd)
{
  QFile f = Open("a\xFE");
  EXPECT_EQ(2, f.Size());
  EXPECT_EQ('a', f.GetChar());
  EXPECT_EQ(0xFE, f.GetChar());
  EXPECT_FALSE(f.IsEOF()); // nothing was read past the end yet
  EXPECT_EQ(0xFF, f.GetChar());
  EXPECT_TRUE(f.IsEOF());
  f.UnGetChar('z');
  EXPECT_FALSE(f.IsEOF());
  EXPECT_EQ('z', f.GetChar());
}

TEST_P(QFileRead, PositionsAndBlocks)
{
  QFile f = Open("0123456789");
  char block[8] = {};
  EXPECT_EQ(4u, f.Read(block, 4));
  EXPECT_STREQ("0123", block);
  EXPECT_EQ(4, f.Tell());
  EXPECT_TRUE(f.Seek(-2, QFile::FROM_END));
  EXPECT_EQ('8', f.GetChar());
  f.UnGetChar('8');
  EXPECT_EQ(8, f.Tell());
  EXPECT_TRUE(f.Seek(-3, QFile::FROM_CURRENT));
  EXPECT_EQ('5', f.GetChar());
  EXPECT_TRUE(f.Seek(8));
  f.UnGetChar('x'); // a block starts with the byte that was pushed back
  EXPECT_EQ(3u, f.Read(block, 8));
  EXPECT_EQ("x89", std::string(block, 3));
  EXPECT_TRUE(f.IsEOF());
  EXPECT_TRUE(f.Seek(0));
  EXPECT_FALSE(f.IsEOF());
}

TEST_P(QFileRead, LinesWithoutTheirEnds)
{
  QFile f = Open("one\r\n\nlonger line\nlast");
  qstring line;
  std::vector<std::string> lines;
  for (int i = 0; i < 2 && f.GetLine(line); ++i)
    lines.push_back(line.Str());
  char part[7];
  while (f.GetLine(part, sizeof part))
    lines.emplace_back(part);
  EXPECT_THAT(lines, testing::ElementsAre("one", "", "longer", " line", "last"));
}

TEST_P(QFileRead, Words)
{
  QFile f = Open(" \t\r\none \"two words\"three\nfarTooLong \"open");
  std::vector<std::string> words;
  char word[10];
  while (f.GetString(word, sizeof word))
    words.emplace_back(word);
  EXPECT_THAT(words, testing::ElementsAre("one", "two words", "three", "farTooLon", "open"));
  QFile again = Open("one two");
  ASSERT_TRUE(again.GetString(word, sizeof word));
  EXPECT_EQ(' ', again.GetChar()); // the separator is there still
}

TEST_P(QFileRead, StringsWithTheirLength)
{
  QFile f = Open("");
  QFile out(dir.Path("out"), QFile::WRITE_BINARY);
  EXPECT_TRUE(out.Write(qstring("lakeside"), true));
  EXPECT_TRUE(out.Write(qstring("raw"), false));
  EXPECT_TRUE(out.Write("text") && out.Printf("%d", 7) && out.PutChar('!') && out.Flush());
  const std::string bytes = FileText(dir.Path("out"));
  EXPECT_EQ(std::string("\x08\0lakesiderawtext7!", 19), bytes);

  QFile in(dir.Path("out"), GetParam());
  qstring s;
  EXPECT_TRUE(in.Read(s));
  EXPECT_EQ("lakeside", s);
  EXPECT_FALSE(in.Read(s)); // "ra" says 24,946 bytes
  EXPECT_TRUE(s.IsEmpty());
}

TEST_P(QFileRead, WideLines)
{
  QFile f(dir.Write("w", std::string("a\0\r\0\n\0\xE9\x20", 8)), GetParam());
  std::u16string line;
  EXPECT_TRUE(f.GetLine(line));
  EXPECT_EQ(u"a", line);
  EXPECT_TRUE(f.GetLine(line));
  EXPECT_EQ(u"\u20E9", line);
  EXPECT_FALSE(f.GetLine(line));
}

TEST_P(QFileRead, AnAbsentFileActsAsAnEmptyOne)
{
  ReportCapture reports;
  QFile f(dir.Path("absent"), GetParam());
  char byte = 0;
  qstring line;
  EXPECT_FALSE(f.IsOpen());
  EXPECT_TRUE(f.IsEOF());
  EXPECT_EQ(0u, f.Read(&byte, 1));
  EXPECT_EQ(0u, f.Write(&byte, 1));
  EXPECT_EQ(0xFF, f.GetChar());
  EXPECT_FALSE(f.GetLine(line) || f.Seek(1) || f.Write("x") || f.Flush());
  EXPECT_EQ(0, f.Size());
  EXPECT_EQ(0, reports.Problems());
}

TEST(QFileMemory, ClampsPositionsAndTakesNoWrites)
{
  const TempDir dir;
  QFile f(dir.Write("f", "abc"), QFile::READ_BINARY | QFile::MEMORY);
  EXPECT_TRUE(f.Seek(99));
  EXPECT_EQ(3, f.Tell());
  EXPECT_TRUE(f.Seek(-99, QFile::FROM_CURRENT));
  EXPECT_EQ(0, f.Tell());
  EXPECT_TRUE(f.Seek(INT64_MAX, QFile::FROM_END));
  EXPECT_EQ(3, f.Tell());
  ReportCapture reports;
  EXPECT_FALSE(f.PutChar('x'));
  EXPECT_TRUE(reports.Contains("QFile:PutChar() not supported for memory files"));
}

TEST(QFileMemory, ModesThatCannotBePreloaded)
{
  const TempDir dir;
  const std::string path = dir.Write("f", "abc");
  ReportCapture reports;
  {
    QFile f(path, QFile::READ_TEXT | QFile::MEMORY);
    EXPECT_EQ('a', f.GetChar());
    EXPECT_TRUE(
        reports.Contains("QFile ctor: READ_TEXT and MEMORY flags are incompatible (buggy); turning off MEMORY"));
  }
  QFile update(path, QFile::UPDATE_BINARY | QFile::MEMORY);
  EXPECT_TRUE(reports.Contains("QFile:ctor MEMORY req'd for '" + path + "' but incompatible mode given"));
  QFile taken("name", qfopen(path.c_str(), "rb"), QFile::READ_BINARY | QFile::MEMORY);
  EXPECT_TRUE(reports.Contains("QFile: can't use memory mapping with 'fp' takeover"));
  EXPECT_EQ('a', taken.GetChar());
}

TEST(QFileOpen, OnlyRegularFilesUnderTheirExactNameFirst)
{
  const TempDir dir;
  dir.Write("Tex/Grass.TGA", "upper");
  dir.Write("Tex/grass.tga", "lower");
  ASSERT_EQ(0, mkfifo(dir.Path("pipe").c_str(), 0600));
  const struct
  {
    const char* name;
    const char* content; // null: can't be opened
    int reason;
  } cases[] = {{"Tex/grass.tga", "lower", 0},
               {"tex\\GRASS.TGA", "upper", 0}, // the least name by its bytes
               {"Tex", nullptr, EISDIR},
               {"pipe", nullptr, EINVAL}, // and no waiting for a writer
               {"Tex/none", nullptr, ENOENT}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string content;
    EXPECT_EQ(c.content != nullptr, QReadFile(dir.Path(c.name), content));
    EXPECT_EQ(c.content ? c.content : "", content);
    if (c.content)
      continue;
    EXPECT_EQ(c.reason, errno);
    EXPECT_EQ(nullptr, qfopen(dir.Path(c.name).c_str(), "rb"));
  }
  QFile out(dir.Path("TEX/GRASS.tga"), QFile::WRITE_BINARY); // lands on a file that is there
  EXPECT_TRUE(out.IsOpen());
  EXPECT_EQ("", FileText(dir.Path("Tex/Grass.TGA")));
}

TEST(QFileOpen, CountsOpenStreamsAndReportsANullOne)
{
  const TempDir dir;
  const int before = QOpenFileCount();
  std::FILE* stream = qfopen(dir.Write("f", "").c_str(), "rb");
  ASSERT_NE(nullptr, stream);
  EXPECT_EQ(before + 1, QOpenFileCount());
  {
    QFile other(dir.Path("f"));
    EXPECT_EQ(before + 2, QOpenFileCount());
    QFile taken("f", stream, QFile::READ_BINARY);
    EXPECT_EQ(before + 2, QOpenFileCount());
  }
  EXPECT_EQ(before, QOpenFileCount());
  ReportCapture reports;
  EXPECT_FALSE(qfclose(nullptr));
  EXPECT_TRUE(reports.Contains("qfclose(0) called"));
}
