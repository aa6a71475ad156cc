#include "foundation/qstring.h"

#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <clocale>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// A change that an operation makes to a text, and what it answers (1 for those without an answer).
struct ChangeCase
{
  const char* before;
  const char* after;
  bool answer = true;
};

template <typename Change>
void ExpectChanges(const std::vector<ChangeCase>& cases, Change change)
{
  for (const ChangeCase& c : cases) {
    SCOPED_TRACE(c.before);
    qstring s(c.before);
    EXPECT_EQ(c.answer, change(s));
    EXPECT_STREQ(c.after, s.c_str());
  }
}

qstring Wide()
{
  return qstring(u"wide");
}

} // namespace

TEST(QStringCut, FileAndPathAtEitherSeparator)
{
  ExpectChanges(
      {{"a/b/c", "a/b"}, {"a\\b", "a"}, {"a/b\\c", "a/b"}, {"dir/", "dir"}, {"/x", ""}, {"bare", "bare", false}},
      [](qstring& s) { return s.CutFile(); });
  ExpectChanges({{"a/b/c", "c"}, {"a/b\\c", "c"}, {"dir/", ""}, {"bare", "bare", false}},
                [](qstring& s) { return s.CutPath(); });
  ExpectChanges({{"a/b/c", "b/c"}, {"a\\b", "b"}, {"/x", "x"}, {"bare", "bare"}},
                [](qstring& s) { return s.CutFirstDirectory(), true; });
}

TEST(QStringCut, ExtensionAtTheLastDotWhereverItStands)
{
  ExpectChanges({{"a.tar.gz", "a.tar"}, {"a.b/c", "a"}, {"a.", "a"}, {"none", "none", false}},
                [](qstring& s) { return s.CutExtension(); });
  ExpectChanges({{"a.tar.gz", "gz"}, {"a.b/c", "b/c"}, {"a.", ""}, {"none", "none"}},
                [](qstring& s) { return s.LeavePostfix(), true; });
}

TEST(QStringCut, EndsOfTheText)
{
  ExpectChanges({{"  \ta ", "\ta "}, {"   ", ""}, {"", ""}}, [](qstring& s) { return s.CutLeadingSpaces(), true; });
  ExpectChanges({{" a\t  ", " a\t"}, {"   ", ""}}, [](qstring& s) { return s.CutTrailingSpaces(), true; });
  ExpectChanges({{"a\r\n\n\r", "a"}, {"a\nb", "a\nb"}, {"\n", ""}}, [](qstring& s) { return s.CutTrailingLF(), true; });
  ExpectChanges({{"ab", "a"}, {"", ""}}, [](qstring& s) { return s.Chop(), true; });
  ExpectChanges({{"road_12", "road"},
                 {"a_1_2", "a_1"},
                 {"a_b", "a_b", false},
                 {"road_", "road_", false},
                 {"road12", "road12", false},
                 {"_12", "_12", false},
                 {"12", "12", false},
                 {"", "", false}},
                [](qstring& s) { return s.CutUnderscoredNumber(); });
}

TEST(QStringChange, LettersAndCharacters)
{
  ExpectChanges({{"LAKE side fROM", "Lake Side From"}, {" two  BLANKS", " Two  Blanks"}, {"a-b\tc", "A-b\tc"}},
                [](qstring& s) { return s.Capitalize(), true; });
  ExpectChanges({{"lake SIDE", "Lake SIDE"}, {"", ""}}, [](qstring& s) { return s.Capitalize(true), true; });
  ExpectChanges({{"a\\b\\c", "a/b/c"}}, [](qstring& s) { return s.ReplaceAll('\\', '/'), true; });
  ExpectChanges({{"Ab\xC4", "ab\xC4"}}, [](qstring& s) { return s.ToLower(), true; });
}

TEST(QStringChange, MakesIdentifiers)
{
  const std::string longText(300, 'a');
  const std::string longId(255, 'A');
  ExpectChanges({{"Lake Side-2", "LAKE_SIDE2"},
                 {"\xC5"
                  "ngstr\xF6m \xE9t\xE9",
                  "ANGSTROM_ETE"},
                 {"\xF1\xE7\xFF\xDD", "NCYY"},
                 {"\xD7\xF7.,/", "_"},
                 {"", "_"},
                 {longText.c_str(), longId.c_str()}},
                [](qstring& s) { return s.MakeID(), true; });
}

TEST(QStringChange, EnvironmentVariables)
{
  setenv("PAVEX_TEST_DIR", "/tracks", 1);
  unsetenv("PAVEX_TEST_NONE");
  ExpectChanges({{"%PAVEX_TEST_DIR%/lakeside", "/tracks/lakeside"},
                 {"a%PAVEX_TEST_NONE%b%PAVEX_TEST_DIR%", "ab/tracks"},
                 {"100%", "100%"},
                 {"%%", ""}},
                [](qstring& s) { return s.ConvertEnv(), true; });
}

