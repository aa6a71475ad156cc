#include "foundation/qfilename.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "track/rlidar.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

class LidarConvertTest : public testing::Test
{
protected:
  LidarConvertTest()
  {
    QFileHooks().openDocument = [this](const std::string& what, const std::string&) {
      shown.push_back(what);
      return true;
    };
  }
  ~LidarConvertTest() override { QFileHooks().openDocument = nullptr; }
  TempDir root;
  InDirectory inside{root.Path()};
  ReportCapture reports;
  RLidar lidar{"track"};
  std::vector<std::string> shown;
};

TEST_F(LidarConvertTest, ScansBecomeACloudWithABlockEachUpToTheFirstGap)
{
  std::filesystem::create_directories("track/xyz");
  const std::string longLine = "7 8 9 " + std::string(1018, 'x'); // just what a line may hold
  root.Write("track/xyz/block000001.xyz", "1 2 3\n4.5\t-5  6 200 intensity\r\n" + longLine + "\n");
  root.Write("track/xyz/block000002.xyz", "10 20 30"); // no line end
  root.Write("track/xyz/block000004.xyz", "99 99 99\n");
  ASSERT_TRUE(lidar.ConvertXYZ());
  EXPECT_EQ(0, lidar.PointCount());
  ASSERT_TRUE(lidar.LoadRLD("points.rld"));
  const DVector3 expected[] = {{1, 2, 3}, {4.5f, -5, 6}, {7, 8, 9}, {10, 20, 30}};
  // The line end that no longer fits into the long line is a line of its own, a point at 0.
  ASSERT_EQ(5, lidar.PointCount());
  for (const int i : {0, 1, 2})
    EXPECT_EQ(expected[i], lidar.points[size_t(i)]) << i;
  EXPECT_EQ(DVector3(0.0f), lidar.points[3]);
  EXPECT_EQ(expected[3], lidar.points[4]);
  ASSERT_EQ(2u, lidar.blocks.size());
  EXPECT_EQ(4, lidar.blocks[1].start);
  EXPECT_EQ(1, lidar.blocks[1].size);

  ASSERT_TRUE(lidar.RelocateRLD());
  ASSERT_TRUE(lidar.LoadRLD("points_relocated.rld", RLidar::GET_BOUNDS));
  EXPECT_EQ(DVector3(0.0f), lidar.bounds.Center());
  EXPECT_EQ(DVector3(10, 25, 30), lidar.bounds.max - lidar.bounds.min);
  EXPECT_TRUE(lidar.SortRLD());
}

TEST_F(LidarConvertTest, NoScansGiveACloudWithoutPoints)
{
  EXPECT_FALSE(lidar.ConvertXYZ()) << "there is no directory to write to";
  std::filesystem::create_directories("track/xyz");
  ASSERT_TRUE(lidar.ConvertXYZ());
  ASSERT_TRUE(lidar.LoadRLD("points.rld"));
  EXPECT_EQ(0, lidar.PointCount());
  EXPECT_TRUE(lidar.RelocateRLD());
}

constexpr const char* ASE = R"(*3DSMAX_ASCIIEXPORT 200
*GEOMOBJECT {
	*NODE_NAME "ground"
	*MESH {
		*MESH_NUMVERTEX 3
		*MESH_NUMFACES 1
		*MESH_VERTEX_LIST {
			*MESH_VERTEX    0	0.0 0.0 1.5
			*MESH_VERTEX    1	2.0 0.0 1.5
			*MESH_VERTEX    2	0.0 2.0 1.5
		}
		*MESH_FACE_LIST {
			*MESH_FACE    0:    A:    0 B:    1 C:    2 AB:    1 BC:    1 CA:    0
		}
	}
}
*GEOMOBJECT {
	*NODE_NAME "hill"
	*MESH {
		*MESH_NUMVERTEX 3
		*MESH_NUMFACES 1
			*MESH_VERTEX    2	5.0 5.0 5.0
			*MESH_VERTEX    0	6.0 5.0 5.0
			*MESH_VERTEX    1	5.0 6.0 5.0
			*MESH_FACE    0:    A:    2 B:    0 C:    9
	}
}
)";

