#include "foundation/qfile.h"
#include "geometry/ddds.h"
#include "geometry/dglobal.h"
#include "geometry/dmaterial.h"
#include "geometry/dtexture.h"
#include "geometry/dtexturemanager.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

// A file of this header and body.
std::string DdsFile(uint32_t wid, uint32_t hgt, uint32_t levels, const char* code, const std::string& body)
{
  std::string file(128, '\0');
  const auto put = [&](size_t at, uint32_t v) {
    for (size_t i = 0; i < 4; ++i)
      file[at + i] = static_cast<char>(v >> 8 * i);
  };
  file.replace(0, 4, "DDS ");
  put(12, hgt);
  put(16, wid);
  put(28, levels);
  put(80, *code ? 4 : 0);
  file.replace(84, std::string_view(code).size(), code);
  put(88, 32);
  return file + body;
}

bool Load(DDDS& dds, const std::string& file)
{
  return dds.Load(std::as_bytes(std::span(file)), "a.dds");
}

std::string Pixels(const DDDS& dds, size_t level = 0)
{
  const auto bytes = dds.Levels()[level].pixels;
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string Block8(char first)
{
  return std::string("cccc") + first + static_cast<char>(first + 1) + static_cast<char>(first + 2) +
         static_cast<char>(first + 3);
}

} // namespace

TEST(DDS, LevelsAreTurnedUpsideDown)
{
  ReportCapture reports;
  DDDS dds;
  // Two rows of blocks: they change places, and the index rows in each do.
  ASSERT_TRUE(Load(dds, DdsFile(4, 8, 1, "DXT1", Block8('a') + Block8('p'))));
  EXPECT_EQ("ccccsrqpccccdcba", Pixels(dds));
  ASSERT_TRUE(Load(dds, DdsFile(4, 4, 1, "DXT3", "AABBCCDD" + Block8('a'))));
  EXPECT_EQ("DDCCBBAAccccdcba", Pixels(dds));
  // Rows of 12 bits: 0x001, 0x002, 0x003, 0x004.
  ASSERT_TRUE(Load(dds, DdsFile(4, 4, 1, "DXT5", std::string("xy\x01\x20\x00\x03\x40\x00", 8) + Block8('a'))));
  EXPECT_EQ(std::string("xy\x04\x30\x00\x02\x10\x00", 8) + "ccccdcba", Pixels(dds));
  ASSERT_TRUE(Load(dds, DdsFile(1, 2, 1, "", "BGRAbgra")));
  EXPECT_EQ("RGBArgba", Pixels(dds)); // in the order of the file
  EXPECT_EQ(1, reports.Count("DDDS:Load(a.dds); DDS format might be unreliable, pls use DXT5."));
  // A level lower than a block has only its own rows: 2 x 8, 1 x 4, 1 x 2, 1 x 1.
  ASSERT_TRUE(Load(dds, DdsFile(2, 8, 4, "DXT1", Block8('a') + Block8('b') + Block8('c') + Block8('d') + Block8('e'))));
  ASSERT_EQ(4u, dds.Levels().size());
  EXPECT_EQ("ccccfedc", Pixels(dds, 1));
  EXPECT_EQ("ccccedfg", Pixels(dds, 2));
  EXPECT_EQ("ccccefgh", Pixels(dds, 3));
}

namespace {

// Bit by bit: each block goes to the mirrored row of blocks, and so do the first rows of its indices.
std::string Flipped(const std::string& level, size_t across, int hgt, size_t blockSize, size_t alphaBits)
{
  std::string flipped(level.size(), '\0');
  const size_t down = level.size() / (across * blockSize);
  const auto bitAt = [](const std::string& bytes, size_t bit) { return bytes[bit / 8] >> bit % 8 & 1; };
  for (size_t block = 0; block < across * down; ++block) {
    const size_t from = block * blockSize * 8;
    const size_t to = ((down - 1 - block / across) * across + block % across) * blockSize * 8;
    for (size_t bit = 0; bit < blockSize * 8; ++bit) {
      const bool isAlpha = bit < blockSize * 8 - 64;
      const size_t rowBits = isAlpha ? alphaBits : 8;
      const size_t start = (isAlpha ? 64 : blockSize * 8) - 4 * rowBits;
      const auto rows = static_cast<size_t>(std::min(hgt, 4));
      size_t target = bit;
      if (bit >= start && (bit - start) / rowBits < rows)
        target = start + (rows - 1 - (bit - start) / rowBits) * rowBits + (bit - start) % rowBits;
      if (bitAt(level, from + bit))
        flipped[(to + target) / 8] |= static_cast<char>(1 << (to + target) % 8);
    }
  }
  return flipped;
}

} // namespace

