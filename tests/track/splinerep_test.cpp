#include "foundation/qinfo.h"
#include "geometry/dhermite.h"
#include "support/reportcapture.h"
#include "track/rsplinerep.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

// keys of the section "lines", then an edge point's x for each line: the road runs along z, 10 m a line, 2 m wide.
std::string RoadText(const std::string& head, const std::vector<float>& left)
{
  std::string text = "lines\n{\n" + head + "}\n";
  for (size_t i = 0; i < left.size(); ++i) {
    const std::string z = " 0 " + std::to_string(10 * i) + "\n";
    text += "line" + std::to_string(i) + "\n{\n  cp0=" + std::to_string(left[i]) + z +
            "  cp1=" + std::to_string(left[i] + 2) + z + "}\n";
  }
  return text;
}

void LoadText(RSplineRep& rep, const std::string& text)
{
  QInfo info("spline.ini", QInfo::NO_READ);
  info.ReadFromText(text);
  rep.Load(info);
}

void AddStraight(RSplineRep& rep, int count)
{
  rep.Reserve(count);
  for (int i = 0; i < count; ++i) {
    RSplineLine line;
    line.left = {-4, 0, static_cast<float>(10 * i)};
    line.right = {4, 0, static_cast<float>(10 * i)};
    rep.AddLine(line);
  }
  rep.BuildTriangles();
  rep.BuildSpline();
}

} // namespace

TEST(SplineLoad, CorrectsTheHead)
{
  const std::vector<float> ten(10, 0);
  const struct
  {
    const char* head;
    int lines, divisions, start, end;
    const char* report; // null: no problem
  } cases[] = {
      {"  count=10\n", 10, 10, 0, 9, nullptr},
      {"  count=0\n", 0, 10, 0, -1, nullptr},
      {"  count=-5\n", 0, 10, 0, -1, nullptr},
      {"  count=10\n  lateral_divisions=0\n", 10, 1, 0, 9, "lines.lateral_divisions in spline.ini must be >=1 (now 0)"},
      {"  count=10\n  paint_start=5\n  paint_end=3\n", 10, 10, 5, 9,
       "Splines lines.paint_end (13) >= lines.count (10); capping to 9"},
      {"  count=10\n  paint_start=5\n  paint_end=-4\n", 10, 10, 5, 6, nullptr},
      {"  count=10\n  paint_end=7\n  use_mesh_hits=1\n", 10, 10, 0, 7, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.head);
    ReportCapture reports;
    RSplineRep rep;
    LoadText(rep, RoadText(c.head, ten));
    EXPECT_EQ(c.lines, rep.LineCount());
    EXPECT_EQ(c.divisions, rep.lateralDivisions);
    EXPECT_EQ(2 * c.divisions, rep.trisPerLine);
    EXPECT_EQ(c.start, rep.paintStart);
    EXPECT_EQ(c.end, rep.paintEnd);
    EXPECT_EQ(c.report ? 1 : 0, reports.Problems()) << reports.All();
    if (c.report) {
      EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    }
  }
}

TEST(SplineLoad, DropsARepeatedLineAndKeepsTheNumbersOfTheFile)
{
  std::string text = RoadText("  count=4\n", {0, 1, 2, 3});
  text.replace(text.find("cp1=3.000000 0 10"), 17, "cp1=2.000000 0 0 "); // the right point of line 0
  text += "line3\n{\n}\n";
  ReportCapture reports;
  RSplineRep rep;
  LoadText(rep, text);
  ASSERT_EQ(3, rep.LineCount());
  EXPECT_EQ(2, rep.lines[1].left.x);
  EXPECT_EQ(3, rep.lines[2].left.x);
  EXPECT_TRUE(reports.Contains("RSplineRep: degenerate spline detected at line 1; skipped"));
  EXPECT_EQ(1, reports.Problems()) << reports.All();
}

TEST(SplineLoad, WarnsOfASecondLapButNotOfTheFirstLine)
{
  std::string text = RoadText("  count=5\n", {0, 1, 2, 3, 4});
  text.replace(text.find("cp0=3.000000 0 30"), 17, "cp0=0.000000 0 0 "); // the left point of line 0
  ReportCapture reports;
  RSplineRep rep;
  LoadText(rep, text);
  EXPECT_EQ(5, rep.LineCount());
  EXPECT_TRUE(reports.Contains("RSplineRep: spline 3 seems to overlap itself for more than 1 lap; fix spline.ini count "
                               "to 3 and paint_end to 2?"));
  EXPECT_EQ(1, reports.Problems()) << reports.All();
}

