#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "support/reportcapture.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

class Geob : public testing::Test
{
protected:
  Geob() : geob(*geode.AddGeob()) {}
  void SetTriangles(std::vector<DVector3> vertices, std::vector<uint16_t> indices)
  {
    geob.vertex.assign(vertices.begin(), vertices.end());
    geob.index.assign(indices.begin(), indices.end());
    geob.texCoord[0].assign(vertices.size(), DVector2(0.0f));
    geob.burst.clear();
    geob.AddBurst({0, static_cast<int32_t>(indices.size()) * 3, 0, 3});
  }
  ReportCapture reports;
  DGeode geode{"g"};
  DGeob& geob;
};

TEST_F(Geob, BoxHoldsTheVerticesWithinItsReach)
{
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const struct
  {
    std::vector<DVector3> vertices;
    DVector3 min, max;
  } cases[] = {
      {{}, {0, 0, 0}, {0, 0, 0}},
      {{{1, 2, 3}}, {1, 2, 3}, {1, 2, 3}},
      {{{1, 2, 3}, {nan, nan, nan}, {-1, 5, 0}}, {-1, 2, 0}, {1, 5, 3}},
      {{{0, 0, 0}, {200000, -200000, 1}}, {0, -200000, 0}, {200000, 0, 1}},
      {{{200000, 200000, 200000}}, {99999, 99999, 99999}, {200000, 200000, 200000}}, // no minimum beyond
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.vertices.size());
    geob.Destroy();
    SetTriangles(c.vertices, {});
    geob.GetBoundingBox();
    EXPECT_TRUE(geob.flags & DGeob::BOX_VALID);
    EXPECT_EQ(c.min, geob.GetBoundingBox().min);
    EXPECT_EQ(c.max, geob.GetBoundingBox().max);
    EXPECT_EQ((c.min + c.max) * 0.5f, geob.GetBoundingSphere());
  }
}

TEST_F(Geob, BoxOfManyVerticesIsThatOfEach)
{
  for (int count = 1; count < 14; ++count)
    for (int extreme = 0; extreme < count; ++extreme) {
      std::vector<DVector3> vertices(static_cast<size_t>(count), DVector3(1, 2, 3));
      vertices[static_cast<size_t>(extreme)] = {-7, 9, 3};
      geob.Destroy();
      SetTriangles(vertices, {});
      EXPECT_EQ(DVector3(-7, count == 1 ? 9 : 2, 3), geob.GetBoundingBox().min);
      EXPECT_EQ(DVector3(count == 1 ? -7 : 1, 9, 3), geob.GetBoundingBox().max);
    }
}

TEST_F(Geob, FinalizeCatchesABadIndexWhereverItStands)
{
  for (size_t at : {0u, 31u, 32u, 70u, 98u}) {
    SetTriangles({{0, 0, 0}, {1, 0, 0}}, std::vector<uint16_t>(99, 1));
    geob.index[at] = 2;
    geob.FinalizeGeob();
    EXPECT_EQ(0, geob.index[at]);
    EXPECT_TRUE(reports.Contains("(index[" + std::to_string(at) + "]=2>2 vertices."));
  }
  SetTriangles({}, {0, 1, 2});
  geob.FinalizeGeob();
  EXPECT_EQ(0, geob.IndexCount());
  EXPECT_TRUE(reports.Contains("Geode g has bad indices in geob (index[2]=2>0 vertices."));
  geob.CalculateTangentArray();
  EXPECT_TRUE(reports.Contains("CalculateTangentArray needs normals for geob; now normal=0"));
}

TEST_F(Geob, MaterialOfABurst)
{
  DMaterial* plain = geode.AddMaterial();
  DMaterial* multi = geode.AddMaterial();
  DMaterial* first = multi->AddSubMaterial();
  DMaterial* last = multi->AddSubMaterial();
  const struct
  {
    int ref, id;
    DMaterial* expected;
  } cases[] = {{0, 5, plain}, {-1, 0, plain}, {1, -1, first}, {1, 0, first}, {1, 1, last}, {1, 9, last}, {7, 9, last}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ref * 100 + c.id);
    geob.materialRef = c.ref;
    EXPECT_EQ(c.expected, geob.GetMaterial(c.id));
  }
  geode.material.clear();
  EXPECT_EQ(nullptr, geob.GetMaterial(0));
}