// Of sizes that blocks don't divide, with all levels; of files that are read in several pieces or fit no cache.
TEST(DDS, IsTheSameAsBitByBit)
{
  const struct
  {
    const char* code;
    size_t blockSize, alphaBits;
  } formats[] = {{"DXT1", 8, 0}, {"DXT3", 16, 16}, {"DXT5", 16, 12}};
  const int sizes[][2] = {{1, 1}, {3, 17}, {17, 3}, {5, 2}, {22, 13}, {700, 901}, {2060, 2050}};
  const TempDir dir;
  std::mt19937 random(1);
  for (const auto& f : formats)
    for (const auto& [wid, hgt] : sizes) {
      if (wid > 2000 && f.alphaBits != 12)
        continue; // one such takes a while
      SCOPED_TRACE(std::string(f.code) + " " + std::to_string(wid) + "x" + std::to_string(hgt));
      std::vector<std::string> levels, expected;
      std::string body;
      for (int w = wid, h = hgt; levels.empty() || w + h > 2; w = std::max(w / 2, 1), h = std::max(h / 2, 1)) {
        const auto across = static_cast<size_t>((w + 3) / 4);
        std::string level(across * static_cast<size_t>((h + 3) / 4) * f.blockSize, '\0');
        std::ranges::generate(level, [&] { return static_cast<char>(random()); });
        expected.push_back(Flipped(level, across, h, f.blockSize, f.alphaBits));
        body += level;
        levels.push_back(std::move(level));
      }
      const std::string file = DdsFile(static_cast<uint32_t>(wid), static_cast<uint32_t>(hgt),
                                       static_cast<uint32_t>(levels.size()), f.code, body);
      DDDS dds, fromDisk, cut;
      ASSERT_TRUE(Load(dds, file));
      ASSERT_TRUE(fromDisk.Load(dir.Write("a.dds", file + "more")));
      ASSERT_EQ(levels.size(), dds.Levels().size());
      for (size_t i = 0; i < levels.size(); ++i) {
        EXPECT_TRUE(expected[i] == Pixels(dds, i)) << i;
        EXPECT_TRUE(expected[i] == Pixels(fromDisk, i)) << i;
      }
      ReportCapture reports;
      EXPECT_FALSE(cut.Load(dir.Write("cut.dds", file.substr(0, file.size() - 1))));
      EXPECT_TRUE(cut.Levels().empty());
    }
}

