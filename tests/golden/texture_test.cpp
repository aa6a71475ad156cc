#include "foundation/qfile.h"
#include "geometry/ddds.h"
#include "geometry/dpipe.h"
#include "geometry/dtexture.h"
#include "geometry/dtexture3d.h"
#include "golden/glwindow.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <epoxy/gl.h>

namespace {

// A level of the texture as OpenGL has it, the top row first.
std::vector<uint8_t> FromTop(DTexture& texture)
{
  texture.Select();
  const size_t row = static_cast<size_t>(texture.width) * 4;
  std::vector<uint8_t> pixels(row * static_cast<size_t>(texture.height)), turned;
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  for (size_t at = pixels.size(); at > 0; at -= row)
    turned.insert(turned.end(), pixels.begin() + static_cast<std::ptrdiff_t>(at - row),
                  pixels.begin() + static_cast<std::ptrdiff_t>(at));
  return turned;
}

} // namespace

// Another program writes the files and reads them again; what OpenGL makes of ours is the same picture, upright.
TEST(TexturesInOpenGL, CompressedOnesStandUpright)
{
  GlWindow window(64, 64);
  if (!window.IsOpen())
    GTEST_SKIP() << "no software renderer";
  TempDir dir;
  const std::string convert = "cd '" + dir.Path() + "' && convert ";
  ASSERT_EQ(0, std::system((convert + "-size 32x32 gradient:red-blue -alpha on -channel A -evaluate set 70% +channel "
                                      "\\( -size 8x4 xc:white -geometry +4+2 \\) -composite -write s.png "
                                      "-define dds:mipmaps=3 -define dds:compression=dxt5 -write dxt5.dds -alpha off "
                                      "-define dds:compression=dxt1 dxt1.dds")
                               .c_str()));
  for (const char* name : {"dxt1", "dxt5"}) {
    SCOPED_TRACE(name);
    const std::string path = dir.Path(std::string(name) + ".dds");
    ASSERT_EQ(0, std::system((convert + name + ".dds -depth 8 rgba:" + name).c_str()));
    DDDS dds;
    ASSERT_TRUE(dds.Load(path));
    EXPECT_LT(1u, dds.Levels().size());
    const auto texture = dds.CreateTexture();
    const std::vector<uint8_t> drawn = FromTop(*texture);
    std::string expected;
    ASSERT_TRUE(QReadFile(dir.Path(name), expected));
    ASSERT_EQ(expected.size(), drawn.size());
    int largest = 0;
    for (size_t i = 0; i < drawn.size(); ++i)
      largest = std::max(largest, std::abs(drawn[i] - static_cast<uint8_t>(expected[i])));
    EXPECT_LE(largest, 8); // the two mix colours with a little difference
    EXPECT_EQ(0, window.TakeErrors());
  }
}

TEST(TexturesInOpenGL, PicturesGoThroughABufferAndComeFromTheFrame)
{
  GlWindow window(64, 64);
  if (!window.IsOpen())
    GTEST_SKIP() << "no software renderer";
  auto picture = std::make_unique<QBitMap>(32, 4, 4);
  picture->Fill(nullptr, QColor(10, 200, 30));
  DBitMapTexture texture(std::move(picture));
  ASSERT_TRUE(texture.EnablePbo());
  texture.pboData[0] = std::byte{77};
  EXPECT_TRUE(texture.ApplyPbo());
  std::vector<uint8_t> pixels = FromTop(texture);
  EXPECT_EQ(77, pixels[12 * 4]); // the lower left pixel
  EXPECT_EQ(200, pixels[1]);
  // A picture of another size takes its place at once.
  picture = std::make_unique<QBitMap>(32, 8, 2);
  picture->Fill(nullptr, QColor(1, 2, 3));
  texture.FromBitMap(std::move(picture));
  EXPECT_FALSE(texture.ApplyPbo()); // whose copy has the former size
  pixels = FromTop(texture);
  ASSERT_EQ(8u * 2 * 4, pixels.size());
  EXPECT_EQ(3, pixels[pixels.size() - 2]);
  EXPECT_EQ(4, texture.bytesPerPixel);
  DTexture plain; // filled by its maker
  plain.SetSize(2, 2);
  EXPECT_EQ(16u, FromTop(plain).size());
  GLint wid = 0;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &wid);
  EXPECT_EQ(2, wid);
  DTexture3D strip(QBitMap(32, 32, 2));
  EXPECT_FALSE(strip.EnablePbo()); // sixteen slices don't fit where one does
  glClearColor(0, 0, 1, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  DDrawableTexture frame(16, 8);
  frame.CopyFrom(4, 4);
  pixels = FromTop(frame);
  EXPECT_EQ(16u * 8 * 4, pixels.size());
  EXPECT_EQ(255, pixels[2]);
  EXPECT_EQ(0, window.TakeErrors());
}

