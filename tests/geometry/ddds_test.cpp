#include "foundation/qfile.h"
#include "geometry/ddds.h"
#include "geometry/dglobal.h"
#include "geometry/dmaterial.h"
#include "geometry/dtexture.h"
#include "geometry/dtexturemanager.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

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
  EXPECT_EQ("rgbaRGBA", Pixels(dds));
  EXPECT_EQ(1, reports.Count("DDDS:Load(a.dds); DDS format might be unreliable, pls use DXT5."));
  // A level lower than a block has only its own rows: 2 x 8, 1 x 4, 1 x 2, 1 x 1.
  ASSERT_TRUE(Load(dds, DdsFile(2, 8, 4, "DXT1", Block8('a') + Block8('b') + Block8('c') + Block8('d') + Block8('e'))));
  ASSERT_EQ(4u, dds.Levels().size());
  EXPECT_EQ("ccccfedc", Pixels(dds, 1));
  EXPECT_EQ("ccccedfg", Pixels(dds, 2));
  EXPECT_EQ("ccccefgh", Pixels(dds, 3));
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
