#include "support/tempdir.h"
#include "tool/toolrun.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using Args = std::vector<std::string>;
using testing::HasSubstr;

namespace {

constexpr const char* SAMPLE = ";comment\n"
                               "count=4*4\n"
                               "length=1.1\n"
                               "on=2-1\n"
                               "text= a b \n"
                               "bare\n"
                               "view\n{\n  width=880\n}\n"
                               "small~view\n{\n  height=1\n}\n";

class Tool : public testing::Test
{
protected:
  ToolRun Run(const Args& args) const { return RunTool(dir.Path(), args); }
  void ExpectResult(const Args& args, const std::string& out) const
  {
    SCOPED_TRACE(testing::PrintToString(args));
    const ToolRun run = Run(args);
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(out, run.out);
    EXPECT_EQ("", run.err);
  }
  // Status 1, nothing on stdout, and one line that says this.
  void ExpectFailure(const Args& args, const std::string& text) const
  {
    SCOPED_TRACE(testing::PrintToString(args));
    const ToolRun run = Run(args);
    EXPECT_EQ(1, run.status);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr(text));
    EXPECT_THAT(run.err, testing::StartsWith("pavex-tool: "));
    EXPECT_EQ(1, run.ErrLines()) << run.err;
  }
  TempDir dir;
};

} // namespace

TEST_F(Tool, Expressions)
{
  const struct
  {
    const char* text;
    const char* value;
  } cases[] = {{"4*4", "16"},
               {"-2+3", "-5"},
               {"--5", "5"},
               {"-(3)", "-3"},
               {"-x", "0"},
               {"", "0"},
               {"0x10|1", "17"},
               {"eval", "0"},
               {"-1", "-1"},
               {"12abc", "12"},
               {"2147483647+1", "-2147483648"}};
  for (const auto& c : cases)
    ExpectResult({"eval", c.text}, std::string(c.value) + "\n");
  ExpectResult({"--quiet", "eval", "--root"}, "0\n"); // no option behind the verb
}

TEST_F(Tool, Patterns)
{
  ExpectResult({"match", "A?C", "abc"}, "true\n");
  ExpectResult({"match", "*.dof", "a.ase"}, "false\n");
  ExpectResult({"match", "-*", "-x"}, "true\n");
  ExpectResult({"match", "match", "match"}, "true\n"); // a verb's name is a text as well
  ExpectResult({"match", "", ""}, "true\n");
}

TEST_F(Tool, Archives)
{
  dir.Write("a.txt", "hello");
  ExpectResult({"archive", "create", "x.ar"}, "");
  ExpectResult({"archive", "add", "x.ar", "a.txt"}, "");
  ExpectResult({"archive", "add", "x.ar", "a.txt", "../b.txt"}, "");
  ExpectResult({"archive", "remove", "x.ar", "a.txt"}, "");
  ExpectResult({"archive", "list", "x.ar"}, "[{\"name\":\"$.txt\",\"offset\":4,\"size\":0},"
                                            "{\"name\":\"../b.txt\",\"offset\":15,\"size\":5}]\n");
  ExpectResult({"archive", "extract", "x.ar", "../b.txt", "out.txt"}, "");
  EXPECT_EQ("hello", FileText(dir.Path("out.txt")));
  ExpectFailure({"archive", "extract", "x.ar", "../b.txt"}, "lies outside this directory");
  ExpectFailure({"archive", "extract", "x.ar", "a.txt"}, "there is no a.txt in x.ar");
  ExpectFailure({"archive", "add", "x.ar", "none"}, "there is no file none");
}

