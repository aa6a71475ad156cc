#include "track/rlidar.h"

#include "foundation/qbytes.h"
#include "geometry/daabbtreehd.h"
#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "track/smalltrack.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

struct CloudFile
{
  std::vector<DVector3> points;
  std::vector<int> triangles; // three numbers each
  std::vector<int> blocks;    // all starts, then all sizes; none: no chunk
  int pointCount = -1;        // -1: as many as there are
  int triangleCount = -1;
  int blockCount = -1;
};

std::string Bytes(const CloudFile& f)
{
  const auto count = [](int wanted, size_t there) { return wanted == -1 ? static_cast<int>(there) : wanted; };
  QByteWriter w;
  w.PutText("RLD0HEAD");
  w.PutS32(count(f.pointCount, f.points.size()));
  w.PutS32(count(f.triangleCount, f.triangles.size() / 3));
  w.PutText("VERT");
  for (const DVector3& p : f.points) {
    w.PutFloat(p.x);
    w.PutFloat(p.y);
    w.PutFloat(p.z);
  }
  w.PutText("TRIS");
  for (const int i : f.triangles)
    w.PutS32(i);
  if (!f.blocks.empty() || f.blockCount != -1) {
    w.PutText("BLKI");
    w.PutS32(count(f.blockCount, f.blocks.size() / 2));
    for (const int b : f.blocks)
      w.PutS32(b);
  }
  const auto bytes = w.Bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A level square of side 2 m in the scan's axes, two triangles and two blocks.
CloudFile Square()
{
  return {{{0, 0, 5}, {2, 0, 5}, {2, 2, 5}, {0, 2, 5}}, {0, 1, 2, 0, 2, 3}, {0, 1, 1, 3}};
}

class LidarTest : public testing::Test
{
protected:
  bool Load(const CloudFile& file, unsigned readFlags = 0) { return LoadBytes(Bytes(file), readFlags); }
  bool LoadBytes(const std::string& bytes, unsigned readFlags = 0)
  {
    return lidar.LoadRLD(root.Write("track.rld", bytes), readFlags);
  }
  std::vector<std::pair<int, int>> Blocks() const
  {
    std::vector<std::pair<int, int>> all;
    for (const RLidar::Block& b : lidar.blocks)
      all.emplace_back(b.start, b.size);
    return all;
  }
  using Pairs = std::vector<std::pair<int, int>>;
  TempDir root;
  ReportCapture reports;
  RLidar lidar{root.Path()};
};

TEST_F(LidarTest, ReadsPointsTrianglesAndBlocks)
{
  ASSERT_TRUE(Load(Square(), RLidar::GET_BOUNDS));
  EXPECT_EQ(4, lidar.PointCount());
  EXPECT_EQ(2, lidar.TriangleCount());
  EXPECT_EQ(DVector3(2, 2, 5), lidar.points[2]);
  EXPECT_EQ((DArray<uint32_t>{0, 1, 2, 0, 2, 3}), lidar.triangles);
  EXPECT_EQ((Pairs{{0, 1}, {1, 3}}), Blocks());
  EXPECT_EQ(DVector3(0, 0, 5), lidar.bounds.min);
  EXPECT_EQ(DVector3(2, 2, 5), lidar.bounds.max);
  ASSERT_TRUE(LoadBytes(std::string("RLD0HEAD\0\0\0\0\0\0\0\0VERTTRIS", 24), RLidar::GET_BOUNDS));
  EXPECT_EQ(0, lidar.PointCount());
  EXPECT_EQ(Pairs({{0, 0}}), Blocks()) << "no chunk: one block";
  EXPECT_EQ(DVector3(0.0f), lidar.bounds.max);
  CloudFile noPoints;
  noPoints.triangles = {0, 0, 0};
  noPoints.blocks = {7, 8};
  ASSERT_TRUE(Load(noPoints));
  EXPECT_EQ(0, lidar.TriangleCount()) << "there is nothing that they could name";
  EXPECT_EQ(Pairs({{7, 8}}), Blocks());
}

TEST_F(LidarTest, EveryAxisIsSwappedWhateverThePieces)
{
  CloudFile file;
  for (int i = 0; i < 40003; ++i) // several pieces, and a rest
    file.points.push_back({float(i), float(i) + 0.25f, -float(i)});
  ASSERT_TRUE(Load(file, RLidar::SWAP_AXES));
  int wrong = 0;
  for (int i = 0; i < 40003; ++i)
    wrong += lidar.points[size_t(i)] != DVector3(float(i), -float(i), -(float(i) + 0.25f));
  EXPECT_EQ(0, wrong);
  ASSERT_TRUE(Load(file));
  EXPECT_EQ(file.points[40002], lidar.points[40002]);
  lidar.SwapAxes();
  EXPECT_EQ(DVector3(40002, -40002, -40002.25f), lidar.points[40002]);
}

TEST_F(LidarTest, IndicesOutOfRangeAreReportedAndBecomeZero)
{
  CloudFile file = Square();
  file.triangles = {-1, 1, 2, 3, 4, 0, 0, 1, 2147483647};
  ASSERT_TRUE(Load(file));
  EXPECT_EQ((DArray<uint32_t>{0, 1, 2, 3, 0, 0, 0, 1, 0}), lidar.triangles);
  EXPECT_TRUE(reports.Contains("contains indices out of range 0..4 (points); triangle 0 index 0 contains -1"));
  EXPECT_TRUE(reports.Contains("triangle 1 index 1 contains 4"));
  file.triangles.assign(90000, 9);
  file.triangles[89998] = 3;
  ASSERT_TRUE(Load(file));
  EXPECT_EQ(89999, std::count(lidar.triangles.begin(), lidar.triangles.end(), 0u));
  EXPECT_TRUE(reports.Contains("89979 more indices are out of range"));
}

TEST_F(LidarTest, CountsBeyondTheFileAreRefused)
{
  EXPECT_FALSE(lidar.LoadRLD(root.Path("absent.rld")));
  EXPECT_TRUE(reports.Contains("RLidar:RelocateRLD() failed to load RLD file"));
  const struct
  {
    int points, triangles, blocks;
  } cases[] = {{5, 2, 2},  {2147483647, 2, 2}, {-1, 2, 2}, {4, 2147483647, 2}, {4, -2147483647, 2},
               {-4, 6, 2}, {4, 2, 2147483647}, {4, 2, -5}, {4, 2, 3}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.points << " " << c.triangles << " " << c.blocks);
    std::string bytes = Bytes(Square());
    const auto patch = [&](size_t at, int value) { std::memcpy(&bytes[at], &value, sizeof value); };
    patch(8, c.points);
    patch(12, c.triangles);
    patch(bytes.size() - 20, c.blocks);
    EXPECT_FALSE(LoadBytes(bytes));
    EXPECT_EQ(0, lidar.PointCount() + lidar.TriangleCount());
    EXPECT_TRUE(reports.Contains("fit into"));
  }
  const std::string whole = Bytes(Square());
  for (size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    const bool good = LoadBytes(whole.substr(0, length));
    EXPECT_EQ(length >= 96 && (length < 104), good) << "complete but for its blocks";
  }
}

