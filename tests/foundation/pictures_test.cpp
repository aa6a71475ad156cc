#include "foundation/qbmp.h"
#include "foundation/qfile.h"
#include "foundation/qimage.h"
#include "foundation/qjpg.h"
#include "foundation/qmip.h"
#include "foundation/qpsd.h"
#include "foundation/qrgb.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

// A picture in which each pixel tells its place: red across, green down, blue in stripes.
void WriteSource(const TempDir& dir, const char* name, bool transparent)
{
  QBitMap picture(32, 37, 21);
  for (int y = 0; y < 21; ++y)
    for (int x = 0; x < 37; ++x)
      picture.SetColorAt(x, y, QColor(x * 6, y * 12, x % 5 * 50, transparent ? 255 - x * 5 : 255));
  ASSERT_TRUE(picture.Write(dir.Path(name).c_str(), QBitMap::TGA));
}

bool Convert(const TempDir& dir, const std::string& arguments)
{
  return std::system(("cd '" + dir.Path() + "' && convert " + arguments).c_str()) == 0;
}

// The pixels from the top, red, green, blue, alpha.
std::vector<uint8_t> FromTop(const QBitMap& picture)
{
  std::vector<uint8_t> bytes;
  for (int y = picture.GetHeight() - 1; y >= 0; --y) {
    const uint8_t* row = picture.GetPixelAddress(0, y);
    bytes.insert(bytes.end(), row, row + static_cast<size_t>(picture.GetWidth()) * 4);
  }
  return bytes;
}

std::vector<uint8_t> Bytes(const std::string& path)
{
  std::string text;
  EXPECT_TRUE(QReadFile(path, text));
  return {text.begin(), text.end()};
}

int LargestDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b)
{
  int largest = a.size() == b.size() ? 0 : 999;
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

std::vector<std::byte> Corpus(const std::string& name)
{
  std::vector<std::byte> bytes;
  EXPECT_TRUE(QReadFile(PAVEX_SOURCE_DIR "/fuzzing/corpus/" + name, bytes));
  return bytes;
}

} // namespace

// What another program writes in each format reads to the pixels that it itself reads.
TEST(Pictures, OfAnotherProgramReadTheSame)
{
  const struct
  {
    const char* file;
    const char* options; // for a copy of the picture
    int tolerance;
  } cases[] = {
      {"plain.tga", "-compress none", 0},
      {"packed.tga", "-compress RLE", 0},
      {"packed24.tga", "-compress RLE -alpha off", 0},
      {"24.bmp", "-alpha off -type TrueColor", 0},
      {"sgi:plain.rgb", "-depth 8 -compress none", 0},
      {"sgi:packed.rgb", "-depth 8 -compress RLE", 0},
      {"sgi:three.rgb", "-alpha off -depth 8 -compress RLE", 0},
      {"color.jpg", "-alpha off -quality 95", 0},
      {"coarse.jpeg", "-alpha off -quality 30 -sampling-factor 2x2", 0},
      {"progressive.jpg", "-alpha off -interlace plane", 0},
      {"grey.jpg", "-alpha off -colorspace gray", 0},
      {"layers.psd", "-delete 0 opaque.tga opaque.tga -depth 8 -compress RLE", 1}, // composing takes one off
      {"plainlayers.psd", "-delete 0 opaque.tga opaque.tga -depth 8 -compress none", 1},
  };
  const auto nameOf = [](const std::string& file) { return file.substr(file.find(':') + 1); };
  TempDir dir;
  WriteSource(dir, "source.tga", true);
  WriteSource(dir, "opaque.tga", false);
  // All in one run each: the program takes longer to start than to convert.
  std::string write = "-respect-parentheses source.tga", read = write;
  for (const auto& c : cases) {
    write += std::string(" \\( +clone ") + c.options + " -write " + c.file + " -delete 0--1 \\)";
    read += std::string(" \\( ") + c.file + (nameOf(c.file).ends_with("psd") ? "[0]" : "") +
            " -auto-orient -depth 8 -write rgba:" + nameOf(c.file) + ".raw +delete \\)";
  }
  ASSERT_TRUE(Convert(dir, write + " null:"));
  ASSERT_TRUE(Convert(dir, read + " null:"));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    const QImage picture(dir.Path(nameOf(c.file)));
    EXPECT_FALSE(picture.LoadFailed());
    EXPECT_LE(LargestDifference(Bytes(dir.Path(nameOf(c.file) + ".raw")), FromTop(picture)), c.tolerance);
  }
}

