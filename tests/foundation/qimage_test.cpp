#include "foundation/qimage.h"

#include "foundation/qtga.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

namespace {

struct TgaKind
{
  int type;
  int depth;
  int descriptor = 0;
  int idLength = 0;
  int colorMap = 0;
};

std::string TgaFile(const TgaKind& k, int wid, int hgt, std::string_view body)
{
  std::string f(18, '\0');
  f[0] = static_cast<char>(k.idLength);
  f[1] = static_cast<char>(k.colorMap);
  f[2] = static_cast<char>(k.type);
  f[12] = static_cast<char>(wid & 255);
  f[13] = static_cast<char>(wid >> 8);
  f[14] = static_cast<char>(hgt & 255);
  f[15] = static_cast<char>(hgt >> 8);
  f[16] = static_cast<char>(k.depth);
  f[17] = static_cast<char>(k.descriptor);
  f.append(static_cast<size_t>(k.idLength), '#');
  return f.append(body);
}

bool Decode(const std::string& file, QBitMap& picture)
{
  // A block of just this size, so that the address sanitizer sees one byte too many.
  const std::vector<char> exact(file.begin(), file.end());
  return QReadTGA(std::as_bytes(std::span(exact)), picture, "test.tga");
}

// The pixels as RRGGBBAA, from the top left, rows divided by "/".
std::string Pixels(const QBitMap& picture)
{
  std::string all;
  for (int y = 0; y < picture.GetHeight(); ++y) {
    all += y > 0 ? "/" : "";
    for (int x = 0; x < picture.GetWidth(); ++x) {
      QColor c;
      picture.GetColorAt(x, y, c);
      char text[12];
      std::snprintf(text, sizeof text, "%s%08X", x > 0 ? " " : "", c.GetRGBA());
      all += text;
    }
  }
  return all;
}

} // namespace