TEST_F(LidarTest, FiveHundredBlocksAreKept)
{
  CloudFile file = Square();
  file.blocks.assign(1200, 1);
  file.blocks[0] = 3;
  file.blocks[600] = 4;
  ASSERT_TRUE(Load(file));
  ASSERT_EQ(500u, lidar.blocks.size());
  EXPECT_EQ((std::pair<int, int>{3, 4}), Blocks().front()) << "sizes stand behind all the starts";
}

TEST_F(LidarTest, SavesWhatItReads)
{
  const std::string whole = Bytes(Square());
  ASSERT_TRUE(LoadBytes(whole));
  std::filesystem::create_directory(root.Path("xyz"));
  ASSERT_TRUE(lidar.SaveRLD("copy.rld"));
  EXPECT_EQ(whole, FileText(root.Path("xyz/copy.rld"))) << "a bare name lies in xyz";
  EXPECT_TRUE(lidar.LoadRLD("copy.rld"));
  EXPECT_FALSE(lidar.SaveRLD("nowhere/copy.rld"));
  EXPECT_TRUE(reports.Contains("RLidar:SaveRLD(nowhere/copy.rld) failed to open file"));
}

TEST_F(LidarTest, TheTreeFollowsThePoints)
{
  ASSERT_TRUE(Load(Square(), RLidar::SWAP_AXES));
  lidar.BuildTree();
  DAabbTreeHdQuery query;
  query.from = {1.5f, 100, -0.5f};
  query.direction = {0, -1, 0};
  query.length = 1000;
  ASSERT_TRUE(lidar.Tree()->Query(query));
  EXPECT_NEAR(5, query.hitPosition.y, 1e-4);
  lidar.Translate({50, 1, 0});
  query.cachedNode = -1;
  EXPECT_FALSE(lidar.Tree()->Query(query));
  query.from.x += 50;
  ASSERT_TRUE(lidar.Tree()->Query(query));
  EXPECT_NEAR(6, query.hitPosition.y, 1e-4);
  lidar.FlipTriangles();
  EXPECT_EQ((DArray<uint32_t>{2, 1, 0, 3, 2, 0}), lidar.triangles);
}

TEST_F(LidarTest, NamesItsFlags)
{
  const char* texts[] = {"<none>",
                         "PaintTriangles",
                         "PaintVertices",
                         "PaintVertices, PaintTriangles",
                         "PaintAABB",
                         "PaintTriangles, PaintAABB",
                         "PaintVertices, PaintAABB",
                         "PaintVertices, PaintTriangles, PaintAABB"};
  for (lidar.flags = 0; lidar.flags < 8; ++lidar.flags)
    EXPECT_EQ(texts[lidar.flags], lidar.GetPaintFlagsString());
}