TEST(SplineLoad, TakesNoMemoryForLinesThatArentThere)
{
  const struct
  {
    const char* head;
    int most;
  } cases[] = {
      {"  count=2147483647\n", 3},
      {"  count=2\n  lateral_divisions=2147483647\n", 2},
      {"  count=900\n  lateral_divisions=1001\n", 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.head);
    ReportCapture reports;
    RSplineRep rep;
    LoadText(rep, RoadText(c.head, {1, 2}));
    EXPECT_LE(rep.LineCount(), c.most);
    EXPECT_LE(rep.tris.size(), 4000u);
    EXPECT_GE(reports.Problems(), 1);
  }
}

TEST(SplineSave, ReadsBackTheSameAndLeavesForeignKeys)
{
  RSplineRep rep;
  AddStraight(rep, 3);
  rep.lines[1].elevation = 0.25f;
  rep.lines[1].longGrip = 0.9f;
  rep.lines[2].flags = 6;
  rep.lateralDivisions = 4;
  rep.paintEnd = 2;
  rep.flags |= RSplineRep::USE_MESH_HITS;
  QInfo info("spline.ini", QInfo::NO_READ);
  info.ReadFromText("; mine\nlines\n{\n  author=me\n}\nline7\n{\n  cp0=7 7 7\n}\n");
  rep.Save(info);
  const std::string text = info.WriteToText();
  info.MarkWritten();
  EXPECT_TRUE(text.starts_with("; mine\nlines\n{\n  author=me\n  count=3\n  paint_start=0\n  paint_end=2\n"
                               "  lateral_divisions=4\n  use_mesh_hits=1\n}\nline7\n{\n  cp0=7 7 7\n}\nline0\n{\n"
                               "  cp0=-4.000000 0.000000 0.000000\n  cp1=4.000000 0.000000 0.000000\n"
                               "  long_grip=1.000000\n  elevation=0.000000\n  flags=0\n}\n"))
      << text;
  RSplineRep back;
  LoadText(back, text);
  ASSERT_EQ(3, back.LineCount());
  EXPECT_EQ(0.25f, back.lines[1].elevation);
  EXPECT_EQ(0.9f, back.lines[1].longGrip);
  EXPECT_EQ(6, back.lines[2].flags);
  EXPECT_EQ(rep.flags, back.flags);
}

TEST(SplineBuild, CutsTheRoadIntoTriangles)
{
  RSplineRep rep;
  rep.lateralDivisions = 2;
  rep.trisPerLine = 4;
  AddStraight(rep, 3);
  ASSERT_EQ(8u, rep.tris.size());  // the last line has none
  const auto& first = rep.tris[6]; // line 1, right half
  EXPECT_EQ((std::array<DVector3, 3>{DVector3(0, 0, 10), DVector3(4, 0, 10), DVector3(0, 0, 20)}), first.p);
  EXPECT_EQ((std::array<DVector3, 3>{DVector3(4, 0, 20), DVector3(0, 0, 20), DVector3(4, 0, 10)}), rep.tris[7].p);
  EXPECT_EQ(0.5f, first.t);
}

TEST(SplineBuild, MeasuresTheRoad)
{
  RSplineRep rep;
  EXPECT_EQ(0, rep.GetTrackLength());
  AddStraight(rep, 5);
  EXPECT_EQ(40, rep.GetTrackLength());
  EXPECT_EQ(30, rep.lines[3].distance);
  EXPECT_EQ(40, rep.lines[4].length); // back to line 0
  rep.flags |= RSplineRep::CLOSED;
  EXPECT_EQ(80, rep.GetTrackLength());
  EXPECT_NEAR(15, rep.Curve(RSplineRep::RIGHT, 2)->GetValue(15), 0.01);
}

TEST(SplineBuild, WarnsOfAWideGapOnlyOnAClosedRoad)
{
  for (bool closed : {false, true}) {
    ReportCapture reports;
    RSplineRep rep;
    rep.flags = closed ? RSplineRep::CLOSED : 0u;
    AddStraight(rep, 16);
    EXPECT_EQ(closed ? 2 : 0, reports.Problems()) << reports.All();
    EXPECT_EQ(closed, reports.Contains("Spline LEFT-z would loop from last to first point with 150.0 distance. Are you "
                                       "sure this is not a point_to_point track? (special.ini: "
                                       "timeline.point_to_point=1)"));
  }
}

