#include "app/demo/centreline.h"
#include "app/demo/profile.h"

#include <gtest/gtest.h>

namespace {

// A closed line by its radius at each angle, as text of a survey.
std::string Ring(int points, double radius, double waves = 0, double shrink = 1)
{
  std::string text = "# x_m,y_m,w_tr_right_m,w_tr_left_m\n";
  for (int i = 0; i < points; ++i) {
    const double a = -2 * DEMO_PI * i / points; // clockwise as a map shows it
    const double r = radius * (1 + waves * std::sin(5 * a));
    text += std::to_string(r * std::cos(a)) + ", " + std::to_string(shrink * r * std::sin(a)) + ", 6.5, 5.5\r\n";
  }
  return text;
}

DemoLine Parsed(const std::string& text)
{
  DemoLine line;
  std::string problem;
  EXPECT_TRUE(DemoParseLine(text, line, problem)) << problem;
  return line;
}

// As the editor measures a road: the mean of both edges.
double EdgeLength(const DemoCourse& course)
{
  double length = 0;
  for (int i = 0; i < course.Count(); ++i)
    for (int side = 0; side < 2; ++side)
      length += glm::length(course.At(i + 1).Edge(side) - course.At(i).Edge(side)) / 2;
  return length;
}

} // namespace

TEST(DemoCentreline, TheRoadIsAsLongAsItsCentreLine)
{
  const struct
  {
    const char* what;
    DemoLine line;
  } cases[] = {
      {"own circuit", DemoLakesideLine()},
      {"circle, points 5 m apart", Parsed(Ring(600, 480))},
      {"star of tight bends", Parsed(Ring(900, 500, 0.3))},
      {"points 40 m apart", Parsed(Ring(80, 500))},
      {"two straights side by side", Parsed(Ring(500, 450, 0, 0.08))},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const DemoCourse course = DemoMakeCourse("road", c.line);
    EXPECT_NEAR(1, EdgeLength(course) / DemoLength(c.line), 0.005);
    EXPECT_NEAR(5, course.spacing, 0.1);
  }
}

TEST(DemoCentreline, NorthIsMinusZAndTheWidthsKeepTheirSides)
{
  const DemoLine line = Parsed(Ring(100, 200));
  EXPECT_NEAR(200, line[0].x, 1e-3);
  EXPECT_GT(line[1].z, 0); // clockwise: from the east the drive goes south
  const DemoCourse course = DemoMakeCourse("road", line);
  const DemoSection& s = course.At(0);
  const DVector3 right = s.Edge(DEMO_RIGHT), left = s.Edge(DEMO_LEFT);
  EXPECT_NEAR(200 - 6.5, right.x, 0.2) << "the middle of the ring lies to the right";
  EXPECT_NEAR(200 + 5.5, left.x, 0.2);
  EXPECT_GT(s.curvature, 0);
  EXPECT_LT(right.y, left.y) << "a bend leans inward";
}

TEST(DemoCentreline, WhatIsNoCircuitIsRefusedWithItsLine)
{
  const std::string good = Ring(100, 200);
  const struct
  {
    std::string text;
    const char* problem;
  } cases[] = {
      {"", "fewer than 8 points"},
      {"# only a comment", "fewer than 8 points"},
      {"x_m,y_m,right,left\n" + good, "line 1: not four numbers"},
      {good + "1,2,3\n", "not four numbers"},
      {good + "1,2,3,4,5\n", "not four numbers"},
      {good + "1;2;3;4\n", "not four numbers"},
      {good + "nan,0,6,6\n", "not four numbers"},
      {good + "inf,0,6,6\n", "not four numbers"},
      {good + "1e300,0,6,6\n", "farther than 100 km"},
      {good + "0,0,-6,6\n", "a width outside"},
      {good + "0,0,6,600\n", "a width outside"},
      {good + std::string("0,0,6,6\0\n", 9), "not four numbers"},
      {Ring(100, 3), "the length is outside"},
      {Ring(100, 9000), "the length is outside"},
      {std::string(5000, '\n') + "5,5,6,6\n5,5,6,6\n5,5,6,6\n", "fewer than 8 points"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 60));
    DemoLine line(3);
    std::string problem;
    EXPECT_FALSE(DemoParseLine(c.text, line, problem));
    EXPECT_NE(std::string::npos, problem.find(c.problem)) << problem;
    EXPECT_EQ(3u, line.size()) << "untouched";
  }
}
