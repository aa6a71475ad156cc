#include "app/tool/tooljson.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

TEST(ToolJson, FloatsReadBackToTheSame32Bits)
{
  const struct
  {
    float value;
    const char* text;
  } cases[] = {{0.1f, "0.1"},
               {1.0f, "1.0"},
               {16777216.0f, "1.6777216e+07"},
               {1e-45f, "1e-45"},
               {3.4028235e38f, "3.4028235e+38"},
               {0.333333343f, "0.33333334"},
               {std::numeric_limits<float>::infinity(), "\"inf\""},
               {-std::numeric_limits<float>::infinity(), "\"-inf\""},
               {std::nanf(""), "\"nan\""},
               {-std::nanf(""), "\"nan\""}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.text, ToolJson(c.value).Text());
    EXPECT_EQ(std::string("[") + c.text + "]", ToolJson::Floats({&c.value, 1}).Text());
  }
}

TEST(ToolJson, TextsThatAreNotUtf8AreLatin1)
{
  const struct
  {
    std::string text;
    const char* json;
  } cases[] = {{"plain \"\\\n\x01", "\"plain \\\"\\\\\\n\\u0001\""},
               {"\xC3\xA9", "\"\xC3\xA9\""},                                 // valid: stays
               {"\xE9", "\"\xC3\xA9\""},                                     // Latin-1
               {"\xC3\xA9\xE9", "\"\xC3\x83\xC2\xA9\xC3\xA9\""},             // as a whole
               {"\xC0\x80", "\"\xC3\x80\xC2\x80\""},                         // overlong
               {"\xE0\x80\x80", "\"\xC3\xA0\xC2\x80\xC2\x80\""},             // overlong
               {"\xED\xA0\x80", "\"\xC3\xAD\xC2\xA0\xC2\x80\""},             // a surrogate
               {"\xF4\x90\x80\x80", "\"\xC3\xB4\xC2\x90\xC2\x80\xC2\x80\""}, // above the last code
               {"\xF0\x9F\x98\x80", "\"\xF0\x9F\x98\x80\""},
               {"\xE2\x82", "\"\xC3\xA2\xC2\x82\""}}; // cut
  for (const auto& c : cases)
    EXPECT_EQ(c.json, ToolJson(c.text).Text());
}

TEST(ToolJson, MembersKeepTheirOrder)
{
  const int ints[] = {3, -4};
  ToolJson object = ToolJson::Object();
  object.Add("z", true).Add("a", 5).Add("m", ToolJson::Array().Add("x").Add(ToolJson())).Add("i", ToolJson::Ints(ints));
  object.Add("u", 4294967295u).Add("l", 4294967296l);
  EXPECT_EQ("{\"z\":true,\"a\":5,\"m\":[\"x\",null],\"i\":[3,-4],\"u\":4294967295,\"l\":4294967296}", object.Text());
}