TEST(Pictures, WrittenOnesAreReadByAnotherProgram)
{
  TempDir dir;
  WriteSource(dir, "source.tga", true);
  const QImage source(dir.Path("source.tga"));
  ASSERT_TRUE(source.Write(dir.Path("out.tga").c_str(), QBitMap::TGA));
  ASSERT_TRUE(source.Write(dir.Path("out.jpg").c_str(), QBitMap::JPG, 100));
  ASSERT_TRUE(Convert(dir, "out.tga -auto-orient -depth 8 -write rgba:tga +delete out.jpg -depth 8 rgba:jpg"));
  std::vector<uint8_t> expected = FromTop(source);
  EXPECT_EQ(expected, Bytes(dir.Path("tga")));
  for (size_t i = 3; i < expected.size(); i += 4)
    expected[i] = 255;
  const std::vector<uint8_t> lossy = Bytes(dir.Path("jpg"));
  ASSERT_EQ(expected.size(), lossy.size());
  int difference = 0;
  for (size_t i = 0; i < lossy.size(); ++i)
    difference += std::abs(expected[i] - lossy[i]);
  EXPECT_LT(difference, 12 * static_cast<int>(lossy.size())); // the stripes are finer than its blocks of colour
  ASSERT_TRUE(source.Write(dir.Path("out.rgb").c_str(), QBitMap::RGB));
  EXPECT_EQ(FromTop(source), FromTop(QImage(dir.Path("out.rgb"))));
  const std::string rgb = FileText(dir.Path("out.rgb"));
  EXPECT_EQ(dir.Path("out.rgb").substr(0, 79), std::string(rgb.c_str() + 24));
  QBitMap wide(32, 8193, 1);
  ReportCapture reports;
  EXPECT_FALSE(wide.Write(dir.Path("wide.rgb").c_str(), QBitMap::RGB));
  EXPECT_TRUE(reports.Contains("QBitMap:Write; image too wide"));
  EXPECT_FALSE(wide.Write(dir.Path("no/such/place.jpg").c_str(), QBitMap::JPG));
  EXPECT_TRUE(reports.Contains("place.jpg); can't open file"));
}

TEST(Pictures, BitmapsOfOtherKindsStayBlack)
{
  QBitMap picture;
  std::vector<std::byte> grey = Corpus("bmp/8");
  ASSERT_TRUE(QReadBMP(grey, picture, "grey"));
  EXPECT_EQ(9, picture.GetWidth());
  const size_t pixels = std::to_integer<size_t>(grey[10]) | std::to_integer<size_t>(grey[11]) << 8;
  const auto index = std::to_integer<uint8_t>(grey[pixels + 12 + 8]); // second row of 12 bytes, the last pixel
  EXPECT_THAT(std::vector<uint8_t>(picture.GetPixelAddress(8, 1), picture.GetPixelAddress(8, 1) + 4),
              testing::ElementsAre(index, index, index, 255)); // the palette isn't looked at
  // Rows without padding are taken tight.
  grey.resize(pixels + 27);
  ASSERT_TRUE(QReadBMP(grey, picture, "tight"));
  grey.resize(pixels + 26);
  ReportCapture reports;
  EXPECT_FALSE(QReadBMP(grey, picture, "short"));
  EXPECT_TRUE(QReadBMP(Corpus("bmp/32"), picture, "deep.bmp"));
  EXPECT_TRUE(reports.Contains("QImage:ReadBMP(deep.bmp); unsupported #bits (32) or compression (3)"));
  EXPECT_EQ(5, picture.GetWidth());
  EXPECT_FALSE(QIsReadableBMP(Corpus("bmp/32")));
}

