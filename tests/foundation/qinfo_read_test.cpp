#include "foundation/textinfo.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

using testing::ElementsAre;

namespace {

// What the file holds, as it is written back.
std::string Written(std::string_view text)
{
  return TextInfo(text).WriteToText();
}

std::vector<std::string> Reports(std::string_view text, uint32_t flags = 0)
{
  ReportCapture reports;
  const TextInfo info(text, flags);
  std::vector<std::string> texts;
  for (const auto& e : reports.Entries())
    texts.push_back(e.severity + " " + e.text);
  return texts;
}

} // namespace

TEST(QInfoRead, SplitsTheFileIntoTokens)
{
  const struct
  {
    const char* text;
    const char* written;
  } cases[] = {
      {"a=1\nb = 2 \r\nc=x;y{}~=\n", "a=1\nb= 2 \nc=x;y{}~=\n"}, // nothing of a value is trimmed or read as a token
      {"\xA0 \t a\xA0=1\n", "a=1\n"},
      {"key\t=1\n", "key\t=1\n"},        // a tab is part of a word
      {"name{\nx=1\n", "name{=\nx=1\n"}, // and so are braces
      {"a;b=1\n", "a;b=1\n"},
      {"a b c=3\n", "a=\nb=\nc=3\n"},
      {"word ; note\n;second\n", "word=\n; note\n;second\n"},
      {"t { ; in\n  x=1\n} ; out\n", "t\n{\n  ; in\n  x=1\n}\n; out\n"},
      {"t\n{\n}\n", "t\n{\n}\n"},
      {"t=text\n{\nx=1\n}\n", "t=text\n{\n  x=1\n}\n"},
      {"a\n=5\n", "a=5\n"},
      {"a=1\n=2\n", "a=2\n"},
      {"a=1\n;note\n=2\n", "a=1\n;2\n"}, // a comment is a node as well
      {"a {\n} {\nx=1\n}\n", "a\n{\n  x=1\n}\n"},
      {"", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.written, Written(c.text));
  }
}

TEST(QInfoRead, TakesTheEndOfTheFileAsTheEndOfALine)
{
  EXPECT_EQ("a=1\n", Written("a=1"));
  EXPECT_EQ("a=\n", Written("a="));
  EXPECT_EQ(";x\n", Written(";x"));
  EXPECT_EQ("", Written("word")) << "a word may have been cut";
  EXPECT_EQ("t\n{\n  x=1\n}\n", Written("t\n{\nx=1\n}"));
  EXPECT_THAT(Reports("t {\nx=1\n}"), ElementsAre());
}

TEST(QInfoRead, CutsLongTextsAndReadsTheRestAsTokens)
{
  const std::string full(1023, 'v');
  EXPECT_EQ("a=" + full + "\nb=1\n", Written("a=" + full + "\nb=1\n"));
  EXPECT_EQ("a=" + full + "\nv=\nb=1\n", Written("a=" + full + "v\nb=1\n"));
  EXPECT_EQ(full + "=\nv=1\n", Written(full + "v=1\n"));
  EXPECT_EQ(full + "=\n", Written(full)) << "the limit ended the word, not the file";
  EXPECT_EQ(";" + full + "\nx=1\n", Written(";" + full + "x=1\n"));
}

