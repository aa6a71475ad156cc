#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dtexfont.h"
#include "geometry/dtexture.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

namespace {

std::string Entry(int code, int x, const char* more = "")
{
  return "char" + std::to_string(code) + "\n{\nx=" + std::to_string(x) + "\ny=16\nwid=8\nhgt=16\n" + more + "}\n";
}

class TexFont : public testing::Test
{
protected:
  void Write(const std::string& chars, const char* general = "")
  {
    dir.Write("f.dtf", std::string("general\n{\n") + general + "}\nchars\n{\n" + chars + "}\n");
    ASSERT_TRUE(QBitMap(32, 64, 32).Write(dir.Path("f.tga").c_str(), QBitMap::TGA));
  }
  ReportCapture reports;
  TempDir dir;
  DTexFont font;
};

TEST_F(TexFont, PlacesAndRanges)
{
  Write(Entry(65, 0) + Entry(66, 8, "advance=5.5\nbearingx=-1\n") + Entry(160, 16));
  ASSERT_TRUE(font.Load(dir.Path("f")));
  ASSERT_EQ(2u, font.Ranges().size());
  EXPECT_EQ(2, font.Ranges()[1].index);
  const DTexFont::Char& b = *font.Find(66);
  EXPECT_EQ(5.5f, b.advance);
  EXPECT_FLOAT_EQ(8 / 64.0f, b.u0);
  EXPECT_FLOAT_EQ(16 / 64.0f, b.u1);
  EXPECT_FLOAT_EQ(0, b.v0);
  EXPECT_FLOAT_EQ(0.5f, b.v1);
  EXPECT_EQ(160, font.Find(160)->code);
  EXPECT_EQ(64, font.Texture()->width);
  EXPECT_EQ(16, font.Height());
}

TEST_F(TexFont, LayoutMovesThePen)
{
  Write(Entry(65, 0) + Entry(66, 8, "advance=5.5\nbearingx=-1\n"));
  ASSERT_TRUE(font.Load(dir.Path("f")));
  font.xScale = 2;
  const auto quads = font.Layout("BzA");
  EXPECT_TRUE(reports.Contains("DTexFont: can't find char 0x7a"));
  ASSERT_EQ(8u, quads.position.size());
  EXPECT_EQ(DVector2(-2, -16), quads.position[0]);
  EXPECT_EQ(DVector2(11, 0), quads.position[7]); // 5.5 on, twice as wide
  EXPECT_EQ(DVector2(27, 0), quads.position[6]);
  EXPECT_FLOAT_EQ(2 * (5.5f + 9), quads.width);
  EXPECT_FLOAT_EQ(quads.width, font.Width("BzA"));
}

TEST_F(TexFont, OldFilesHaveOneAdvance)
{
  Write(Entry(65, 0, "advance=5.5\nbearingx=-1\n"), "version=1\n");
  ASSERT_TRUE(font.Load(dir.Path("f")));
  EXPECT_EQ(9, font.Find(65)->advance);
  EXPECT_EQ(0, font.Find(65)->bearingx);
}

TEST_F(TexFont, WhatIsMissingIsSaid)
{
  EXPECT_FALSE(font.Load(dir.Path("none")));
  EXPECT_TRUE(reports.Contains("DTexFont:Load(" + dir.Path("none") + ") failed"));
  Write(Entry(65, 0) + "char66\n{\nwid=8\n}\n" + Entry(67, 0));
  EXPECT_TRUE(font.Load(dir.Path("f")));
  EXPECT_EQ(1u, font.Chars().size());
  EXPECT_TRUE(reports.Contains("No X defined for texfont " + dir.Path("f") + ", entry 1\n"));
}

TEST_F(TexFont, SixRangesAreFatal)
{
  std::string entries;
  for (int i = 0; i < 6; ++i)
    entries += Entry(40 + 2 * i, 0);
  Write(entries);
  EXPECT_EXIT(
      {
        QReports().tap = nullptr;
        QReports().fatalExits = true;
        QReports().exitStatus = 1;
        font.Load(dir.Path("f"));
      },
      testing::ExitedWithCode(1), "has too many ranges");
}

} // namespace