TEST(DDS, TheFirstLevelTellsOfTransparency)
{
  const std::string dxt1 = std::string("\2\0\1\0", 4) + "\xFF\xFF\xFF\xFF", hole = std::string("\1\0\2\0\0\xC0\0\0", 8);
  const std::string full = std::string("\xFF\xFF", 2) + "abcdef" + dxt1,
                    faint = std::string("\xFF\xFE", 2) + "abcdef" + dxt1;
  const std::string first = std::string("\xFF\0\0\0\0\0\0\0", 8) + dxt1;
  const std::string all = std::string(8, '\xFF') + dxt1, most = std::string(7, '\xFF') + "\xEF" + dxt1;
  const struct
  {
    const char* name;
    const char* code;
    std::string blocks; // three below each other, and the level of half the size has two
    bool transparent;
  } cases[] = {
      {"three colours and a hole in the last", "DXT1", dxt1 + dxt1 + hole + dxt1 + dxt1, true},
      {"a hole in the smaller picture", "DXT1", dxt1 + dxt1 + dxt1 + hole + hole, false},
      {"fifteen sixteenths", "DXT3", most + all + all + all + all, true},
      {"all bits", "DXT3", all + all + all + most + most, false},
      {"between two ends", "DXT5", full + faint + full + full + full, true},
      {"at the opaque end", "DXT5", full + first + full + faint + faint, false},
      {"a pixel", "", std::string(11, '\xFF') + "a" + std::string(36, '\xFF') + std::string(48, '\xFF'), true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReportCapture reports;
    DDDS dds;
    ASSERT_TRUE(Load(dds, DdsFile(*c.code ? 4 : 1, 12, *c.code ? 2 : 1, c.code, c.blocks)));
    EXPECT_EQ(c.transparent, dds.HasTransparency());
  }
}

TEST(DDS, HeadersAreCheckedAgainstTheFile)
{
  const std::string block = Block8('a');
  const struct
  {
    const char* name;
    std::string file;
    size_t levels; // 0: refused
    const char* report;
  } cases[] = {
      {"one pixel", DdsFile(1, 1, 1, "DXT1", block), 1, nullptr},
      {"no count", DdsFile(4, 4, 0, "DXT1", block), 1, nullptr},
      {"twenty levels", DdsFile(4, 4, 20, "DXT1", std::string(20 * 8, 'a')), 16, nullptr},
      {"one level too few", DdsFile(8, 8, 2, "DXT1", std::string(39, 'a')), 0, "mipmap level 1 goes beyond"},
      {"huge", DdsFile(16384, 16384, 1, "DXT5", block), 0, "mipmap level 0 goes beyond"},
      {"beyond all", DdsFile(0xFFFFFFFF, 4, 1, "DXT5", block), 0, nullptr},
      {"nothing", DdsFile(0, 4, 1, "DXT5", block), 0, nullptr},
      {"other code", DdsFile(4, 4, 1, "DX10", block), 0, "DDDS:Load(a.dds); unknown compressed format (DX10)"},
      {"no header", "DDS ", 0, nullptr},
      {"no picture", std::string(200, 'x'), 0, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReportCapture reports;
    DDDS dds;
    EXPECT_EQ(c.levels > 0, Load(dds, c.file));
    EXPECT_EQ(c.levels, dds.Levels().size());
    EXPECT_TRUE(!c.report || reports.Contains(c.report)) << reports.All();
  }
  std::string bits = DdsFile(4, 4, 1, "", std::string(64, 'a'));
  bits[88] = 24;
  ReportCapture reports;
  DDDS dds;
  EXPECT_FALSE(Load(dds, bits));
  EXPECT_TRUE(reports.Contains("DDDS:Load(a.dds); unknown DDS format (rgb bitcount not 32, not DXT5)"));
}

TEST(DDS, MaterialsTakeThemOrAStandIn)
{
  DResetGlobals();
  TempDir dir;
  dir.Write("a.dds.old", DdsFile(4, 8, 1, "DXT5", std::string(32, '\x10')));
  const InDirectory inside(dir.Path());
  ReportCapture reports;
  const auto added = [](const char* name) {
    DMaterial material;
    EXPECT_TRUE(material.AddBitMap(name));
    EXPECT_EQ(material.IsTransparent(), material.GetTexture(0)->HasTransparency());
    return std::string(material.GetTexture(0)->GetTypeName()) + " " + std::to_string(material.GetTexture(0)->height);
  };
  EXPECT_EQ("bitmapTexture 1", added("a.dds.old"));
  EXPECT_TRUE(reports.Contains("DDS unsupported; stubbing 'a.dds.old'"));
  DGlobals().ddsOn = true;
  EXPECT_EQ("texture2D 8", added("a.dds.old")); // the text may stand anywhere in the name
  EXPECT_EQ("bitmapTexture 2", added("none.DDS"));
  EXPECT_TRUE(reports.Contains("Image 'none.DDS' loading failed (not found?)"));
  DResetGlobals();
}

TEST(TextureManager, CountsItsUsers)
{
  DResetGlobals();
  TempDir dir;
  dir.Write("a.tga", std::string("\0\0\3\0\0\0\0\0\0\0\0\0\1\0\1\0\10\0\x40", 19));
  const InDirectory inside(dir.Path());
  ReportCapture reports;
  {
    DTextureManager textures;
    const int first = textures.Load("a.tga");
    EXPECT_EQ(1, first);
    EXPECT_EQ(first, textures.Load("a.tga"));
    EXPECT_EQ(0, textures.Load("none.tga"));
    EXPECT_TRUE(reports.Contains("DTextureManager:MakeObject(none.tga) couldn't find image"));
    textures.Release(first);
    EXPECT_TRUE(textures.GetTexture(first));
    EXPECT_FALSE(textures.GetTexture(2));
    EXPECT_TRUE(reports.Contains("DTextureManager:GetTexture(ref 2) out of range"));
  }
  EXPECT_TRUE(reports.Contains("DTextureManager:DbgPrint(); 1 textures NOT RELEASED"));
}
