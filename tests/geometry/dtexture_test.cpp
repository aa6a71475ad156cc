#include "foundation/qbitmap.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

namespace {

class Texture : public testing::Test
{
protected:
  void SetUp() override { DResetGlobals(); }
  void TearDown() override { DResetGlobals(); }
  ReportCapture reports;
  TempDir dir;
};

void WritePicture(const std::string& path, int wid, int hgt, int alpha = 255)
{
  QBitMap picture(32, wid, hgt);
  picture.Fill(nullptr, QColor(10, 20, 30, alpha));
  ASSERT_TRUE(picture.Write(path.c_str(), QBitMap::TGA));
}

TEST_F(Texture, IsFoundNamedAndSized)
{
  const InDirectory here(dir.Path());
  dir.Write("maps/keep", "");
  dir.Write("own/keep", "");
  dir.Write("images/keep", "");
  WritePicture(dir.Path("maps/a.tga"), 8, 4);
  WritePicture(dir.Path("own/b.tga"), 4, 4, 128);
  WritePicture(dir.Path("images/c.tga"), 2, 2);
  DGeode geode("g");
  geode.SetMapPath("own");
  EXPECT_EQ("own/b.tga", geode.FindMapFile("b.tga"));
  EXPECT_EQ("images/c.tga", geode.FindMapFile("c.tga"));
  EXPECT_EQ("d.tga", geode.FindMapFile("d.tga"));
  DGlobals().mapPath.Add("maps");
  DMaterial m;
  EXPECT_TRUE(m.AddBitMap("a.tga", false, &geode));
  EXPECT_EQ(8, m.texture[0]->width);
  EXPECT_EQ("a", m.name);
  EXPECT_FALSE(m.IsTransparent());
  EXPECT_TRUE(m.AddBitMap("own/b.tga", false, &geode));
  EXPECT_TRUE(m.IsTransparent());
  EXPECT_STREQ("b.tga", m.texture[1]->GetName());
  EXPECT_EQ(0, reports.Problems()) << reports.All();
}

TEST_F(Texture, AMissingOneIsStubbed)
{
  DMaterial m;
  m.name = "wall";
  EXPECT_TRUE(m.AddBitMap("x/gone.tga"));
  EXPECT_STREQ("gone.tga", m.texture[0]->GetName());
  EXPECT_EQ(2, m.texture[0]->width);
  EXPECT_TRUE(reports.Contains("d3LoadTextureMap(); can't load 'x/gone.tga'; creating red/blue stub image\n"));
  EXPECT_TRUE(reports.Contains("Material 'wall' of geode '<no_geode>' failed to load image 'x/gone.tga'"));
  EXPECT_TRUE(m.AddBitMap("a.dds.tga")); // the text stands anywhere in the name
  EXPECT_TRUE(reports.Contains("DDS unsupported; stubbing 'a.dds.tga'"));
  reports.Clear();
  DGlobals().texturesOn = false;
  EXPECT_TRUE(m.AddBitMap("b.tga"));
  EXPECT_EQ(0, reports.Problems());
}

TEST_F(Texture, BigOnesAreScaledDown)
{
  const std::string path = dir.Path("big.tga");
  WritePicture(path, 100, 40);
  const struct
  {
    int divider, max, wid, hgt;
  } cases[] = {{1, 100, 100, 40}, {1, 64, 64, 64}, {2, 1024, 64, 32}, {4, 16, 16, 16}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.divider * 10000 + c.max);
    DGlobals().textureDivider = c.divider;
    DGlobals().maxTextureWidth = DGlobals().maxTextureHeight = c.max;
    bool found = false;
    const auto picture = d3LoadTextureMap(path, &found);
    EXPECT_TRUE(found);
    EXPECT_EQ(c.wid, picture->GetWidth());
    EXPECT_EQ(c.hgt, picture->GetHeight());
  }
}