TEST(QStringLook, Searches)
{
  const qstring s("Lake Side");
  EXPECT_EQ(2, s.Find('k'));
  EXPECT_EQ(-1, s.Find('K'));
  EXPECT_EQ(5, s.Find("Side"));
  EXPECT_EQ(-1, s.Find("side"));
  EXPECT_EQ(8, s.FindLast('e'));
  EXPECT_EQ(2, s.Count('e'));
  EXPECT_TRUE(s.Contains("ke S"));
  EXPECT_TRUE(s.ContainsUppercase());
  EXPECT_FALSE(qstring("lake\xC4").ContainsUppercase());
  EXPECT_TRUE(s.BeginsWith("Lake") && s.BeginsWith("") && s.EndsWith("Side") && s.EndsWith(""));
  EXPECT_FALSE(s.BeginsWith(nullptr) || s.EndsWith(nullptr) || s.Contains(nullptr) || s.BeginsWith("lake"));
  EXPECT_EQ('e', s.GetLastChar());
  EXPECT_EQ(0, qstring().GetLastChar());
}

TEST(QStringLook, SubstringIsInclusiveAndClamped)
{
  const struct
  {
    int first;
    int last;
    const char* part;
  } cases[] = {{0, 0, "a"}, {1, 3, "bcd"}, {3, -1, "de"}, {-5, 1, "ab"}, {2, 99, "cde"}, {4, 2, ""}, {9, 12, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.first);
    EXPECT_EQ(c.part, qstring("abcde").GetSubstring(c.first, c.last));
  }
  EXPECT_EQ("", qstring().GetSubstring(0, -1));
}

TEST(QStringLook, LinesAreTakenOneByOne)
{
  qstring text("one\r\n\nthree");
  qstring line;
  std::vector<std::string> lines;
  while (text.GetLine(line))
    lines.push_back(line.Str());
  EXPECT_THAT(lines, testing::ElementsAre("one", "", "three"));
  EXPECT_TRUE(text.IsEmpty());
}

TEST(QStringLook, IndexOutOfRangeIsReportedAndGivesTheTerminator)
{
  ReportCapture reports;
  qstring s("abc");
  const qstring& fixed = s;
  s[1] = 'x';
  s[3] = '!'; // the terminator: dropped
  EXPECT_STREQ("axc", s.c_str());
  EXPECT_EQ(0, fixed[3]);
  EXPECT_EQ(0, reports.Problems());
  EXPECT_EQ(0, s[4]);
  EXPECT_EQ(0, fixed[-1]);
  EXPECT_TRUE(reports.Contains("qstring(axc): ([]) index 4 out of range (0..3)"));
  EXPECT_TRUE(reports.Contains("qstring(axc): (const[]) index -1 out of range (0..3)"));
}

TEST(QStringLook, ComparesExactlyButOrdersWithoutCase)
{
  EXPECT_FALSE(qstring("Abc") == "abc");
  EXPECT_TRUE(qstring() == "");
  EXPECT_TRUE(qstring("abc") < qstring("ABD") && qstring("ABD") > qstring("abc"));
  EXPECT_TRUE(qstring("ABC") <= qstring("abc") && qstring("ABC") >= qstring("abc"));
  EXPECT_FALSE(qstring("ABC") < qstring("abc"));
  EXPECT_TRUE(qstring("z") < qstring("\xE9")); // bytes count as unsigned
}

TEST(QStringNumbers, AppendedAsPrintfWouldWhateverTheLocale)
{
  const char* comma = setlocale(LC_NUMERIC, "de_DE.UTF-8");
  qstring s("n");
  s += 5;
  s += 1.5f;
  s += -0.125;
  s += ' ';
  s += static_cast<const char*>(nullptr);
  s += static_cast<const void*>(reinterpret_cast<const void*>(uintptr_t{0x1f}));
  if (comma)
    setlocale(LC_NUMERIC, "C");
  EXPECT_STREQ("n51.500000-0.125000 0x1f", s.c_str());
  s = -12;
  EXPECT_STREQ("-12", s.c_str());
  s = s.c_str(); // its own text
  EXPECT_STREQ("-12", s.c_str());
}