TEST_F(LidarConvertTest, MeshesBecomeACloudWithABlockEach)
{
  root.Write("track/ase/surface.ase", ASE);
  EXPECT_FALSE(lidar.ImportASE("track/ase/surface.ase")) << "there is no directory for the report";
  EXPECT_TRUE(reports.Contains("RLidar:Analyze(); can't open report file 'data/dump/rld_report.txt'"));
  std::filesystem::create_directories("data/dump");
  EXPECT_TRUE(lidar.Command("lidar import"));
  RLidar read;
  ASSERT_TRUE(read.LoadRLD("track/track.rld"));
  ASSERT_EQ(6, read.PointCount());
  EXPECT_EQ(DVector3(2, 0, 1.5f), read.points[1]);
  EXPECT_EQ(DVector3(5, 5, 5), read.points[5]) << "by the number in the line";
  EXPECT_EQ((DArray<uint32_t>{0, 1, 2, 5, 3, 0}), read.triangles) << "by the block's start; what isn't there is 0";
  ASSERT_EQ(2u, read.blocks.size());
  EXPECT_EQ(3, read.blocks[1].start);
  EXPECT_EQ(3, read.blocks[1].size);
  EXPECT_EQ(
      "RLD report\n----------\n\nPoints   : 6 (0.00 million)\nTriangles: 2 (0.00 million)\n\n"
      "Min  : 0.000000 0.000000 1.500000\nMax  : 6.000000 6.000000 5.000000\n\n"
      "Range: 6.000000 6.000000 3.500000\n\nBlocks: 2\n- block 0: start 0, points 3\n- block 1: start 3, points 3\n",
      FileText("data/dump/rld_report.txt"));
  EXPECT_EQ(std::vector<std::string>{"data/dump/rld_report.txt"}, shown);
}

TEST_F(LidarConvertTest, MeshesThatLieAreRefused)
{
  std::string many;
  for (int i = 0; i < 501; ++i)
    many += "*NODE_NAME \"a\"\n";
  const struct
  {
    std::string text;
    const char* report;
  } cases[] = {
      {"*MESH_NUMVERTEX 2147483647\n", "names more vertices or faces than it can hold"},
      {"*MESH_NUMFACES 1000000\n", "names more vertices or faces than it can hold"},
      {"*MESH_NUMVERTEX 1\n*MESH_VERTEX 1 0 0 0\n", "ASE load out of bounds; vertexIndex 1 >= points 1"},
      {"*MESH_NUMVERTEX 1\n*MESH_VERTEX -1 0 0 0\n", "ASE load out of bounds; vertexIndex -1 >= points 1"},
      {"*MESH_NUMFACES 1\n*MESH_FACE 0: A: 0 B: 0 C: 0\n*MESH_FACE 1: A: 0 B: 0 C: 0\n",
       "ASE load out of bounds; triIndex 1 >= triangles 1"},
      {many, "RLidar:ImportASE; too many GEOMOBJECTS (max=500)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.report);
    EXPECT_FALSE(lidar.ImportASE(root.Write("bad.ase", c.text)));
    EXPECT_TRUE(reports.Contains(c.report));
    EXPECT_EQ(0, lidar.PointCount() + lidar.TriangleCount());
  }
  EXPECT_FALSE(lidar.ImportASE("absent.ase"));
  EXPECT_TRUE(reports.Contains("RLidar:ImportASE(absent.ase); can't open file"));
}

TEST_F(LidarConvertTest, CommandsReachTheOperations)
{
  for (const char* text : {"lidar vertices", "lidar triangles", "lidar aabb", "lidar aabb"})
    EXPECT_TRUE(lidar.Command(text));
  EXPECT_EQ(3u, lidar.flags);
  EXPECT_TRUE(lidar.Command("lidar export"));
  EXPECT_TRUE(reports.Contains("No RLD data found to export"));
  lidar.points = {{1, 2, 3}};
  EXPECT_TRUE(lidar.Command("lidar movex 1.5"));
  EXPECT_TRUE(lidar.Command("lidar movez -2"));
  EXPECT_EQ(DVector3(2.5f, 2, 1), lidar.points[0]);
  EXPECT_TRUE(lidar.Command("lidar export"));
  EXPECT_TRUE(reports.Contains("Can't open export file (temp/track.pts)"));
  std::filesystem::create_directory("temp");
  EXPECT_TRUE(lidar.Command("lidar export"));
  EXPECT_EQ("1\n2.500000 2.000000 1.000000\n", FileText("temp/track.pts"));
  for (const char* text : {"lidar", "lidar movew 1", "vertices", ""})
    EXPECT_FALSE(lidar.Command(text));
}

} // namespace
