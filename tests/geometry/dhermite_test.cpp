#include "geometry/dhermite.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(Hermite, MeetsItsKeysAndALine)
{
  DNonUniformHermiteSpline curve(false);
  EXPECT_EQ(0, curve.GetValue(3));
  for (const float u : {0.0f, 1.0f, 3.0f, 7.0f})
    curve.AddKey(u, 10 + 2 * u);
  EXPECT_EQ(7, curve.LargestParameter());
  // Between inner keys the tangents are those of the line; at the ends half of them.
  for (const float u : {1.0f, 1.7f, 2.0f, 3.0f})
    EXPECT_FLOAT_EQ(10 + 2 * u, curve.GetValue(u));
  EXPECT_FLOAT_EQ(10, curve.GetValue(0));
  EXPECT_FLOAT_EQ(24, curve.GetValue(7));
  EXPECT_FLOAT_EQ(10, curve.GetValue(-5));
  float first = 0;
  float second = 0;
  curve.GetValue(2, &first, &second);
  EXPECT_FLOAT_EQ(4, first); // a segment of length 2 at slope 2
  EXPECT_FLOAT_EQ(0, second);
}

TEST(Hermite, TangentsLookAcrossTheSeamOfAClosedCurve)
{
  DNonUniformHermiteSpline curve(true);
  const float values[] = {0, 1, 0, -1, 0}; // key 0 and the last are one point
  for (int i = 0; i < 5; ++i)
    curve.AddKey(static_cast<float>(i), values[i]);
  float atStart = 0;
  float atEnd = 0;
  EXPECT_FLOAT_EQ(0, curve.GetValue(0, &atStart));
  curve.GetValue(3.9999f, &atEnd);
  EXPECT_FLOAT_EQ(1, atStart); // the slope from -1 to 1 over two
  EXPECT_NEAR(atStart, atEnd, 0.001f);
  curve.SetClosed(false);
  curve.GetValue(0, &atStart);
  EXPECT_FLOAT_EQ(0.5f, atStart); // half of what follows
}

TEST(Hermite, KeysInOnePlaceAndNoNumbersStayFinite)
{
  DNonUniformHermiteSpline curve(true);
  curve.AddKey(1, 5);
  EXPECT_FLOAT_EQ(5, curve.GetValue(1));
  curve.AddKey(1, 6);
  EXPECT_FLOAT_EQ(6, curve.GetValue(1));
  curve.GetValue(std::numeric_limits<float>::quiet_NaN()); // ends
}

} // namespace