TEST_F(Texture, StubColoursGoRound)
{
  std::vector<uint32_t> colors;
  for (int i = 0; i < 9; ++i) {
    QColor color;
    d3MakeStubImage(1)->GetColorAt(0, 0, color);
    colors.push_back(color.GetRGBA());
  }
  EXPECT_EQ(colors[0], colors[8]);
  for (int i = 1; i < 8; ++i)
    EXPECT_NE(colors[0], colors[static_cast<size_t>(i)]);
  d3MakeStubImage(5);
  EXPECT_TRUE(reports.Contains("DMakeStubImage(5) unknown; using type 0 instead"));
}

TEST_F(Texture, PoolSharesWhatIsInUse)
{
  DGlobals().poolOn = true;
  DGlobals().texturesOn = false;
  DMaterial a;
  DMaterial b;
  a.AddBitMap("x/a.tga");
  b.AddBitMap("x/a.tga");
  EXPECT_EQ(a.texture[0], b.texture[0]);
  b.AddBitMap("y/a.tga"); // the whole path counts
  EXPECT_NE(a.texture[0], b.texture[1]);
  DTexturePool& pool = DGlobals().texturePool;
  int seen = 0;
  pool.FindAll("x/*", [&](DTexture&) { ++seen; });
  EXPECT_EQ(1, seen);
  a.texture.clear();
  b.texture.clear();
  EXPECT_EQ(nullptr, pool.Find("x/a.tga")); // it keeps none alive
  DTexture other;
  for (int i = 0; i < DTexturePool::MAX_TEXTURES; ++i)
    pool.Add(std::to_string(i), &other);
  EXPECT_EQ(0, reports.Count("max reached"));
  pool.Add("one more", &other);
  EXPECT_TRUE(reports.Contains("DTexturePool:Add(); max reached (3000)"));
  pool.Remove(nullptr);
  EXPECT_TRUE(reports.Contains("DTexturePool:Remove() null arg\n"));
  pool.Remove(&other);
  EXPECT_EQ(0, pool.Count());
}

TEST_F(Texture, CountsItsUsers)
{
  DTexturePtr first = std::make_unique<DTexture>();
  DTexture* texture = first.get();
  texture->SetName("t");
  DTexturePtr second = first;
  EXPECT_EQ(2, texture->GetRefCount());
  first = second;
  second = std::move(first);
  EXPECT_EQ(1, texture->GetRefCount());
  EXPECT_FALSE(first);
  DGlobals().texturePool.Add("pooled", texture);
  second.reset();
  EXPECT_FALSE(DGlobals().texturePool.Find("pooled")); // gone with its last user
  {
    DTexture broken;
    broken.SetName("b");
    EXPECT_FALSE(broken.Detach());
    EXPECT_TRUE(reports.Contains("DTexture:Detach(); refCount<0 (refCount=-1); too many Detach() calls"));
    broken.Attach();
    broken.Attach();
  }
  EXPECT_TRUE(reports.Contains("DTexture dtor (b); reference count was still 1! Use D3_DETACH_TEXTURE (Detach()), not "
                               "delete!"));
}

TEST_F(Texture, NothingIsMadeWithoutAContext)
{
  DTexture texture;
  texture.SetName("t");
  texture.Select();
  EXPECT_EQ(0u, texture.glTexture);
  EXPECT_TRUE(reports.Contains("DTexture:Select(); no OpenGL context yet"));
  texture.SetSize(1, 2);
  texture.SetSize(3, 4);
  EXPECT_EQ(1, texture.width);
  EXPECT_TRUE(reports.Contains("DTexture::SetSize() called twice for the same object (t)"));
}

TEST_F(Texture, NamesOutOfFilesStayInside)
{
  const struct
  {
    const char* name;
    const char* inside;
  } cases[] = {{"a.tga", "a.tga"},
               {"sub/a.tga", "sub/a.tga"},
               {"../../etc/x.tga", "x.tga"},
               {"/etc/x.tga", "x.tga"},
               {"c:\\maps\\x.tga", "x.tga"},
               {"sub/../../x", "x"},
               {"..", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(c.inside, d3InsideName(c.name)) << c.name;
}

} // namespace