TEST(TgaRead, EachKindOfFile)
{
  const struct
  {
    const char* what;
    TgaKind kind;
    int wid;
    int hgt;
    std::string body;
    const char* pixels; // top row first
  } cases[] = {
      {"32 bits, bottom first", {2, 32}, 1, 2, "\x03\x02\x01\x04\x13\x12\x11\x14", "11121314/01020304"},
      {"32 bits, top first", {2, 32, 32}, 1, 2, "\x03\x02\x01\x04\x13\x12\x11\x14", "01020304/11121314"},
      {"24 bits, with an id", {2, 24, 0, 5}, 2, 1, "\x03\x02\x01\x13\x12\x11", "010203FF 111213FF"},
      {"grey", {3, 8}, 2, 1, "\x40\x80", "40404040 80808080"},
      {"a run and a raw packet",
       {10, 24},
       3,
       1,
       std::string("\x81\x03\x02\x01\x00\x13\x12\x11", 8),
       "010203FF 010203FF 111213FF"},
      {"rows of their own, top first",
       {10, 32, 32},
       2,
       2,
       "\x81\x03\x02\x01\x04\x81\x13\x12\x11\x14",
       "01020304 01020304/11121314 11121314"},
      {"a run over a row's end",
       {10, 24},
       2,
       2,
       std::string("\x82\x03\x02\x01\x00\x13\x12\x11", 8),
       "010203FF 111213FF/010203FF 010203FF"},
      {"a run past the picture's end", {10, 24}, 2, 1, "\xFF\x03\x02\x01", "010203FF 010203FF"},
      {"raw pixels past the picture's end", {10, 24}, 1, 1, "\x7F\x03\x02\x01", "010203FF"},
      {"bytes behind the picture", {3, 8}, 1, 1, "\x40TRUEVISION", "40404040"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ReportCapture reports;
    QBitMap picture(32, 1, 1);
    ASSERT_TRUE(Decode(TgaFile(c.kind, c.wid, c.hgt, c.body), picture));
    EXPECT_EQ(c.pixels, Pixels(picture));
    EXPECT_EQ(32, picture.GetDepth());
    EXPECT_EQ(0, reports.Problems());
  }
}

TEST(TgaRead, RefusesWhatIsNotAPicture)
{
  const struct
  {
    const char* what;
    std::string file;
    const char* report;
  } cases[] = {
      {"colour map", TgaFile({2, 24, 0, 0, 1}, 1, 1, "abc"), "QImage:ReadTGA(test.tga); colormap is not supported"},
      {"too wide", TgaFile({3, 8}, 16385, 1, std::string(16385, 'x')),
       "QImage:ReadTGA(test.tga); too wide (max width=16384)"},
      {"16 bits", TgaFile({2, 16}, 1, 1, "ab"), "QImage:ReadTGA(); no image loader for type 2, pixDepth 16"},
      {"grey run-length", TgaFile({11, 8}, 1, 1, "ab"), "QImage:ReadTGA(); no image loader for type 11, pixDepth 8"},
      {"grey at 24 bits", TgaFile({3, 24}, 1, 1, "abc"), "QImage:ReadTGA(); no image loader for type 3, pixDepth 24"},
      {"no pixels", TgaFile({2, 24}, 0, 7, "abc"), "no pixels"},
      {"huge, empty", TgaFile({2, 32}, 16384, 16384, "ab"), "don't fit in 2 bytes"},
      {"huge runs, empty",
       TgaFile({10, 32}, 16384, 16384,
               "\xFF"
               "abcd"),
       "don't fit in 5 bytes"},
      {"more than memory can address",
       TgaFile({10, 32}, 16384, 65535,
               "\xFF"
               "abcd"),
       "out of memory"},
      {"id only", TgaFile({2, 24, 0, 200}, 1, 1, "").substr(0, 50), "don't fit in 0 bytes"},
      {"nothing", "", "no header"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ReportCapture reports;
    QBitMap picture;
    EXPECT_FALSE(Decode(c.file, picture));
    EXPECT_EQ(0, picture.GetMemSize()); // nothing was allocated for it
    EXPECT_EQ(1, reports.Count(c.report)) << reports.All();
  }
}

TEST(TgaRead, EveryShortenedFileEndsCleanly)
{
  const std::string files[] = {TgaFile({2, 32}, 3, 2, std::string(24, 'x')),
                               TgaFile({2, 24, 32, 3}, 3, 2, std::string(18, 'x')),
                               TgaFile({3, 8}, 3, 2, std::string(6, 'x')),
                               TgaFile({10, 24}, 3, 2,
                                       std::string("\x82"
                                                   "abc\x02"
                                                   "abcdefghi",
                                                   14))};
  for (const std::string& whole : files)
    for (size_t length = 0; length <= whole.size(); ++length) {
      SCOPED_TRACE(length);
      ReportCapture reports;
      QBitMap picture;
      EXPECT_EQ(length == whole.size(), Decode(whole.substr(0, length), picture));
      EXPECT_EQ(length == whole.size() ? 0 : 1, reports.Problems());
    }
}

namespace {

// Pixels of four bytes in file order, mostly in short runs.
std::string RandomPixels(std::mt19937& random, size_t count)
{
  std::string pixels;
  while (pixels.size() < count * 4) {
    char pixel[4];
    for (char& c : pixel)
      c = static_cast<char>(random());
    for (size_t same = random() % 8 == 0 ? random() % 300 : random() % 3 + 1; same > 0; --same)
      pixels.append(pixel, 4);
  }
  return pixels.substr(0, count * 4);
}

// Packets that heed no rows; the last may be longer than the picture.
std::string PackRuns(std::mt19937& random, const std::string& pixels)
{
  std::string body;
  const size_t count = pixels.size() / 4;
  for (size_t at = 0; at < count;) {
    size_t same = 1;
    while (same < 128 && at + same < count && pixels.compare(4 * at, 4, pixels, 4 * (at + same), 4) == 0)
      ++same;
    const size_t raw = std::min(count - at, random() % (random() % 8 == 0 ? 128 : 5) + 1);
    const bool run = same > 1 || random() % 16 == 0;
    const bool last = at + (run ? same : raw) == count;
    body += static_cast<char>(last ? (run ? 0xFF : 0x7F) : run ? 0x80 | (same - 1) : raw - 1);
    body += pixels.substr(4 * at, run ? 4 : 4 * raw);
    at += run ? same : raw;
  }
  return body;
}

// Row by row and pixel by pixel, as a picture's memory has them.
std::vector<uint8_t> InMemory(const std::string& pixels, int wid, int hgt, bool topFirst)
{
  std::vector<uint8_t> memory;
  for (int row = 0; row < hgt; ++row)
    for (int x = 0; x < wid; ++x) {
      const auto at = 4 * static_cast<size_t>((topFirst ? hgt - 1 - row : row) * wid + x);
      for (const size_t channel : {2u, 1u, 0u, 3u})
        memory.push_back(static_cast<uint8_t>(pixels[at + channel]));
    }
  return memory;
}

std::vector<uint8_t> Memory(const QBitMap& picture)
{
  return {picture.GetBuffer(), picture.GetBuffer() + picture.GetMemSize()};
}

} // namespace

// Of widths around what is copied at a time, and of files larger than what is read at a time.
TEST(TgaRead, IsTheSameAsPixelByPixel)
{
  const int sizes[][2] = {{1, 1},  {1, 40},  {3, 5},     {15, 3},    {16, 2},     {17, 9},
                          {47, 7}, {129, 5}, {400, 401}, {1025, 77}, {1027, 1025}};
  const TempDir dir;
  std::mt19937 random(1);
  for (const auto& [wid, hgt] : sizes)
    for (const int descriptor : {0, 32}) {
      SCOPED_TRACE(std::to_string(wid) + "x" + std::to_string(hgt) + ", descriptor " + std::to_string(descriptor));
      const std::string pixels = RandomPixels(random, static_cast<size_t>(wid * hgt));
      const std::string files[] = {TgaFile({2, 32, descriptor, 3}, wid, hgt, pixels),
                                   TgaFile({10, 32, descriptor, 3}, wid, hgt, PackRuns(random, pixels))};
      const std::vector<uint8_t> expected = InMemory(pixels, wid, hgt, descriptor != 0);
      for (const std::string& file : files) {
        QBitMap picture;
        ASSERT_TRUE(Decode(file, picture));
        EXPECT_TRUE(expected == Memory(picture)) << "from memory, kind " << int{file[2]};
        EXPECT_TRUE(expected == Memory(QImage(dir.Write("a.tga", file)))) << "from the disk, kind " << int{file[2]};
        ReportCapture reports;
        EXPECT_TRUE(QImage(dir.Write("cut.tga", file.substr(0, file.size() - 1))).LoadFailed());
        EXPECT_EQ(1, reports.Count("don't fit in")) << reports.All();
      }
    }
}

TEST(TgaWrite, StoredBytesAndBack)
{
  const TempDir dir;
  QBitMap picture(32, 2, 2);
  picture.SetColorAt(0, 0, QColor(1, 2, 3, 4));
  picture.SetColorAt(1, 1, QColor(250, 251, 252, 253));
  ASSERT_TRUE(picture.Write(dir.Path("c.tga").c_str(), QBitMap::TGA));
  const std::string header("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\2\0\x20\x08", 18);
  const std::string zero(4, '\0');
  EXPECT_EQ(header + zero + "\xFC\xFB\xFA\xFD" + "\x03\x02\x01\x04" + zero, FileText(dir.Path("c.tga")));
  QImage back(dir.Path("c.tga"));
  EXPECT_FALSE(back.LoadFailed());
  EXPECT_EQ(Pixels(picture), Pixels(back));

  setenv("PAVEX_TEST_OUT", dir.Path().c_str(), 1);
  ASSERT_TRUE(picture.Write("%PAVEX_TEST_OUT%/g.tga", QBitMap::TGA_GREY));
  const std::string grey("\0\0\3\0\0\0\0\0\0\0\0\0\2\0\2\0\x08\x08\0\xFA\1\0", 22);
  EXPECT_EQ(grey, FileText(dir.Path("g.tga")));
}

TEST(TgaWrite, Refusals)
{
  const TempDir dir;
  const std::string old = dir.Write("old.tga", "old");
  ReportCapture reports;
  EXPECT_TRUE(QBitMap(32, 8192, 1).Write(dir.Path("wide.tga").c_str(), QBitMap::TGA));
  EXPECT_FALSE(QBitMap(32, 8193, 1).Write(old.c_str(), QBitMap::TGA));
  EXPECT_TRUE(reports.Contains("QBitMap:WriteTGA(); image too wide"));
  EXPECT_FALSE(QBitMap(32, 1, 1).Write(old.c_str(), 9));
  EXPECT_TRUE(reports.Contains("QBitMap:Write(); unsupported format 9 to write '" + old + "'"));
  EXPECT_FALSE(QBitMap(8, 1, 1).Write(old.c_str(), QBitMap::TGA));
  reports.Clear();
  EXPECT_FALSE(QBitMap(32, 1, 1).Write(dir.Path("no/dir.tga").c_str(), QBitMap::TGA));
  EXPECT_EQ(0, reports.Problems()); // the caller knows what the file was for
  EXPECT_EQ("old", FileText(old));
}

TEST(QImageRead, TheNameChoosesTheReader)
{
  const TempDir dir;
  const std::string tga = TgaFile({3, 8}, 1, 1, "\x40");
  const struct
  {
    const char* name;
    bool loads;
    const char* pixels;
    const char* report; // beside the constructor's; null: none
  } cases[] = {{"a.tga", true, "40404040", nullptr},
               {"b.TGA.bak", true, "40404040", nullptr},
               {"c.rgb.tga", false, "", "QImage:ReadRGB("}, // ".RGB" is looked for first
               {"d.png", true, "", nullptr},
               {"e.jpg", false, "", "e.jpg); Not a JPEG file"},
               {"f.bmp", false, "", "QImage:ReadBMP("},
               {"g.txt", false, "", nullptr}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = dir.Write(c.name, tga);
    ReportCapture reports;
    const QImage image(path);
    EXPECT_EQ(!c.loads, image.LoadFailed());
    EXPECT_EQ(c.pixels, Pixels(image));
    EXPECT_EQ(path, image.GetName());
    EXPECT_EQ(c.loads ? 0 : 1, reports.Count("QImage ctor: can't load '" + path + "'"));
    EXPECT_EQ((c.loads ? 0 : 1) + (c.report ? 1 : 0), reports.Problems());
    EXPECT_TRUE(!c.report || reports.Contains(c.report));
  }
  ReportCapture reports;
  const QImage absent(dir.Path("absent.tga"), 32, 2, 1);
  EXPECT_TRUE(absent.LoadFailed());
  EXPECT_EQ(2, absent.GetWidth());
}

TEST(QBitMapPixels, YCountsFromTheTop)
{
  QBitMap picture(32, 2, 3);
  picture.SetColorAt(0, 0, QColor(1, 2, 3, 4));
  EXPECT_EQ(1, picture.GetPixelAddress(0, 2)[0]); // memory row 0 is the bottom
  ReportCapture reports;
  picture.SetColorAt(2, 0, QColor(9, 9, 9, 9));
  picture.SetColorAt(0, -1, QColor(9, 9, 9, 9));
  EXPECT_TRUE(reports.Contains("QBitMap:SetColorAt(2,0) out of range (2x3)"));
  EXPECT_EQ("01020304 00000000/00000000 00000000/00000000 00000000", Pixels(picture));
  QColor c;
  picture.GetColorAt(-5, -7, c); // the nearest edge pixel
  EXPECT_EQ(0x01020304u, c.GetRGBA());
}

TEST(QBitMapPixels, FillClipsAndKeepsAlpha)
{
  QBitMap picture(32, 3, 2);
  picture.Fill(nullptr, QColor(1, 1, 1, 1));
  const QRect inside{1, 0, 1, 1};
  picture.Fill(&inside, QColor(2, 2, 2, 2), true);
  EXPECT_EQ("01010101 02020201 01010101/01010101 01010101 01010101", Pixels(picture));
  EXPECT_TRUE(picture.HasTransparency());
  ReportCapture reports;
  const QRect outside{-1, -2, 9, 3};
  picture.Fill(&outside, QColor(3, 3, 3, 255));
  EXPECT_EQ("030303FF 030303FF 030303FF/01010101 01010101 01010101", Pixels(picture));
  EXPECT_TRUE(reports.Contains("r->x<0"));
  EXPECT_TRUE(reports.Contains("Fill r->x+r->wid>wid (0+8>3)"));
  EXPECT_TRUE(reports.Contains("r->y<0"));
  const QRect below{0, 1, 3, 5};
  picture.Fill(&below, QColor(4, 4, 4));
  EXPECT_TRUE(reports.Contains("Fill r->y+r->hgt>hgt (1+5>2)"));
  EXPECT_FALSE(picture.HasTransparency());
  const QRect away{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
  picture.Fill(&away, QColor(5, 5, 5));
  EXPECT_EQ("030303FF 030303FF 030303FF/040404FF 040404FF 040404FF", Pixels(picture));
  picture.Clear();
  EXPECT_EQ("00000000 00000000 00000000/00000000 00000000 00000000", Pixels(picture));
}

TEST(QBitMapMemory, AllocatesForeignAndImpossibleBlocks)
{
  uint8_t block[16] = {7};
  QBitMap picture;
  EXPECT_TRUE(picture.Alloc(32, 2, 2, 0, block));
  EXPECT_EQ(block, picture.GetBuffer());
  EXPECT_EQ(16, picture.GetMemSize());
  EXPECT_EQ(uint32_t{QBitMap::FOREIGN_MEMORY}, picture.GetFlags());
  picture.Free();
  EXPECT_EQ(7, block[0]);
  EXPECT_EQ(0, picture.GetWidth() + picture.GetHeight() + picture.GetDepth() + picture.GetMemSize());
  EXPECT_EQ(0u, picture.GetFlags());

  const int sizes[][3] = {{32, -1, 5}, {32, 30000, 30000}, {-8, 1, 1}, {32, INT32_MAX, INT32_MAX}};
  for (const auto& s : sizes) {
    ReportCapture reports;
    EXPECT_FALSE(picture.Alloc(s[0], s[1], s[2], 4));
    char text[120];
    std::snprintf(text, sizeof text, "QBitMap::Alloc() failed on %dx%d, depth %d, flags 4\n", s[1], s[2], s[0]);
    EXPECT_TRUE(reports.Contains(text)) << reports.All();
  }
}

TEST(QBitMapMemory, ResizeScalesOrReplaces)
{
  QBitMap picture(32, 4, 2);
  const QRect left{0, 0, 2, 2};
  picture.Fill(nullptr, QColor(200, 100, 0, 255));
  picture.Fill(&left, QColor(0, 100, 50, 0));
  ASSERT_TRUE(picture.Resize(2, 1));
  EXPECT_EQ("00643200 C86400FF", Pixels(picture)); // two whole halves
  ASSERT_TRUE(picture.Resize(1, 1));
  QColor mean;
  picture.GetColorAt(0, 0, mean);
  EXPECT_NEAR(100, mean.GetR(), 1);
  EXPECT_NEAR(128, mean.GetA(), 1);
  ASSERT_TRUE(picture.Resize(8, 8));
  QColor c;
  picture.GetColorAt(5, 5, c);
  EXPECT_EQ(mean.GetRGBA(), c.GetRGBA());
  ReportCapture reports;
  EXPECT_FALSE(picture.Resize(60000, 60000));
  EXPECT_TRUE(reports.Contains("QBitMap::Alloc() failed on 60000x60000, depth 32"));
  EXPECT_EQ(8, picture.GetWidth());
  ASSERT_TRUE(picture.Resize(2, 1, false));
  EXPECT_EQ("00000000 00000000", Pixels(picture));
}

TEST(QDrawableBase, CreateAndDestroyAreReported)
{
  QDrawable drawable;
  ReportCapture reports;
  EXPECT_FALSE(drawable.Create());
  drawable.Destroy();
  EXPECT_TRUE(reports.Contains("QDrawable::Create() base class called"));
  EXPECT_TRUE(reports.Contains("QDrawable::Destroy() base class called"));
}

namespace {

constexpr const char* FOUR = "102030ff 405060fe 70809000 ff00ff40"; // two above, two below

QBitMap PictureOf(int wid, int hgt, std::string hex)
{
  std::erase(hex, ' ');
  QBitMap picture(32, wid, hgt);
  for (int i = 0; i < wid * hgt; ++i) {
    const auto byte = [&](int n) { return std::stoi(hex.substr(static_cast<size_t>(8 * i + 2 * n), 2), nullptr, 16); };
    picture.SetColorAt(i % wid, i / wid, QColor(byte(0), byte(1), byte(2), byte(3)));
  }
  return picture;
}

} // namespace

TEST(QBitMapPixels, ChangeAsEachOperationTells)
{
  const struct
  {
    const char* name;
    std::function<void(QBitMap&)> change;
    const char* expected;
  } cases[] = {
      {"colours under nothing", [](QBitMap& p) { p.ClearTransparentColors(); }, "102030FF 405060FE/00000000 FF00FF40"},
      {"key", [](QBitMap& p) { p.KeyTransparent(QColor(16, 32, 48)); }, "10203000 405060FF/708090FF FF00FFFF"},
      {"colour", [](QBitMap& p) { EXPECT_EQ(1, p.MakeColorTransparent(QColor(64, 80, 96))); },
       "102030FF 00000000/70809000 FF00FF40"},
      {"magenta", [](QBitMap& p) { EXPECT_EQ(1, p.MakeMagentaTransparent()); }, "102030FF 405060FE/70809000 00000000"},
      {"dark ones", [](QBitMap& p) { p.Lut(100); }, "646464FF 646464FE/70809000 FF00FF40"},
      {"all dark ones", [](QBitMap& p) { p.Lut(110, true); }, "6E6E6EFF 6E6E6EFE/70809000 6E6E6E40"},
      {"alpha", [](QBitMap& p) { p.SetAlpha(7); }, "10203007 40506007/70809007 FF00FF07"},
      {"scaled alpha", [](QBitMap& p) { p.ScaleAlpha(3, 2, 10); }, "102030FF 405060FF/7080900A FF00FF6A"},
      {"alpha shown", [](QBitMap& p) { p.AlphaToColor(); }, "FFFFFFFF FFFFFFFE/00000000 FFFFFF40"},
      {"bytes", [](QBitMap& p) { p.SwapBytes(); }, "FF302010 FE605040/00908070 40FF00FF"},
      {"inverted", [](QBitMap& p) { p.InvertChannel(1, 1, 0, 1, -1); }, "102030FF 40AF60FE/70809000 FFFFFF40"},
      {"cropped",
       [](QBitMap& p) {
         EXPECT_TRUE(p.Crop({1, 0, 5, 1}));
       },
       "405060FE"},
      {"merged", [](QBitMap& p) { EXPECT_TRUE(p.MergeAlpha(PictureOf(2, 2, FOUR))); },
       "10203010 40506040/70809070 FF00FFFF"},
      {"channel", [](QBitMap& p) { p.CopyChannel(PictureOf(2, 2, FOUR), 0, 1, -1, -1, 0, 2); },
       "102070FF 4050FFFE/70809000 FF00FF40"},
      {"copied", [](QBitMap& p) { p.CopyPixelsFrom(PictureOf(2, 2, FOUR), -1, 0, 2, 1, 0, 1); },
       "102030FF 405060FE/70809000 102030FF"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QBitMap picture = PictureOf(2, 2, FOUR);
    c.change(picture);
    EXPECT_EQ(c.expected, Pixels(picture));
  }
  const QBitMap line = PictureOf(2, 1, "01000000 02000000");
  const char* turned[] = {"01000000 02000000/00000000 00000000", "01000000 00000000/02000000 00000000",
                          "02000000 01000000/00000000 00000000", "02000000 00000000/01000000 00000000"};
  for (int i = 0; i < 4; ++i) {
    QBitMap target(32, 2, 2);
    EXPECT_TRUE(line.Rotate(90 * i, nullptr, target, 0, 0));
    EXPECT_EQ(turned[i], Pixels(target)) << 90 * i;
  }
  ReportCapture reports;
  QBitMap shallow(8, 2, 2), four = PictureOf(2, 2, FOUR);
  shallow.CopyChannel(four, 0, 0, -1, -1, 0, 0);
  shallow.InvertChannel(0);
  EXPECT_FALSE(four.MergeAlpha(shallow) || four.MergeAlpha(line) || line.Rotate(45, nullptr, four, 0, 0));
  four.CopyPixelsFrom(QBitMap(32, 3, 3), 0, 0, 3, 3, 0, 0);
  for (const char* text :
       {"QBitMap::CopyChannel() only supported for 32-bit", "QBitMap::InvertChannel() only supported for 32-bit",
        "Only supported for 32-bit", "Bitmaps must be the same size/height", "QBitMap:Rotate(); angle 45 not supported",
        "QBitMap:CopyPixelsFrom() swid>wid (3>2); capping", "QBitMap:CopyPixelsFrom() shgt>hgt(3>2); capping"})
    EXPECT_TRUE(reports.Contains(text)) << text;
  EXPECT_EQ(Pixels(line), Pixels(*line.CreateClone()));
}
