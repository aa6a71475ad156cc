#include "foundation/eval.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

TEST(Eval, Values)
{
  const struct
  {
    const char* text;
    int value;
  } cases[] = {
      // numbers
      {"12", 12},
      {" 12 ", 12},
      {"0x10", 16},
      {"0XfF", 255},
      {"010", 8},
      {"$1f", 31},
      {"#101", 5},
      {"0", 0},
      {"08", 0},
      {"#12", 1},
      {"0x", 0},
      {"4294967295", -1},
      {"2147483648", INT_MIN},
      // rank: | below & and ^ below sums below products
      {"2+3*4", 14},
      {"2*3+4", 10},
      {"10-2-3", 5},
      {"100/5/2", 10},
      {"1|2+4", 7},
      {"6&3^1", 3},
      {"1^3&2", 2},
      {"1|6&2", 3},
      {"7&1+1", 2},
      {"7%4*2", 6},
      {"4x4", 16},
      {"4 x 4", 16},
      {"2x0x10", 32},
      // parentheses
      {"(2+3)*4", 20},
      {"2*(3+(4-1))", 12},
      {"((((7))))", 7},
      {"(-2)+3", 1},
      {"2*(-3)+1", -5},
      // a unary operator takes all that follows
      {"-2+3", -5},
      {"2*-3+1", -8},
      {"~0", -1},
      {"+5-2", 3},
      {"- -3", 3},
      {"-2|1", -3},
      {"~1+1", -3},
      // no trap
      {"1/0", 0},
      {"1%0", 0},
      {"2147483647+1", INT_MIN},
      {"(-2147483647-1)/(0-1)", 2147483646},
      {"$80000000/$ffffffff", INT_MIN},
      {"$80000000%$ffffffff", 0},
      {"65536*65536", 0},
      {"-7/2", -3},
      // what isn't part of an expression ends it
      {"12abc", 12},
      {"", 0},
      {"abc", 0},
      {"?", 0},
      {"2+", 2},
      {"2*abc", 2},
      {"2+3*", 5},
      {"(3", 3},
      {"3)+4", 3},
      {"()", 0},
      {"2+()", 2},
      {"-", 0},
      {"2*-", 2},
      {"(2+)3", 2},
      {"\t5", 0},
      {"5\t+1", 5},
      {"1 2", 1},
      {"(1 2)*3", 1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.value, Eval(c.text)) << c.text;
}

TEST(Eval, LongAndDeepTextsEnd)
{
  std::string sum = "1";
  for (int i = 1; i < 1000; ++i)
    sum += "+1";
  EXPECT_EQ(1000, Eval(sum));
  const std::string open(1'000'000, '(');
  EXPECT_EQ(5, Eval(open + "5" + std::string(1'000'000, ')')));
  std::string nested;
  for (int i = 0; i < 100'000; ++i)
    nested += "1+(";
  EXPECT_EQ(41, Eval(nested + "1")) << "forty values wait for the one behind them; the expression ends there";
  Eval(std::string(1'000'000, '-'));
}

TEST(Eval, ReportsANullPointer)
{
  ReportCapture reports;
  EXPECT_EQ(0, Eval(static_cast<const char*>(nullptr)));
  EXPECT_EQ("WARN: Eval() is passed 0-pointer\n", reports.All());
}