TEST_F(Tool, IniReadsByType)
{
  dir.Write("a.ini", SAMPLE);
  const struct
  {
    Args args;
    const char* out;
  } cases[] = {{{"get", "a.ini", "count"}, "4*4"},      {{"get", "a.ini", "text"}, " a b "},
               {{"get", "a.ini", "bare"}, "?"},         {{"get", "a.ini", "small.width"}, "880"},
               {{"get", "A.INI", "view.width"}, "880"}, {{"int", "a.ini", "count"}, "16"},
               {{"int", "a.ini", "none"}, "0"},         {{"int", "a.ini", "none", "-5"}, "-5"},
               {{"float", "a.ini", "length"}, "1.1"},   {{"float", "a.ini", "none", "16777216"}, "16777216"},
               {{"float", "a.ini", "none"}, "0"},       {{"bool", "a.ini", "on"}, "1"},
               {{"bool", "a.ini", "none", "1"}, "1"},   {{"bool", "a.ini", "none"}, "0"}};
  for (const auto& c : cases) {
    Args args = {"ini"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    ExpectResult(args, std::string(c.out) + "\n");
  }
  ExpectFailure({"ini", "get", "a.ini", "none"}, "no key 'none' in a.ini");
  ExpectFailure({"ini", "get", "a.ini", "view"}, "no key 'view' in a.ini");
}

TEST_F(Tool, IniChangesKeepTheRest)
{
  dir.Write("a.ini", SAMPLE);
  ExpectResult({"ini", "set", "a.ini", "view.width", "-640"}, "");
  ExpectResult({"ini", "set", "a.ini", "new.key", "--", "--value"}, "");
  ExpectResult({"ini", "remove", "a.ini", "count"}, "");
  ExpectFailure({"ini", "remove", "a.ini", "count"}, "no key 'count' in a.ini");
  ExpectFailure({"ini", "set", "a.ini", "view", "x"}, "can't set 'view' in a.ini");
  ExpectResult({"ini", "copy", "a.ini", "b.ini"}, "");
  const std::string expected = ";comment\nlength=1.1\non=2-1\ntext= a b \nbare=\nview\n{\n  width=-640\n}\n"
                               "small~view\n{\n  height=1\n}\nnew\n{\n  key=--value\n}\n";
  EXPECT_EQ(expected, FileText(dir.Path("a.ini")));
  EXPECT_EQ(expected, FileText(dir.Path("b.ini")));
  ExpectResult({"ini", "set", "new.ini", "a", "1"}, ""); // makes the file
  EXPECT_EQ("a=1\n", FileText(dir.Path("new.ini")));
}

TEST_F(Tool, IniDumpIsOneDocument)
{
  dir.Write("a.ini", ";note\nkey=\xE9\"\\\nutf=\xC3\xA9\nbare\nbox\n{\n  view\n  {\n    w=1\n  }\n}\nsmall~box.view\n");
  const auto node = [](const char* type, const char* name, const char* value, const char* reference,
                       const std::string& children) {
    return std::string("{\"type\":\"") + type + "\",\"name\":\"" + name + "\",\"value\":" + value +
           ",\"reference\":" + reference + ",\"children\":[" + children + "]}";
  };
  const std::string view = node("tree", "view", "null", "null", node("key", "w", "\"1\"", "null", ""));
  ExpectResult({"ini", "dump", "a.ini"}, "{\"children\":[" + node("comment", ";", "\"note\"", "null", "") + "," +
                                             node("key", "key", "\"\xC3\xA9\\\"\\\\\"", "null", "") + "," +
                                             node("key", "utf", "\"\xC3\xA9\"", "null", "") + "," +
                                             node("key", "bare", "null", "null", "") + "," +
                                             node("tree", "box", "null", "null", view) + "," +
                                             node("tree", "small", "null", "\"box.view\"", "") + "]}\n");
  dir.Write("empty.ini", "");
  ExpectResult({"ini", "dump", "empty.ini"}, "{\"children\":[]}\n");
}

TEST_F(Tool, UnreadableFilesFail)
{
  std::filesystem::create_directory(dir.Path("folder"));
  ASSERT_EQ(0, mkfifo(dir.Path("pipe").c_str(), 0600));
  for (const char* file : {"absent.ini", "folder", "pipe"})
    for (const Args& rest :
         {Args{"get", file, "a"}, Args{"int", file, "a", "1"}, Args{"float", file, "a"}, Args{"bool", file, "a"},
          Args{"remove", file, "a"}, Args{"copy", file, "out.ini"}, Args{"dump", file}}) {
      Args args = {"ini"};
      args.insert(args.end(), rest.begin(), rest.end());
      ExpectFailure(args, std::string("can't read ") + file);
    }
  EXPECT_FALSE(std::filesystem::exists(dir.Path("out.ini")));
  const ToolRun set = Run({"ini", "set", "folder", "a", "1"});
  EXPECT_EQ(1, set.status);
  EXPECT_TRUE(set.err.ends_with("pavex-tool: can't read folder\n")) << set.err;
}

TEST_F(Tool, AFailedWriteLeavesTheOldFile)
{
  const std::string sample = SAMPLE + std::string(10000, ';') + "\n";
  const std::string path = dir.Write("a.ini", sample);
  std::filesystem::create_directory(dir.Path("folder"));
  constexpr long LIMIT = 4096; // bytes that a file may have, as if the disk were full then
  const struct
  {
    Args args;
    long maxFileSize; // 0: no limit
    const char* text;
  } cases[] = {{{"ini", "set", "a.ini", "count", "1"}, LIMIT, "can't write a.ini (File too large)"},
               {{"ini", "remove", "a.ini", "count"}, LIMIT, "can't write a.ini (File too large)"},
               {{"ini", "copy", "a.ini", "b.ini"}, LIMIT, "can't write b.ini (File too large)"},
               {{"ini", "copy", "a.ini", "folder"}, 0, "can't write folder"},
               {{"ini", "copy", "a.ini", "none/b.ini"}, 0, "can't write none/b.ini (No such file or directory)"},
               {{"ini", "set", "none/b.ini", "a", "1"}, 0, "can't write none/b.ini"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.args));
    const ToolRun run = RunTool(dir.Path(), c.args, {.maxFileSize = c.maxFileSize});
    EXPECT_EQ(1, run.status);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr(std::string("pavex-tool: ") + c.text));
    EXPECT_GE(2, run.ErrLines()) << run.err; // the library's report, the tool's line
  }
  EXPECT_EQ(sample, FileText(path));
  EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(dir.Path()), {})); // no remains
}