TEST(SplinePos, FindsPointsAlongTheRoad)
{
  RSplineRep rep;
  DVector3 at(9.0f), behind(9.0f);
  EXPECT_FALSE(rep.GetPosAt(5, 0.5f, at, behind));
  EXPECT_EQ(DVector3(0.0f), at);
  AddStraight(rep, 3);
  const struct
  {
    float distance, lateral;
    DVector3 at, behind;
  } cases[] = {
      {0, 0.5f, {0, 0, 0}, {0, 0, -1}},       {15, 0, {-4, 0, 15}, {-4, 0, 14}},
      {15, 1, {4, 0, 15}, {4, 0, 14}},        {25, 0.5f, {0, 0, 15}, {0, 0, 16}}, // on the way back to line 0
      {1000, 0.25f, {-2, 0, 0}, {-2, 0, -1}}, {NAN, 0.25f, {-2, 0, 0}, {-2, 0, -1}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.distance);
    EXPECT_TRUE(rep.GetPosAt(c.distance, c.lateral, at, behind));
    EXPECT_NEAR(0, glm::distance(c.at, at), 0.001);
    EXPECT_NEAR(0, glm::distance(c.behind, behind), 0.001);
  }
}

TEST(SplineLines, RollAndRollBack)
{
  RSplineRep rep;
  AddStraight(rep, 4);
  const auto start = [&] { return rep.lines[0].left.z; };
  const struct
  {
    int n;
    float first;
  } cases[] = {{1, 10}, {-1, 0}, {-1, 30}, {5, 0}, {-8, 0}, {0, 0}, {2147483647, 30}};
  for (const auto& c : cases) {
    rep.Roll(c.n);
    EXPECT_EQ(c.first, start()) << c.n;
    EXPECT_EQ(0, rep.lines[0].distance);
  }
  EXPECT_EQ(30, rep.tris[0].p[0].z);
}

TEST(SplineLines, GrowAndShrinkWithReports)
{
  RSplineRep rep;
  ReportCapture reports;
  EXPECT_TRUE(rep.Reserve(0));
  rep.AddLine({});
  EXPECT_EQ("WARN: Reserve more lines (1 > allocated 0)\n", reports.All());
  EXPECT_EQ(50, rep.LineCapacity());
  EXPECT_EQ(100, rep.TriCapacity());
  rep.AddLine({});
  reports.Clear();
  EXPECT_TRUE(rep.Reserve(1));
  EXPECT_EQ(1, rep.LineCount());
  EXPECT_EQ("WARN: RSplineRep:Reserve(); shrinking line array, quite unusual\n"
            "WARN: RSplineRep:Reserve(); shrinking tri array, quite unusual\n",
            reports.All());
  reports.Clear();
  EXPECT_FALSE(rep.CopySubdivision(RSplineRep()));
  EXPECT_TRUE(reports.Contains("Cannot change the subdivision level of a spline when there are splines present"));
  rep.RemoveLast();
  rep.RemoveLast();
  EXPECT_EQ(0, rep.LineCount());
  EXPECT_TRUE(rep.CopySubdivision(RSplineRep()));
}

TEST(SplineLines, ChangeTheirTopSpeedEvenly)
{
  RSplineRep rep;
  AddStraight(rep, 5);
  EXPECT_TRUE(rep.SetMaxVelocity(1, 3, 10, 20));
  EXPECT_EQ(0, rep.lines[0].maxVelocity);
  EXPECT_EQ(15, rep.lines[2].maxVelocity);
  EXPECT_EQ(20, rep.lines[3].maxVelocity);
  ReportCapture reports;
  EXPECT_FALSE(rep.SetMaxVelocity(-1, 3, 0, 0));
  EXPECT_FALSE(rep.SetMaxVelocity(0, 5, 0, 0));
  EXPECT_FALSE(rep.SetMaxVelocity(3, 3, 0, 0));
  EXPECT_EQ("WARN: 'fromSpline' (-1) is out of range 0..4\nWARN: 'toSpline' (5) is out of range 0..4\n"
            "WARN: 'fromSpline' (3) must be smaller than 'toSpline' (3)\n",
            reports.All());
}