TEST_F(Geob, NormalsComeFromTheFirstBurst)
{
  SetTriangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, -3}, {5, 5, 5}}, {0, 1, 2, 0, 2, 3, 2, 3, 4});
  geob.burst[0].count = 18;
  geob.AddBurst({18, 9, 0, 3});
  geob.RethinkNormals();
  const float h = std::sqrt(0.5f);
  EXPECT_EQ(DVector3(0, 0, 1), geob.normal[1]);
  EXPECT_NEAR(0, glm::distance(DVector3(-h, 0, h), geob.normal[0]), 1e-6); // both faces count alike
  EXPECT_EQ(DVector3(-1, 0, 0), geob.normal[3]);
  EXPECT_EQ(DVector3(0, 1, 0), geob.normal[4]); // of the second burst alone
}

TEST_F(Geob, MirroredTextureCoordinatesSplitVertices)
{
  // Two triangles that share an edge; u runs right in the first and left in the second.
  SetTriangles({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {-1, 0, 0}}, {0, 2, 1, 0, 1, 3});
  geob.texCoord[0] = {{0, 0}, {0, 1}, {1, 0}, {1, 0}};
  geob.vertexColor = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
  geob.CalculateTangentArray();
  EXPECT_EQ(6, geob.VertexCount());
  EXPECT_EQ((DArray<uint16_t>{0, 2, 1, 4, 5, 3}), geob.index);
  EXPECT_EQ(geob.vertex[0], geob.vertex[4]);
  EXPECT_EQ(geob.vertexColor[1], geob.vertexColor[5]);
  EXPECT_EQ(DVector4(1, 0, 0, 1), geob.tangent[0]);
  EXPECT_EQ(DVector4(-1, 0, 0, -1), geob.tangent[4]);
  EXPECT_EQ(6u, geob.normal.size());
  geob.CalculateTangentArray(); // done once
  EXPECT_EQ(6, geob.VertexCount());
}

TEST_F(Geob, NoSplitBeyondWhatAnIndexCanName)
{
  std::vector<DVector3> vertices(65536, DVector3(9, 9, 9));
  vertices[0] = {0, 0, 0};
  vertices[1] = {0, 1, 0};
  vertices[2] = {1, 0, 0};
  vertices[3] = {-1, 0, 0};
  SetTriangles(vertices, {0, 2, 1, 0, 1, 3});
  geob.texCoord[0][1] = {0, 1};
  geob.texCoord[0][2] = geob.texCoord[0][3] = {1, 0};
  geob.CalculateTangentArray();
  EXPECT_EQ(65536, geob.VertexCount());
  EXPECT_EQ(65536u, geob.tangent.size());
}

TEST_F(Geob, ValidateAndDegenerateReportEach)
{
  SetTriangles({{0, 0, 0}, {1, 0, 0}, {0, 0, 0.00005f}, {0, 5, 0}}, {0, 1, 3, 0, 1, 2, 1, 1, 3, 0, 1, 9});
  geob.normal.resize(3, DVector3(0.0f));
  EXPECT_TRUE(geob.Validate());
  EXPECT_TRUE(reports.Contains("DGeob (geode g); index 9 is out of vertex range 0..3."));
  EXPECT_EQ(3, reports.Count("is out of normals range 0..2.")); // 3, 3 and 9
  EXPECT_TRUE(reports.Contains("index 9 is out of texCoord range 0..3."));
  EXPECT_EQ(2, geob.CheckDegenerate());
  EXPECT_TRUE(reports.Contains("Degenerate vertex by indices: 1/1/3"));
  EXPECT_TRUE(reports.Contains("CheckDegenerate() found 2 degenerate tris\n"));
}

