#include "foundation/qnumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

// The C library in the C locale, which a test runs in, is what the helpers stand for.
TEST(QNumber, ParsesAsTheCLibraryDoes)
{
  const char* texts[] = {"1.5",
                         " \t\n-2.25e3x",
                         "+7",
                         "+-7",
                         "-+7",
                         "--7",
                         "- 7",
                         "",
                         "abc",
                         ".5",
                         "5.",
                         "1e",
                         "1e+",
                         "1e5",
                         "0x1p4",
                         "-0X1.8",
                         "0x",
                         "1e400",
                         "-1e400",
                         "1e-400",
                         "inf",
                         "-Infinity",
                         "infix",
                         "1,5",
                         "0.1f",
                         "+inf",
                         "1e-320",
                         "4.9e-324",
                         "123456789012345678901234567890",
                         "2147483647.99999999",
                         "0x1p-1080",
                         "\v1",
                         "+ 1"};
  for (const char* text : texts) {
    EXPECT_EQ(std::atof(text), QParseDouble(text)) << text;
    EXPECT_EQ(static_cast<float>(std::atof(text)), QParseFloat(text)) << text;
  }
  EXPECT_TRUE(std::isnan(QParseDouble("nan")));
  EXPECT_TRUE(std::isnan(QParseDouble(" NAN(7)")));
  EXPECT_TRUE(std::signbit(QParseDouble("-0")));
}

// As a double and then narrowed: halfway between two floats plus less than a double can hold.
TEST(QNumber, RoundsTwiceToAFloat)
{
  EXPECT_EQ(1.0f, QParseFloat("1.00000005960464477540"));
}

TEST(QNumber, FormatsWithSixDecimals)
{
  const double values[] = {0, -0.0, 1.5, 0.1f, -123456.789, 1e-7, 5e-7, 1e300, 1.7976931348623157e308, 3.4028235e38f};
  for (const double value : values) {
    char expected[400];
    std::snprintf(expected, sizeof expected, "%f", value);
    EXPECT_EQ(expected, QFormatFloat(value));
  }
  EXPECT_EQ("inf", QFormatFloat(INFINITY));
  EXPECT_EQ("-inf", QFormatFloat(-INFINITY));
  EXPECT_EQ("nan", QFormatFloat(NAN));
}