TEST(QInfoRead, ReportsWhatIsWrongAndGoesOn)
{
  const struct
  {
    const char* text;
    const char* report;
  } cases[] = {
      {"{\na=1\n", "WARN QInfo: { without groupname"},
      {"}\na=1\n", "ERR QInfo(text.ini); more '}' brackets than '{' near line 1"},
      {"\n\n}\na=1\n", "ERR QInfo(text.ini); more '}' brackets than '{' near line 3"},
      {"=\na=1\n", "WARN QInfo: assign without symbol in line 1"},
      {"~\na=1\n", "WARN QInfo: reference without symbol in line 1"},
      {"b~none\na=1\n", "WARN QInfo(text.ini): reference (~) to unknown tree 'none' in line 1"},
      {"b=1\nc~b\na=1\n", "WARN QInfo(text.ini): ref to tree 'b' without child in line 1"},
      {"x.y=5\na=1\n",
       "WARN QInfo(text.ini): key with '.' found (x.y) - won't work; use { } to define subtrees (line 1)"},
      {"a=1\nb\n{\n{\n",
       "ERR QInfo(text.ini); brackets don't match; still 2 closing bracket(s) expected at end of file."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT(Reports(c.text), ElementsAre(c.report));
    EXPECT_EQ("[1]", TextInfo(c.text).Get("a"));
  }
}

// The line end behind a value goes with the value; only that of CR LF is met again.
TEST(QInfoRead, CountsTheLinesThatItMeets)
{
  EXPECT_THAT(Reports("a=1\nb=2\n}\n"), ElementsAre(testing::HasSubstr("near line 1")));
  EXPECT_THAT(Reports("a=1\r\nb=2\r\n}\r\n"), ElementsAre(testing::HasSubstr("near line 3")));
  EXPECT_THAT(Reports("a\nb\n}\n"), ElementsAre(testing::HasSubstr("near line 3")));
}

TEST(QInfoRead, DropsWhatIsAssignedToAWordWithADot)
{
  ReportCapture reports;
  EXPECT_EQ("a=1\nb=2\n", Written("a=1\nx.y=5\nb=2\n"));
  EXPECT_EQ("t\n{\n  k=1\n}\na=1\nb=2\n", Written("t {\nk=1\n}\na=1\nx.y~t\nb=2\n"));
  EXPECT_EQ(2u, reports.Entries().size());
}

TEST(QInfoRead, KeepsNineLevelsOfTrees)
{
  std::string nine, ten;
  for (int i = 0; i < 9; ++i)
    nine += "t {\n";
  ten = nine + "u {\n";
  const std::string close = "}\n}\n}\n}\n}\n}\n}\n}\n}\n";
  EXPECT_EQ("[1]", TextInfo(nine + "k=1\n" + close).Get("t.t.t.t.t.t.t.t.t.k"));
  EXPECT_THAT(Reports(nine + "k=1\n" + close), ElementsAre());
  EXPECT_THAT(Reports(ten + "k=1\n" + close), ElementsAre("WARN QInfo: 'text.ini' nests too deep (max 10 levels)"));
}

TEST(QInfoRead, StopsAtTheFirstClosingBraceOnRequest)
{
  const char* text = "car {\nname=x\ninner {\ny=1\n}\nz=2\n}\n";
  EXPECT_THAT(Reports(text, QInfo::STOP_AT_BRACE), ElementsAre());
  const TextInfo info(text, QInfo::STOP_AT_BRACE);
  EXPECT_EQ("[1]", info.Get("car.inner.y"));
  EXPECT_EQ("-", info.Get("car.z"));
}

TEST(QInfoFile, TellsAnAbsentFileFromAnUnreadableOne)
{
  const TempDir dir;
  mkfifo(dir.Path("pipe").c_str(), 0600);
  dir.Write("folder/x", "");
  const struct
  {
    const char* name;
    uint32_t flags;
    bool unreadable;
    int reports;
  } cases[] = {
      {"absent.ini", 0, false, 1},
      {"absent.ini", QInfo::NO_OPEN_WARNING, false, 0},
      {"folder", QInfo::NO_OPEN_WARNING, true, 1},
      {"pipe", QInfo::NO_OPEN_WARNING, true, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReportCapture reports;
    const QInfo info(dir.Path(c.name), c.flags);
    EXPECT_FALSE(info.IsRead());
    EXPECT_EQ(c.unreadable, info.IsUnreadable());
    EXPECT_EQ(c.reports, reports.Count("QInfo: can't open '" + dir.Path(c.name) + "', current directory is '"));
    EXPECT_EQ(nullptr, info.Root()->FirstChild());
  }
}

TEST(QInfoFile, IsFoundWhenItsNameDiffersInCase)
{
  const TempDir dir;
  dir.Write("Data/Track.INI", "a=1\n");
  QInfo info(dir.Path("data\\track.ini"));
  EXPECT_TRUE(info.IsRead());
  EXPECT_TRUE(info.SetInt("a", 2));
  EXPECT_TRUE(info.Write());
  EXPECT_EQ("a=2\n", FileText(dir.Path("Data/Track.INI")));
}