TEST(PipeInOpenGL, TellsWhatChangedBehindItsBack)
{
  GlWindow window(64, 64);
  if (!window.IsOpen())
    GTEST_SKIP() << "no software renderer";
  ReportCapture reports;
  DPipe pipe;
  pipe.Enable(GL_BLEND);
  pipe.Disable(GL_FOG);
  pipe.DepthMask(true);
  pipe.CullFace(GL_FRONT);
  pipe.BlendFunc(GL_SRC_ALPHA, GL_ONE);
  pipe.AlphaFunc(GL_GEQUAL, 0.3f);
  pipe.PolygonOffset(-1.3f, 2);
  pipe.EnableArray(DPipe::NORMAL_ARRAY);
  pipe.EnableArray(DPipe::TANGENT_ARRAY);
  pipe.SelectUnit(2);
  pipe.DisableTexture(GL_TEXTURE_3D);
  pipe.EnableTexCoordArray();
  pipe.TexEnv(GL_ADD);
  EXPECT_EQ(0, pipe.SyncCheck()) << reports.All();
  const struct
  {
    void (*change)();
    const char* text;
  } changes[] = {
      {[] { glDisable(GL_BLEND); }, "DPipe: GL_BLEND was expected to be on"},
      {[] { glEnable(GL_FOG); }, "DPipe: GL_FOG was expected to be off"},
      {[] { glDepthMask(GL_FALSE); }, "DPipe: GL_DEPTH_WRITEMASK was expected to be on"},
      {[] { glCullFace(GL_BACK); }, "DPipe: GL_CULL_FACE_MODE was expected to be 0x404"},
      {[] { glBlendFunc(GL_SRC_ALPHA, GL_ZERO); }, "DPipe: GL_BLEND_DST was expected to be 0x1"},
      {[] { glAlphaFunc(GL_GEQUAL, 0.4f); }, "DPipe: GL_ALPHA_TEST_REF was expected to be 0.3"},
      {[] { glPolygonOffset(1.3f, 2); }, "DPipe: GL_POLYGON_OFFSET_FACTOR was expected to be -1.3"},
      {[] { glDisableClientState(GL_NORMAL_ARRAY); }, "DPipe: GL_NORMAL_ARRAY was expected to be on"},
      {[] { glDisableVertexAttribArray(DPipe::TANGENT_ATTRIBUTE); }, "DPipe: tangent array was expected to be on"},
      {[] { glEnable(GL_TEXTURE_3D); }, "DPipe: GL_TEXTURE_3D of unit 2 was expected to be off"},
      {[] { glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_DECAL); },
       "DPipe: GL_TEXTURE_ENV_MODE of unit 2 was expected to be 0x104"},
      {[] { glDisableClientState(GL_TEXTURE_COORD_ARRAY); },
       "DPipe: GL_TEXTURE_COORD_ARRAY of unit 2 was expected to be on"},
      {[] { glActiveTexture(GL_TEXTURE0); }, "DPipe: GL_ACTIVE_TEXTURE was expected to be 0x84c2"},
  };
  int differences = 0;
  for (const auto& c : changes) {
    c.change();
    EXPECT_EQ(++differences, pipe.SyncCheck());
    EXPECT_TRUE(reports.Contains(c.text)) << c.text;
  }
  DThePipe().Invalidate();
  EXPECT_EQ(0, window.TakeErrors());
}