TEST_F(Tool, WrongUsageShowsTheUsageOfTheVerb)
{
  const struct
  {
    Args args;
    const char* usage;
  } cases[] = {{{}, "Usage: pavex-tool [OPTIONS]"},
               {{"bogus"}, "Usage: pavex-tool [OPTIONS]"},
               {{"sculpture", "list", "a.ar"}, "Usage: pavex-tool [OPTIONS]"},
               {{"--bogus", "eval", "1"}, "Usage: pavex-tool"},
               {{"--root"}, "Usage: pavex-tool [OPTIONS]"},
               {{"ini"}, "Usage: pavex-tool ini [OPTIONS]"},
               {{"ini", "bogus"}, "Usage: pavex-tool ini [OPTIONS]"},
               {{"ini", "get", "a.ini"}, "Usage: pavex-tool ini get [OPTIONS] FILE PATH"},
               {{"ini", "get", "a.ini", "b", "c"}, "Usage: pavex-tool ini get [OPTIONS] FILE PATH"},
               {{"ini", "get", "--bogus", "a.ini", "b"}, "Usage: pavex-tool ini get [OPTIONS] FILE PATH"},
               {{"ini", "int", "a.ini", "b", "1", "2"}, "Usage: pavex-tool ini int [OPTIONS] FILE PATH [DEFAULT]"},
               {{"eval"}, "Usage: pavex-tool eval [OPTIONS] TEXT"},
               {{"eval", "1", "2"}, "Usage: pavex-tool eval [OPTIONS] TEXT"},
               {{"match", "a"}, "Usage: pavex-tool match [OPTIONS] PATTERN TEXT"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.args));
    const ToolRun run = Run(c.args);
    EXPECT_EQ(2, run.status);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr(c.usage));
  }
}

TEST_F(Tool, HelpAtEveryLevelAndVersion)
{
  for (const Args& args :
       {Args{"--help"}, Args{"ini", "--help"}, Args{"ini", "get", "--help"}, Args{"eval", "--help"}}) {
    SCOPED_TRACE(testing::PrintToString(args));
    const ToolRun run = Run(args);
    EXPECT_EQ(0, run.status);
    EXPECT_THAT(run.out, HasSubstr("Usage: pavex-tool"));
    EXPECT_EQ("", run.err);
  }
  ExpectResult({"--version"}, "Torvik Pavex v7.8.1 - 64 bits\n");
}

TEST_F(Tool, TypedPathsStartWhereTheUserIs)
{
  dir.Write("here/a.ini", "a=here\n");
  dir.Write("root/a.ini", "a=root\n");
  const auto run = [&](const Args& args) { return RunTool(dir.Path("here"), args); };
  EXPECT_EQ("here\n", run({"--root", "../root", "ini", "get", "a.ini", "a"}).out);
  EXPECT_EQ("here\n", run({"--root=" + dir.Path("root"), "ini", "get", "a.ini", "a"}).out);
  EXPECT_EQ("root\n", run({"ini", "get", dir.Path("root/a.ini"), "a"}).out);
  EXPECT_EQ(0, run({"--root", "../root", "ini", "copy", "a.ini", "b.ini"}).status);
  EXPECT_EQ("a=here\n", FileText(dir.Path("here/b.ini")));
  const ToolRun none = run({"--root", "../none", "eval", "1"});
  EXPECT_EQ(1, none.status);
  EXPECT_THAT(none.err, HasSubstr("pavex-tool: can't enter the data root ../none"));
}