TEST(Pictures, DamagedFilesAreRefused)
{
  ReportCapture reports;
  TempDir dir;
  const struct
  {
    const char* corpus;
    const char* file;
    const char* report;
  } cases[] = {
      {"jpg/cut", "cut.jpg", "QImage:ReadJPG("},
      {"mip/other_map", "a.mip", "MIP with CMAP size!=64; unexpected"},
      {"mip/huge_lie", "b.mip", "pixels don't fit"},
      {"mip/true_color", "c.mip", "MIP type 3 not yet supported"},
      {"bmp/24", "d.mip", "MIP image doesn't have correct header"},
      {"bmp/24", "e.psd", "Not a PSD file"},
      {"bmp/24", "f.rgb", "no header of a picture"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.corpus);
    std::filesystem::copy_file(std::string(PAVEX_SOURCE_DIR "/fuzzing/corpus/") + c.corpus, dir.Path(c.file));
    reports.Clear();
    EXPECT_TRUE(QImage(dir.Path(c.file)).LoadFailed());
    EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    EXPECT_TRUE(reports.Contains("QImage ctor: can't load '" + dir.Path(c.file) + "'"));
  }
  for (const char* name : {"rgb/run_length", "rgb/plain", "psd/packed", "psd/plain", "mip/indexed", "bmp/24"})
    for (size_t length = 0; length + 1 < Corpus(name).size(); ++length) {
      QBitMap picture;
      auto bytes = Corpus(name);
      bytes.resize(length);
      const std::string_view kind = std::string_view(name).substr(0, 3);
      QPSD psd;
      // Each ends cleanly; without pixels there is no picture.
      const bool read = kind == "rgb"   ? QReadRGB(bytes, picture, name)
                        : kind == "mip" ? QReadMIP(bytes, picture, name)
                        : kind == "bmp" ? QReadBMP(bytes, picture, name)
                                        : psd.Load(bytes);
      EXPECT_FALSE(read && length < 54) << name << " " << length;
    }
}

// The header promises it, but its pixels can't be told; nothing of an earlier picture shows in it.
TEST(Pictures, JpegsOfTwoComponentsAreBlack)
{
  QBitMap white(32, 600, 600); // of a size whose memory is kept
  white.Fill(nullptr, QColor(255, 255, 255, 255));
  std::string file = QWriteJPG(white, 50, "white");
  white.Free();
  const size_t frame = file.find("\xFF\xC0");
  ASSERT_LT(frame, file.size());
  file[frame + 3] = 8 + 2 * 3;
  file[frame + 9] = 2;
  file.erase(frame + 10 + 2 * 3, 3);
  const size_t scan = file.find("\xFF\xDA");
  ASSERT_LT(scan, file.size());
  file[scan + 3] = 6 + 2 * 2;
  file[scan + 4] = 2;
  file.erase(scan + 5 + 2 * 2, 2);
  ReportCapture reports;
  QBitMap picture;
  EXPECT_TRUE(QReadJPG(std::as_bytes(std::span(file)), picture, "two"));
  EXPECT_TRUE(reports.Contains("QImage:ReadJPG(two); unsupported number of components (2)")) << reports.All();
  EXPECT_EQ(std::vector<uint8_t>(600 * 600 * 4), FromTop(picture));
}

TEST(Pictures, IndexedOnesRunFromTheTop)
{
  QBitMap picture;
  ASSERT_TRUE(QReadMIP(Corpus("mip/indexed"), picture, "indexed"));
  const std::vector<uint8_t> pixels = FromTop(picture);
  ASSERT_EQ(32u, pixels.size());
  for (uint8_t i = 0; i < 8; ++i) // the map holds blue i * 16, green i * 8, red i * 4, alpha 255 - i
    EXPECT_THAT(std::vector<uint8_t>(pixels.begin() + 4 * i, pixels.begin() + 4 * i + 4),
                testing::ElementsAre(i * 4, i * 8, i * 16, 255 - i));
}

// A green layer without alpha, and a half transparent red one over its middle.
TEST(Pictures, LayersComposeInOrder)
{
  const std::vector<std::byte> file = Corpus("psd/packed"); // its layers lie in there
  QPSD psd;
  ASSERT_TRUE(psd.Load(file));
  ASSERT_EQ(2u, psd.Layers().size());
  QBitMap picture(32, psd.GetWidth(), psd.GetHeight());
  psd.Render(picture);
  QColor below, above;
  picture.GetColorAt(0, 0, below);
  picture.GetColorAt(3, 1, above);
  const int green = below.GetG();
  EXPECT_NEAR(127, green, 2); // "green" is half of it
  EXPECT_EQ(0, below.GetA()); // only an alpha channel sets it
  const auto over = [](int value, int old, int a) { return (value * a + old * (255 - a)) >> 8; };
  const int a = 128;
  EXPECT_NEAR(over(255, 0, a), above.GetR(), 1);
  EXPECT_NEAR(over(0, green, a), above.GetG(), 1);
  EXPECT_EQ(a * a >> 8, above.GetA());
}