TEST(QStringNumbers, Kinds)
{
  const struct
  {
    const char* text;
    bool number;
    bool isFloat;
    bool fileName;
  } cases[] = {{"12", true, true, true},      {"", false, false, true},      {"-5", false, true, false},
               {"-", false, false, false},    {"-.5", false, false, false},  {".5", false, false, true},
               {"5.", false, true, true},     {"1.2.3", false, false, true}, {"1e5", false, false, true},
               {"a_b.9", false, false, true}, {"a b", false, false, false},  {"--5", false, false, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const qstring s(c.text);
    EXPECT_EQ(c.number, s.IsNumber());
    EXPECT_EQ(c.isFloat, s.IsFloat());
    EXPECT_EQ(c.fileName, s.IsFileName());
  }
}

TEST(QStringNumbers, ValidationNamesTheBadCharacter)
{
  const struct
  {
    const char* text;
    const char* intReason; // null: valid
    const char* floatReason;
  } cases[] = {{"", nullptr, nullptr},
               {" 4*4+1-2%3", nullptr, "character '*' is not allowed"},
               {"1.5", "a '.' is not allowed (floating point)", nullptr},
               {"0x10", "character 'x' is not allowed", "character 'x' is not allowed"},
               {"1,5", "character ',' is not allowed", "use '.' instead of ','"},
               {"-1e+5", "character 'e' is not allowed", nullptr}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    qstring reason;
    EXPECT_EQ(!c.intReason, qstring(c.text).ValidateInt(reason));
    EXPECT_EQ(c.intReason ? c.intReason : "", reason);
    reason.Empty();
    EXPECT_EQ(!c.floatReason, qstring(c.text).ValidateFloat(reason));
    EXPECT_EQ(c.floatReason ? c.floatReason : "", reason);
  }
}

TEST(QStringNumbers, ThousandsAndQuotes)
{
  const struct
  {
    int value;
    const char* text;
  } cases[] = {{0, "0"},          {999, "999"},  {1000, "1,000"}, {1002003, "1,002,003"}, {2147483647, "2,147,483,647"},
               {-1234, "-1,234"}, {-999, "-999"}};
  for (const auto& c : cases)
    EXPECT_EQ(c.text, QThousands(c.value));
  EXPECT_EQ("it\\'s a\\\\b", QEscapeQuoted("it's a\\b"));
}

TEST(QStringFile, RoundTripAndAbsence)
{
  const TempDir dir;
  ReportCapture reports;
  qstring s(std::string("a\0b\r\n", 5));
  ASSERT_TRUE(s.ToFile(dir.Path("t").c_str()));
  EXPECT_EQ(5u, FileText(dir.Path("t")).size());
  qstring back("old");
  EXPECT_TRUE(back.FromFile(dir.Path("t").c_str()));
  EXPECT_TRUE(back == s);
  dir.Write("empty", "");
  EXPECT_FALSE(back.FromFile(dir.Path("empty").c_str()));
  EXPECT_TRUE(back.IsEmpty());
  EXPECT_EQ(0, reports.Problems());

  back = "old";
  EXPECT_FALSE(back.FromFile(dir.Path("absent").c_str()));
  EXPECT_TRUE(back.IsEmpty());
  EXPECT_TRUE(reports.Contains("qstring:FromFile(" + dir.Path("absent") + "); file not found"));
  EXPECT_FALSE(s.ToFile(dir.Path("no/dir").c_str()));
  EXPECT_TRUE(reports.Contains("qstring:ToFile(" + dir.Path("no/dir") + "); can't open file for writing"));
}

TEST(QStringWide, ReadsAsOneTextAndRefusesNarrowOperations)
{
  qstring s = Wide();
  EXPECT_STREQ("<unicodestr-nyi>", s.c_str());
  EXPECT_EQ(4, s.Length());
  EXPECT_TRUE(s == u"wide");
  EXPECT_FALSE(s == u"other");

  const struct
  {
    const char* report;
    const char* severity;
    bool (*neutral)(qstring& s);
  } cases[] = {
      {"qstring:Find() nyi for unicode", "ERR", [](qstring& w) { return w.Find('w') == -1; }},
      {"qstring:Count(c) NYI for UC", "WARN", [](qstring& w) { return w.Count('w') == 0; }},
      {"qstring:ReplaceAll(from,to) NYI for Unicode", "WARN", [](qstring& w) { return w.ReplaceAll('w', 'x'), true; }},
      {"qstring:BeginsWith() use unicode version of BeginsWith().", "ERR",
       [](qstring& w) { return !w.BeginsWith("w"); }},
      {"qstring:EndsWith() NYI for Unicode", "ERR", [](qstring& w) { return !w.EndsWith("e"); }},
      {"qstring:operator+=() NYI for Unicode", "ERR", [](qstring& w) { return w += "x", true; }},
      {"qstring:ToFile() NYI for Unicode", "ERR", [](qstring& w) { return !w.ToFile("/tmp/never"); }},
      {"qstring:CutFile() NYI for Unicode", "WARN", [](qstring& w) { return !w.CutFile(); }},
      {"qstring:IsNumber() NYI for Unicode", "WARN", [](qstring& w) { return !w.IsNumber(); }},
      {"qstring:ToUpper() NYI for Unicode", "WARN", [](qstring& w) { return w.ToUpper(), true; }},
      {"qstring::ASCII2UC(); string is already unicode", "WARN", [](qstring& w) { return w.ASCII2UC(), true; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.report);
    ReportCapture reports;
    EXPECT_TRUE(c.neutral(s));
    EXPECT_TRUE(s == u"wide");
    ASSERT_EQ(1u, reports.Entries().size());
    EXPECT_EQ(c.report, reports.Entries()[0].text);
    EXPECT_EQ(c.severity, reports.Entries()[0].severity);
  }
}

TEST(QStringWide, ConvertsBothWays)
{
  qstring s("\xE9t");
  s.ASCII2UC();
  EXPECT_TRUE(s == u"\u00E9t");
  s = "narrow again";
  EXPECT_FALSE(s.IsUnicode());
  EXPECT_STREQ("narrow again", s.c_str());
}