TEST_F(Tool, ReportsGoToStderrAndTheResultAlone)
{
  dir.Write("a.ini", "}\nn=0x10\n");
  const ToolRun run = Run({"--quiet", "ini", "int", "a.ini", "n"});
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("16\n", run.out);
  EXPECT_THAT(run.err, HasSubstr("more '}' brackets than '{'")); // a warning or worse, whatever --quiet says
  EXPECT_THAT(run.err, HasSubstr("character 'x' is not allowed"));
  const ToolRun full = RunTool(dir.Path(), {"eval", "1"}, {.out = "/dev/full"});
  EXPECT_EQ(1, full.status);
  EXPECT_EQ("pavex-tool: can't write the result\n", full.err);
}

TEST_F(Tool, Images)
{
  // 2 x 1: a red pixel, and a half transparent blue one.
  const std::string tga("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\1\0\x20\x08\0\0\xff\xff\xff\0\0\x80", 26);
  dir.Write("a.tga", tga);
  ExpectResult({"image", "info", "a.tga"}, R"({"width":2,"height":1,"depth":32,"transparency":true})"
                                           "\n");
  ExpectResult({"image", "raw", "a.tga", "a.raw"}, "");
  EXPECT_EQ(std::string("\xff\0\0\xff\0\0\xff\x80", 8), FileText(dir.Path("a.raw")));
  ExpectResult({"image", "convert", "a.tga", "b.rgb"}, "");
  EXPECT_EQ("b.rgb", std::string(FileText(dir.Path("b.rgb")).c_str() + 24)); // its name as typed
  ExpectResult({"image", "convert", "b.rgb", "c.tga"}, "");
  EXPECT_EQ(tga, FileText(dir.Path("c.tga")));
  ExpectResult({"image", "convert", "a.tga", "grey.TGA", "--grey"}, "");
  EXPECT_EQ(20u, FileText(dir.Path("grey.TGA")).size());
  ExpectResult({"image", "convert", "a.tga", "d.jpg", "--quality", "100"}, "");
  ExpectResult({"image", "info", "d.jpg"}, R"({"width":2,"height":1,"depth":32,"transparency":false})"
                                           "\n");
  dir.Write("e.png", "x");
  dir.Write("bad.tga", tga.substr(0, 25));
  dir.Write("deep.bmp", std::string("BM", 2) + std::string(60, '\1'));
  ExpectFailure({"image", "info", "e.png"}, "no reader for e.png");
  ExpectFailure({"image", "info", "none.tga"}, "can't read none.tga");
  ExpectFailure({"image", "info", "deep.bmp"}, "no bitmap of 8 or 24 bits");
  ExpectFailure({"image", "convert", "a.tga", "f.png"}, "no writer for f.png");
  ExpectFailure({"image", "convert", "a.tga", "f.jpg", "--quality", "101"}, "0 to 100");
  const ToolRun bad = Run({"image", "raw", "bad.tga", "bad.raw"});
  EXPECT_EQ(1, bad.status);
  EXPECT_FALSE(std::filesystem::exists(dir.Path("bad.raw")));
}

TEST_F(Tool, Shaders)
{
  dir.Write("a.shd", "base\n{\n}\nshader_Road~base\n{\n  sort_offset=2\n  layer0\n  {\n    map=none.tga\n"
                     "    alphafunc=gequal 51\n    blendfunc=blend\n  }\n}\nshader_bare\n{\n}\n");
  const ToolRun run = Run({"shader", "dump", "a.shd"});
  EXPECT_EQ(0, run.status);
  EXPECT_THAT(run.out, testing::StartsWith(
                           R"([{"name":"Road","shaderFlags":2147483913,"sortKey":502,"layers":[{"map":"none.tga",)"
                           R"("flags":720989,"blendSrc":770,"blendDst":771,"depthFunc":515,"alphaFunc":518,)"
                           R"("alphaRef":0.2,"diffuse":[1.0,1.0,1.0,1.0],)"));
  EXPECT_THAT(run.out, HasSubstr(R"({"name":"bare",)"));
  ExpectFailure({"shader", "dump", "none.shd"}, "can't read none.shd");
}