TEST_F(Geob, ScalingTakesEverythingAlong)
{
  SetTriangles({{1, 2, 3}}, {});
  geob.faceVertex.push_back({DVector3(1, 1, 1), DVector3(2, 2, 2), DVector3(3, 3, 3)});
  geob.GetBoundingBox();
  geob.ScaleVertices(2, 1, -1);
  geob.Translate(0, 10, 0);
  EXPECT_EQ(DVector3(2, 12, -3), geob.vertex[0]);
  EXPECT_EQ(DVector3(6, 3, -3), geob.faceVertex[0][2]);
  EXPECT_EQ(DVector3(2, 12, -3), geob.GetBoundingBox().min);
  geob.ScaleVertices(0, 0, 0);
  EXPECT_TRUE(reports.Contains("DGeob:ScaleVertices() scaling by 0; model will be invisible"));
}

TEST_F(Geob, BurstsInUnitsOfThree)
{
  SetTriangles({{0, 0, 0}}, {0, 1, 2, 3, 4, 5});
  geob.burst = {{0, 9, 0, 3}, {9, 9, 0, 3}, {-90, 900000, 0, 3}};
  EXPECT_EQ(0, geob.GetBurstOfIndex(8));
  EXPECT_EQ(1, geob.GetBurstOfIndex(17));
  EXPECT_EQ(-1, geob.GetBurstOfIndex(1000000));
  EXPECT_EQ(3u, geob.BurstIndices(1).size());
  EXPECT_EQ(6u, geob.BurstIndices(2).size()); // clipped to what there is
  geob.FlipFaces(0);
  EXPECT_EQ((DArray<uint16_t>{0, 2, 1, 3, 4, 5}), geob.index);
  geob.FlipFaces(-1);
  EXPECT_TRUE(reports.Contains("DGeob:FlipFaces(-1) NYI"));
  geob.burst.resize(100);
  EXPECT_FALSE(geob.AddBurst({}));
}

TEST_F(Geob, AdjacencyNamesTheVertexAcrossEachEdge)
{
  SetTriangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {0, 1, 2, 2, 1, 3});
  const std::vector<uint16_t> expected = {0, 1,     2, 2, 1, 3, // the indices
                                          0, 65535, 1, 3, 2, 65535, 2, 0, 1, 65535, 3, 65535};
  EXPECT_EQ(expected, geob.AdjacencyIndices());
}

TEST_F(Geob, QueryGivesTheFirstTriangleOnTheWay)
{
  SetTriangles({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, 1}, {4, 0, 1}, {0, 4, 1}}, {0, 1, 2, 3, 4, 5});
  const DMatrix4 moved(DVector4(2, 0, 0, 0), DVector4(0, 2, 0, 0), DVector4(0, 0, 2, 0), DVector4(10, 0, 0, 1));
  DVector3 hit(0.0f);
  EXPECT_TRUE(geob.Query({11, 1, 9}, {11, 1, 8}, moved, &hit));
  EXPECT_EQ(DVector3(11, 1, 0), hit);
  EXPECT_FALSE(geob.Query({1, 1, 9}, {1, 1, 8}, moved, &hit));
  geob.burst[0].vperP = 4;
  EXPECT_FALSE(geob.Query({11, 1, 9}, {11, 1, 8}, moved, &hit));
  EXPECT_TRUE(reports.Contains("ray-mesh intersection only works for triangles"));
  geob.burst.clear();
  EXPECT_FALSE(geob.Query({11, 1, 9}, {11, 1, 8}, moved, &hit));
  EXPECT_TRUE(reports.Contains("ray-mesh intersection only works for a single burst"));
}

TEST_F(Geob, NothingIsUploadedWithoutAContext)
{
  SetTriangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2});
  geob.EnableVBO();
  geob.Paint();
  EXPECT_EQ(0u, geob.vertexBuffer);
  EXPECT_FALSE(geob.flags & DGeob::IN_VBO);
}

} // namespace
