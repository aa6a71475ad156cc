#include "geometry/dofbytes.h"

#include "geometry/dglobal.h"
#include "geometry/dintersect.h"
#include "support/reportcapture.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <new>

// Files that are cut, lie about their counts or are mere noise.

namespace {

size_t BadIndexCount(const DGeode& geode)
{
  size_t bad = 0;
  for (const auto& g : geode.geob)
    for (const uint16_t i : g->index)
      bad += i >= g->vertex.size() || i >= g->normal.size() || i >= g->texCoord[0].size();
  return bad;
}

class DofBad : public testing::Test
{
protected:
  void SetUp() override
  {
    DResetGlobals();
    DGlobals().texturesOn = false;
  }
  void TearDown() override { DResetGlobals(); }
  ReportCapture reports;
};

Bytes WholeFile()
{
  const Bytes material = Chunk("MHDR", Text("wall") + Text("Standard")) +
                         Chunk("MCOL", Floats({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1})) +
                         Chunk("MTEX", U32(1) + Text("a.tga")) +
                         Chunk("MSUB", U32(1) + Chunk("MAT0", Chunk("MHDR", Text("x") + Text("")) + "MEND"));
  const Bytes normals = Chunk("NORM", U32(3) + Floats({0, 0, 1, 0, 0, 1, 0, 0, 1}));
  const Bytes base = Chunk("OVRT", U32(3) + Floats({0, 0, 1, 0, 0, 1, 0, 0, 1}));
  return Dof(Materials({material}) + Geobs({Chunk("GHDR", U32(0) + U32(0) + U32(0)) + INDI + VERT + TVER + normals +
                                            Chunk("VCOL", normals.substr(8)) + BRST + base}));
}

void Use(DGeode& geode)
{
  EXPECT_EQ(0u, BadIndexCount(geode));
  for (const auto& g : geode.geob) {
    for (int i = -1; i <= g->Bursts(); ++i) {
      g->BurstIndices(i);
      g->FlipFaces(i);
    }
    for (const DBurst& b : g->burst)
      g->GetMaterial(b.mtlID);
    g->RethinkNormals();
    g->CalculateTangentArray();
    g->CheckDegenerate();
    g->AdjacencyIndices();
  }
  GeodeHit hit;
  IntersectRayGeode(geode, {0, 0, 5}, {0, 0, -1}, hit);
  geode.GetBoundingBox();
  geode.ExportDOFBytes();
}

TEST_F(DofBad, EveryShortenedFileEndsCleanly)
{
  const Bytes whole = WholeFile();
  for (size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    // A block of just this size, so that the address sanitizer sees one byte too many.
    const std::vector<char> part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
    DGeode geode;
    EXPECT_EQ(length >= 4, geode.ImportDOF(std::as_bytes(std::span(part))));
    Use(geode);
  }
}

TEST_F(DofBad, EveryDamagedByteEndsCleanly)
{
  const Bytes whole = WholeFile();
  for (size_t at = 4; at < whole.size(); ++at)
    for (const char value : {'\0', '\x01', '\x7F', '\x80', '\xFF'}) {
      SCOPED_TRACE(at);
      Bytes damaged = whole;
      damaged[at] = value;
      DGeode geode;
      geode.ImportDOF(AsBytes(damaged)); // either answer will do
      Use(geode);
    }
}

TEST_F(DofBad, CountsAboveTheLimitsAreCut)
{
  Bytes bursts;
  for (int array = 0; array < 4; ++array)
    for (uint32_t i = 0; i < 101; ++i)
      bursts += U32(static_cast<uint32_t>(array) * 1000 + i);
  Bytes geobs = U32(201);
  for (int i = 0; i < 201; ++i)
    geobs += Chunk("GOB1", VERT + TVER + INDI + (i == 0 ? Chunk("BRST", U32(101) + bursts) : "") + "GEND");
  Bytes textures = U32(11);
  for (int i = 0; i < 11; ++i)
    textures += Text("t" + std::to_string(i));
  const Bytes tail = Chunk("MHDR", Text("behind") + Text(""));
  DGeode geode("big");
  ASSERT_TRUE(geode.ImportDOF(AsBytes(Dof(Materials({Chunk("MTEX", textures) + tail}) + Chunk("GEOB", geobs)))));
  EXPECT_EQ(200, geode.GetNoofGeobs());
  EXPECT_TRUE(reports.Contains("Geode contains 201 geobs but max=200"));
  EXPECT_TRUE(reports.Contains("Skipping unknown geode chunk 'GOB1'")); // number 201, met at the top
  ASSERT_EQ(100, geode.geob[0]->Bursts());
  EXPECT_EQ(99, geode.geob[0]->burst[99].start);
  EXPECT_EQ(3099, geode.geob[0]->burst[99].vperP); // each array at its own place
  EXPECT_EQ(10, geode.material[0]->TextureCount());
  EXPECT_EQ("behind", geode.material[0]->name);
}

TEST_F(DofBad, MaterialsNestedWithoutEndStop)
{
  Bytes inner = "MEND";
  for (int i = 0; i < 1000; ++i)
    inner = Chunk("MSUB", U32(1) + Chunk("MAT0", inner)) + "MEND";
  DGeode geode;
  EXPECT_TRUE(
      geode.ImportDOF(AsBytes(Dof(Chunk("MATS", U32(1) + Chunk("MAT0", inner)) + Geobs({VERT + TVER + INDI})))));
  EXPECT_TRUE(reports.Contains("nested too deeply"));
  EXPECT_EQ(1, geode.GetNoofGeobs()); // read on behind it
}

TEST_F(DofBad, ACountTakesNoMemoryThatTheFileDoesNotFill)
{
  const Bytes many = U32(0x7FFFFFFF);
  Bytes hollow = U32(6000);
  for (int i = 0; i < 6000; ++i)
    hollow += Chunk("MAT0", "MEND");
  Bytes nameless = U32(10) + Bytes(20, '\0');
  Bytes stubs = U32(2000);
  for (int i = 0; i < 2000; ++i)
    stubs += Chunk("MAT0", Chunk("MTEX", nameless) + "MEND");
  const Bytes cases[] = {
      Dof(Chunk("MATS", U32(6000))),
      Dof(Chunk("GEOB", U32(200))),
      Dof(Chunk("MATS", hollow)),
      Dof(Chunk("MATS", stubs)),
      Dof(Geobs({Chunk("INDI", many)})),
      Dof(Geobs({Chunk("VERT", many)})),
      Dof(Geobs({VERT + Chunk("NORM", many) + Chunk("VCOL", many) + Chunk("TVER", many) + Chunk("BRST", many)})),
      Dof(Geobs({VERT + Chunk("OVRT", many)})),
      Dof(Materials({Chunk("MTEX", many), Chunk("MSUB", many)})),
  };
  for (const Bytes& file : cases) {
    SCOPED_TRACE(file.substr(8, 40));
    const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    DGeode geode;
    geode.ImportDOF(AsBytes(file));
    const size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    EXPECT_LT(after, before + 16 * file.size() + (256 << 10));
    reports.Clear();
  }
}

} // namespace
