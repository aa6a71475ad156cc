#include "foundation/qinfoiterator.h"
#include "foundation/textinfo.h"
#include "support/reportcapture.h"

#include <gmock/gmock.h>

#include <locale.h>

using testing::ElementsAre;

TEST(QInfoLookup, FindsByDottedPath)
{
  const TextInfo info("a=1\nt=tree\n{\n  k= x \n  u\n  {\n    k=deep\n  }\n  bare\n}\nempty=\n");
  const struct
  {
    const char* path;
    const char* value; // in brackets when found
  } cases[] = {
      {"a", "[1]"},           {"t", "[tree]"},    {"t.k", "[ x ]"},  {"t.u.k", "[deep]"},
      {"t..u...k", "[deep]"}, {".t.k.", "[ x ]"}, {"t.bare", "[?]"}, {"empty", "[]"},
      {"t.u", "-"},           {"T.k", "-"},       {"a.b", "-"},      {"t.k.x", "-"},
      {"none", "-"},          {"", "-"},          {".", "-"},        {"t.u.k.x.y.z", "-"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.value, info.Get(c.path)) << c.path;
}

TEST(QInfoLookup, TheFirstOfEqualPathsWins)
{
  const struct
  {
    const char* text;
    const char* path;
    const char* value;
  } cases[] = {
      {"a=1\na=2\n", "a", "[1]"},
      {"t {\nx=1\n}\nt {\nx=2\ny=3\n}\n", "t.x", "[1]"},
      {"t {\nx=1\n}\nt {\nx=2\ny=3\n}\n", "t.y", "[3]"},   // a key with a value is found in the second tree too
      {"t {\nx=1\n}\nt {\nbare\nz=1\n}\n", "t.bare", "-"}, // one without a value isn't
      {"a\na=2\n", "a", "[2]"},
      {"t\nt {\nx=1\n}\n", "t.x", "[1]"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.value, TextInfo(c.text).Get(c.path)) << c.text;
}

TEST(QInfoLookup, ManyKeysInOneTreeAreAllFound)
{
  std::string text = "t {\n";
  for (int i = 0; i < 5000; ++i)
    text += "key" + std::to_string(i) + (i % 2 ? "=" + std::to_string(i) + "\n" : "\n");
  TextInfo info(text + "}\n");
  for (int i = 0; i < 5000; ++i) {
    const std::string path = "t.key" + std::to_string(i);
    ASSERT_EQ(i % 2 ? "[" + std::to_string(i) + "]" : "[?]", info.Get(path));
    ASSERT_TRUE(info.SetInt("t.new" + std::to_string(i), i));
  }
  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(i, info.GetInt("t.new" + std::to_string(i), -1));
  EXPECT_EQ(10000, info.CountChildren("t"));
  EXPECT_EQ("-", info.Get("t.key5000"));
}

TEST(QInfoLookup, AFallbackAnswersForWhatIsMissing)
{
  TextInfo info("a=1\n", QInfo::WARN_FALLBACK | QInfo::REQUIRED);
  info.SetFallback(std::make_unique<TextInfo>("a=2\nb=3\nt {\nx=1\n}\n"));
  ReportCapture reports;
  EXPECT_EQ("[1]", info.Get("a"));
  EXPECT_TRUE(reports.Entries().empty());
  EXPECT_EQ("[3]", info.Get("b"));
  EXPECT_EQ("LOG: QInfo: 'b' only found in fallback file.\n", reports.All());
  reports.Clear();
  EXPECT_EQ("-", info.Get("c"));
  EXPECT_EQ("WARN: QInfo: 'c' not found in info or fallback - required\n", reports.All());
  EXPECT_TRUE(info.PathExists("t.x"));
  EXPECT_EQ(0, info.CountChildren("t"));
}

TEST(QInfoLookup, GetsNumbers)
{
  const TextInfo info("i= 12+4\nx=4*4\nhex=0x10\nword=abc\nbare\nf= 1.5\nff=1.5,2.5 , -3e2\nii=1 2*3,x\nno=0\nyes= 1\n"
                      "rect=1 2 300 4\n");
  ReportCapture reports;
  EXPECT_EQ(16, info.GetInt("i"));
  EXPECT_EQ(16, info.GetInt("x"));
  EXPECT_EQ(7, info.GetInt("none", 7));
  EXPECT_FLOAT_EQ(1.5f, info.GetFloat("f"));
  EXPECT_FLOAT_EQ(2.0f, info.GetFloat("none", 2));
  EXPECT_FALSE(info.GetBool("no", true));
  EXPECT_TRUE(info.GetBool("yes", false));
  EXPECT_TRUE(info.GetBool("none", true));
  EXPECT_EQ(0, reports.Problems()) << reports.All();

  EXPECT_EQ(16, info.GetInt("hex"));
  EXPECT_EQ(0, info.GetInt("word"));
  EXPECT_EQ(0, info.GetInt("bare"));
  EXPECT_FLOAT_EQ(0, info.GetFloat("word", 3));
  EXPECT_EQ(4, reports.Problems()) << reports.All();
  EXPECT_TRUE(reports.Contains("hex value '0x10' (in text.ini) is not a valid integer: "));
  EXPECT_TRUE(reports.Contains("word value 'abc' (in text.ini) is not a valid float: "));

  int ints[4];
  EXPECT_TRUE(info.GetInts("ii", 4, ints, 9));
  EXPECT_THAT(ints, ElementsAre(1, 6, 0, 9));
  EXPECT_FALSE(info.GetInts("none", 4, ints, 5));
  EXPECT_THAT(ints, ElementsAre(5, 5, 5, 5));
  QRect rect;
  EXPECT_TRUE(info.GetInts("rect", rect));
  EXPECT_EQ((QRect{1, 2, 300, 4}), rect);
  float floats[4];
  const float defaults[4] = {9, 9, 9, 9};
  EXPECT_TRUE(info.GetFloats("ff", 4, floats, defaults));
  EXPECT_THAT(floats, ElementsAre(1.5f, 2.5f, -300.0f, 9.0f));
  EXPECT_TRUE(info.GetFloats("none", 4, floats));
  EXPECT_THAT(floats, ElementsAre(0.0f, 0.0f, 0.0f, 0.0f));
}

TEST(QInfoLookup, NumbersDontDependOnTheLocale)
{
  // A locale with a comma may not be installed; then this shows nothing.
  const locale_t comma = newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
  const locale_t before = comma ? uselocale(comma) : nullptr;
  TextInfo info("f=1.5\n");
  EXPECT_FLOAT_EQ(1.5f, info.GetFloat("f"));
  EXPECT_TRUE(info.SetFloat("g", 0.25f));
  EXPECT_EQ("[0.250000]", info.Get("g"));
  if (comma) {
    uselocale(before);
    freelocale(comma);
  }
}

TEST(QInfoLookup, AHostMadeFromTheLocalAddressIsThisMachine)
{
  const TextInfo info("a=10.0.0.1\nb=+5\nc=/24+1\nd=/24\n");
  const struct
  {
    const char* path;
    const char* host;
    int reports;
  } cases[] = {
      {"a", "10.0.0.1", 0}, {"b", "127.0.0.1", 0}, {"c", "127.0.0.1", 0}, {"d", "127.0.0.1", 1}, {"none", "host", 0}};
  for (const auto& c : cases) {
    ReportCapture reports;
    qstring host;
    EXPECT_EQ(std::string_view(c.path) != "none", info.GetHost(c.path, host, "host"));
    EXPECT_EQ(host, c.host);
    EXPECT_EQ(c.reports, reports.Count("QInfo:GetHost(); bad format of host IP (/24) for key 'd'"));
  }
}

TEST(QInfoReference, ALookupGoesOnInTheReferencedTree)
{
  const TextInfo info("base {\na=1\nb=2\nsub {\ns=3\n}\n}\n"
                      "mid~base\n{\nb=20\n}\n"
                      "top~mid\n{\nc=30\n}\n"
                      "plain~base.sub\n");
  const struct
  {
    const char* path;
    const char* value;
  } cases[] = {{"mid.a", "[1]"},     {"mid.b", "[20]"}, {"mid.sub.s", "[3]"}, {"top.a", "[1]"}, {"top.b", "[20]"},
               {"top.sub.s", "[3]"}, {"top.c", "[30]"}, {"plain.s", "[3]"},   {"top.d", "-"},   {"base.c", "-"}};
  for (const auto& c : cases)
    EXPECT_EQ(c.value, info.Get(c.path)) << c.path;
}

TEST(QInfoReference, SettingAnInheritedKeyLeavesTheReferencedTree)
{
  TextInfo info("base {\na=1\n}\nmid~base\n");
  EXPECT_TRUE(info.SetString("mid.a", "2"));
  EXPECT_EQ("[2]", info.Get("mid.a"));
  EXPECT_EQ("[1]", info.Get("base.a"));
  EXPECT_EQ("base\n{\n  a=1\n}\nmid~base\n{\n  a=2\n}\n", info.WriteToText());
}

TEST(QInfoSet, MakesWhatIsMissingAndRefusesWhatIsInTheWay)
{
  const struct
  {
    const char* path;
    bool done;
    const char* written;
  } cases[] = {
      {"k", true, "k=new\nt\n{\n  x=2\n}\n"},
      {"t.x", true, "k=1\nt\n{\n  x=new\n}\n"},
      {"t.y", true, "k=1\nt\n{\n  x=2\n  y=new\n}\n"},
      {"u.v..w.", true, "k=1\nt\n{\n  x=2\n}\nu\n{\n  v\n  {\n    w=new\n  }\n}\n"},
      {"k.x", false, "k=1\nt\n{\n  x=2\n}\n"},
      {"t.x.y.z", false, "k=1\nt\n{\n  x=2\n}\n"},
      {"t", false, "k=1\nt\n{\n  x=2\n}\n"},
      {"", false, "k=1\nt\n{\n  x=2\n}\n"},
      {"..", false, "k=1\nt\n{\n  x=2\n}\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    TextInfo info("k=1\nt\n{\nx=2\n}\n");
    EXPECT_EQ(c.done, info.SetString(c.path, "new"));
    EXPECT_EQ(c.done, info.IsModified());
    EXPECT_EQ(c.written, info.WriteToText());
    EXPECT_EQ(c.done ? "[new]" : "-", c.done ? info.Get(c.path) : "-");
  }
}

TEST(QInfoSet, OnlyADifferentTextIsAChange)
{
  TextInfo info("a=1\nbare\n");
  EXPECT_TRUE(info.SetString("a", "1"));
  EXPECT_FALSE(info.IsModified());
  EXPECT_TRUE(info.SetString("bare", ""));
  EXPECT_TRUE(info.IsModified()) << "a key without a value isn't an empty one";
  EXPECT_EQ("[]", info.Get("bare"));
}

TEST(QInfoSet, StoresNumbersAsText)
{
  TextInfo info("");
  const float floats[] = {1.5f, -2, 1e-7f};
  EXPECT_TRUE(info.SetInt("i", -5));
  EXPECT_TRUE(info.SetFloat("f", 0.1f));
  EXPECT_TRUE(info.SetFloats("ff", floats, 3));
  EXPECT_TRUE(info.SetString("lines", "a\r\nb=1"));
  EXPECT_EQ("i=-5\nf=0.100000\nff=1.500000 -2.000000 0.000000\nlines=a  b=1\n", info.WriteToText());
}

TEST(QInfoRemove, ReadsAsAbsentAndIsNotWritten)
{
  TextInfo info("a=1\na=2\nt {\nx=1\n}\nbase {\nk=1\n}\n");
  EXPECT_TRUE(info.RemoveKey("a"));
  EXPECT_TRUE(info.IsModified());
  EXPECT_EQ("-", info.Get("a"));
  EXPECT_TRUE(info.PathExists("a"));
  EXPECT_TRUE(info.RemoveKey("t"));
  EXPECT_TRUE(info.SetString("a", "3"));
  EXPECT_EQ("-", info.Get("a")) << "a removed key stays removed";
  EXPECT_FALSE(info.RemoveKey("none"));
  EXPECT_FALSE(info.RemoveKey("")) << "the tree itself";
  EXPECT_EQ("a=2\nbase\n{\n  k=1\n}\n", info.WriteToText());
}

namespace {

std::vector<std::string> Walked(const QInfo& info, std::string_view path, bool recurse)
{
  std::vector<std::string> all;
  QInfoIterator it(info, path);
  qstring full, name;
  while (it.GetNext(full, recurse, &name))
    all.push_back(full.Str() + " " + name.Str());
  return all;
}

} // namespace

TEST(QInfoIterator, WalksDepthFirstWithoutComments)
{
  const TextInfo info(";c\na=1\nt {\n;c\nx=1\nu {\ny=1\n}\n}\nb=1\nr~t\n;c\n");
  EXPECT_THAT(Walked(info, "", true), ElementsAre("a a", "t t", "t.x x", "t.u u", "t.u.y y", "b b", "r r"));
  EXPECT_THAT(Walked(info, "", false), ElementsAre("a a", "t t", "b b", "r r"));
  EXPECT_THAT(Walked(info, "t", true), ElementsAre("t.x x", "t.u u", "t.u.y y"));
  EXPECT_THAT(Walked(info, "t.x", false), ElementsAre("t.x x", "t.u u"));
  EXPECT_THAT(Walked(info, "none", true), ElementsAre());
  EXPECT_THAT(Walked(info, "r", true), ElementsAre());
  QInfoIterator it(info);
  qstring path;
  EXPECT_TRUE(it.GetNextAny(path, true));
  EXPECT_EQ(path, ";");
}

TEST(QInfoIterator, StaysOnItsLevelBelowTheDeepest)
{
  ReportCapture reports;
  std::string text;
  for (int i = 0; i < 12; ++i)
    text += "t {\n";
  const TextInfo info(text + "k=1\n");
  reports.Clear();
  EXPECT_EQ(13u, Walked(info, "", true).size());
  EXPECT_EQ("ERR: nestLevel>10 (QInfo::MAX_LEVEL) in QInfoIterator\n"
            "ERR: nestLevel>10 (QInfo::MAX_LEVEL) in QInfoIterator\n",
            reports.All());
}

TEST(QInfoPrint, ListsTheKeysThatNobodyRead)
{
  const TextInfo info("a=1\nt {\nx=2\n}\nb=3\n");
  info.GetInt("a");
  ReportCapture reports;
  info.DbgPrint("check", true);
  EXPECT_EQ("LOG: QInfo(text.ini) [check] - UNUSED KEYS ONLY\nLOG: - t.x (=2)\nLOG: - b (=3)\n", reports.All());
  reports.Clear();
  info.DbgPrint("all");
  EXPECT_EQ("LOG: QInfo(text.ini) [all]\nDBG: a=1\nDBG: t=\nDBG: {\nDBG:   x=2\nDBG: }\nDBG: b=3\n", reports.All());
}