class LidarPaintTest : public LidarTest
{
protected:
  std::vector<RecordingOverlay::Item> Painted(uint32_t flags, const DVector3& view = DVector3(0.0f))
  {
    lidar.flags = flags;
    RecordingOverlay overlay;
    lidar.Paint(overlay, view);
    return overlay.items;
  }
};

TEST_F(LidarPaintTest, BlocksHaveTheirColoursAndStayInsideThePoints)
{
  CloudFile file = Square();
  file.blocks = {0, 1, 2, 4, -3, 3, 1, 9, 1, -1};
  ASSERT_TRUE(Load(file));
  const auto items = Painted(RLidar::PAINT_VERTICES);
  const struct
  {
    uint32_t color;
    size_t points;
  } expected[] = {{0x00FF00FF, 3}, {0xFF0000FF, 1}, {0xFFFF00FF, 2}};
  ASSERT_EQ(std::size(expected), items.size());
  for (size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(expected[i].color, items[i].style.color.GetRGBA());
    EXPECT_EQ(expected[i].points, items[i].points.size());
  }
  file.blocks.clear();
  ASSERT_TRUE(Load(file));
  EXPECT_EQ(Pairs({{0, 0}}), Blocks());
  ASSERT_EQ(1u, Painted(RLidar::PAINT_VERTICES).size());
  EXPECT_EQ(Pairs({{0, 4}}), Blocks()) << "one block for all, once they are to be painted";
  file.blockCount = 0;
  ASSERT_TRUE(Load(file));
  ASSERT_EQ(1u, Painted(RLidar::PAINT_VERTICES).size()) << "no block at all: green";
  EXPECT_TRUE(Painted(0).empty());
}

TEST_F(LidarPaintTest, TrianglesNearTheViewAreShadedAndTheListStartsLaterWithTime)
{
  // Upright and facing the viewer, facing away, seen from below, level, far away.
  CloudFile file;
  file.points = {{0, 0, -10}, {1, 0, -10}, {0, 1, -10}, {0, 1, -9}, {1, 0, -40}, {0, 0, -40}, {0, 0, -9}, {1, 0, -9}};
  file.triangles = {0, 7, 6, 0, 6, 7, 5, 4, 2};
  ASSERT_TRUE(Load(file));
  auto items = Painted(RLidar::PAINT_TRIANGLES);
  ASSERT_EQ(2u, items.size());
  EXPECT_EQ(0x00FF00FFu, items[0].style.color.GetRGBA()) << "from below";
  EXPECT_EQ(0x808080FFu, items[1].style.color.GetRGBA()) << "level";
  Painted(RLidar::PAINT_TRIANGLES);
  Painted(RLidar::PAINT_TRIANGLES);
  EXPECT_EQ(1u, Painted(RLidar::PAINT_TRIANGLES).size()) << "after three frames the first is left out";
  EXPECT_TRUE(Painted(RLidar::PAINT_TRIANGLES, {0, 0, 22}).empty()) << "more than 31.6 m away";
}

TEST_F(LidarPaintTest, TheTreeIsPaintedAlsoWhenEmpty)
{
  ASSERT_TRUE(Load(Square()));
  EXPECT_TRUE(Painted(RLidar::PAINT_AABB).empty()) << "there is no tree yet";
  lidar.BuildTree();
  auto items = Painted(RLidar::PAINT_AABB);
  ASSERT_EQ(4u, items.size());
  EXPECT_EQ(0xFF00FFFFu, items[0].style.color.GetRGBA());
  EXPECT_EQ(24u + 12u, items[0].points.size()) << "the root is a leaf of two triangles";
  CloudFile bare = Square();
  bare.triangles.clear();
  ASSERT_TRUE(Load(bare));
  lidar.BuildTree();
  EXPECT_EQ(24u, Painted(RLidar::PAINT_AABB).at(0).points.size());
}

TEST(LidarTrack, IsLoadedWithTheTrackAndMovedByItsSettings)
{
  SmallTrack small;
  ReportCapture reports;
  auto track = small.Load();
  ASSERT_TRUE(track);
  ASSERT_TRUE(track->lidar);
  EXPECT_EQ(0, track->lidar->PointCount()) << "no file, no error";
  EXPECT_FALSE(reports.Contains("LIDAR"));
  small.Write("track.rld", Bytes(Square()));
  small.Write("special.ini", "lidar\n{\n  translate=1 0 0\n}\n");
  track = small.Load();
  ASSERT_EQ(4, track->lidar->PointCount());
  EXPECT_EQ(DVector3(3, 5, -2), track->lidar->points[2]) << "moved after the axes were swapped";
  ASSERT_TRUE(track->lidar->Tree());
  small.Write("track.rld", Bytes(Square()).substr(0, 50));
  track = small.Load();
  ASSERT_TRUE(track) << "the track opens all the same";
  EXPECT_TRUE(reports.Contains("Can't load LIDAR data (data/tracks/small/track.rld)"));
  EXPECT_EQ(0, track->lidar->PointCount());
}

} // namespace
