#include "foundation/plaincoder.h"
#include "foundation/qarchive.h"
#include "foundation/qarchivecoder.h"
#include "foundation/qfilename.h"
#include "foundation/qvirtualfilesystem.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace {

using Bytes = std::vector<uint8_t>;

std::string Text(std::span<const std::byte> bytes)
{
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void PutFile(const std::string& path, std::string_view content)
{
  std::ofstream(path, std::ios::binary) << content;
}

// Blocks of many kinds: noise, few different bytes, text, runs, repeats at all distances, and mixtures.
std::vector<Bytes> Blocks()
{
  std::mt19937 random(7);
  const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
  std::vector<Bytes> blocks = {{}, {1}, {1, 1}, Bytes(16384, 7), Bytes(15, 0), Bytes(16, 0), Bytes(4096 + 17, 9)};
  for (int i = 0; i < 400; ++i) {
    Bytes block;
    const size_t size = i % 4 == 0 ? 16384 : below(3000);
    const unsigned alphabet = 1 + below(i % 3 == 0 ? 256 : 5);
    while (block.size() < size)
      switch (below(4)) {
      case 0:
        block.insert(block.end(), below(40), static_cast<uint8_t>(below(alphabet)));
        break;
      case 1: // a repeat
        for (size_t n = below(60), from = block.empty() ? 0 : below(static_cast<unsigned>(block.size())); n > 0; --n)
          block.push_back(from < block.size() ? block[from++] : uint8_t{1});
        break;
      default:
        block.push_back(static_cast<uint8_t>(below(alphabet)));
      }
    block.resize(size);
    blocks.push_back(block);
  }
  return blocks;
}

TEST(ArchiveCoder, GivesTheBytesOfThePlainScanAndReadsThemBack)
{
  QArchiveEncoder encoder;
  const auto decoder = std::make_unique<QArchiveDecoder>();
  for (const Bytes& block : Blocks()) {
    const auto chunk = encoder.Encode(block);
    if (block.empty()) {
      EXPECT_TRUE(chunk.empty());
      continue;
    }
    ASSERT_THAT(Bytes(chunk.begin(), chunk.end()), testing::ContainerEq(PlainArchiveChunk(block))) << block.size();
    ASSERT_EQ(QArchiveDecoder::Result::GOOD, decoder->Decode(chunk));
    const auto back = decoder->Bytes();
    ASSERT_THAT(Bytes(back.begin(), back.end()), testing::ContainerEq(block));
  }
}

TEST(ArchiveCoder, RefusesWhatNoEncoderWrites)
{
  const auto decoder = std::make_unique<QArchiveDecoder>();
  Bytes overflow{0x40, 0xFF, 0xFF};
  for (int i = 0; i < 5; ++i)
    overflow.insert(overflow.end(), {0x00, 0x0F, 0xFF, 1});
  const struct
  {
    const char* what;
    Bytes chunk;
    QArchiveDecoder::Result result;
  } cases[] = {{"an unknown kind", {0x41, 0, 0, 1}, QArchiveDecoder::Result::DAMAGED},
               {"nothing", {}, QArchiveDecoder::Result::DAMAGED},
               {"half a control word", {0x40, 0}, QArchiveDecoder::Result::DAMAGED},
               {"a reference before the block", {0x40, 0x40, 0, 'a', 0, 0x20}, QArchiveDecoder::Result::DAMAGED},
               {"half a reference", {0x40, 0x40, 0, 'a', 0}, QArchiveDecoder::Result::DAMAGED},
               {"half a run", {0x40, 0x80, 0, 0, 0, 4}, QArchiveDecoder::Result::DAMAGED},
               {"too much", overflow, QArchiveDecoder::Result::OVERFLOW}};
  for (const auto& c : cases)
    EXPECT_EQ(c.result, decoder->Decode(c.chunk)) << c.what;
}

class ArchiveTest : public testing::Test
{
protected:
  std::string Path(const char* name) const { return dir.Path() + "/" + name; }
  // An archive with these members.
  std::string Make(const char* name, const std::vector<std::pair<std::string, std::string>>& members)
  {
    QArchive archive(Path(name), QArchive::CREATE);
    for (const auto& [member, content] : members) {
      PutFile(Path("source"), content);
      EXPECT_TRUE(archive.AddFile(Path("source"), member.c_str()));
    }
    EXPECT_TRUE(archive.Close());
    return Path(name);
  }
  TempDir dir;
  ReportCapture reports;
};

TEST_F(ArchiveTest, LiesOnTheDiskAsTheFormatSays)
{
  const std::string path = Make("a.ar", {});
  EXPECT_EQ(std::string("AR01\4\0\0\0", 8), FileText(path));
  PutFile(Path("abc"), "abc");
  {
    QArchive archive(path, QArchive::UPDATE);
    EXPECT_TRUE(archive.AddFile(Path("abc"), "x"));
    EXPECT_TRUE(archive.AddFile(Path("missing"), "y") == false);
    PutFile(Path("abc"), "");
    EXPECT_TRUE(archive.AddFile(Path("abc"), "empty"));
  }
  const std::string member("D\4\0\x80"
                           "abc\0\0",
                           9);
  const std::string entries("x\0\4\0\0\0\3\0\0\0"
                            "empty\0\xD\0\0\0\0\0\0\0"
                            "\x10\0\0\0",
                            28);
  EXPECT_EQ("AR01" + member + std::string("D\0\0", 3) + entries, FileText(path));
  // A removed member leaves its bytes and its place.
  QArchive archive(path, QArchive::UPDATE);
  EXPECT_TRUE(archive.RemoveFile("x"));
  EXPECT_FALSE(archive.FindFile("x"));
  EXPECT_FALSE(archive.RemoveFile("x"));
  EXPECT_TRUE(archive.Close());
  std::string removed = entries;
  removed[0] = '$';
  removed[6] = 0;
  EXPECT_EQ("AR01" + member + std::string("D\0\0", 3) + removed, FileText(path));
  EXPECT_EQ(0, reports.Problems()) << reports.All();
}

TEST_F(ArchiveTest, GivesBackItsMembers)
{
  std::string large;
  for (int i = 0; large.size() < 1'000'000; ++i) // enough for two threads
    large += std::to_string(i * i) + ((i & 64) != 0 ? std::string(30, ' ') : "\n");
  const std::string path = Make("a.ar", {{"Large.txt", large}, {"empty", ""}, {"../evil", "x"}, {"second", "two"}});
  QArchive archive(path);
  std::vector<std::byte> data;
  EXPECT_TRUE(archive.ReadFile("LARGE.TXT", data));
  EXPECT_EQ(large, Text(data));
  EXPECT_FALSE(archive.FindFile("LARGE.TXT"));
  EXPECT_FALSE(archive.ReadFile("empty", data));
  EXPECT_TRUE(archive.ExtractFile("empty", Path("out").c_str()));
  EXPECT_EQ("", FileText(Path("out")));
  const std::unique_ptr<QFile> file = archive.OpenFile("second");
  ASSERT_TRUE(file);
  EXPECT_EQ('t', file->GetChar());
  EXPECT_EQ(3, file->Size());
  EXPECT_FALSE(archive.ExtractFile("../evil"));
  EXPECT_TRUE(archive.ExtractFile("../evil", Path("tame").c_str()));
  EXPECT_EQ("x", FileText(Path("tame")));
  qstring name;
  int size = 0, count = 0;
  while (archive.GetNextFile(name, nullptr, &size))
    count += size;
  EXPECT_EQ(static_cast<int>(large.size()) + 4, count);
  int chunks = 0;
  archive.SetProgressCallback([&](int64_t at, int64_t end) { return at < end && ++chunks < 3; });
  EXPECT_FALSE(archive.ReadFile("Large.txt", data));
  EXPECT_EQ(3, chunks);
}

TEST_F(ArchiveTest, SkipsBlocksThatItDoesNotKnow)
{
  PutFile(Path("a.ar"), std::string("AR01"
                                    "X\3\0\0\0???D\3\0\x80ok\0\0"
                                    "n\0\4\0\0\0\2\0\0\0"
                                    "\x14\0\0\0",
                                    34));
  QArchive archive(Path("a.ar"));
  std::vector<std::byte> data;
  EXPECT_TRUE(archive.ReadFile("n", data)) << reports.All();
  EXPECT_EQ("ok", Text(data));
}

TEST_F(ArchiveTest, DamageIsReportedAndNeverTaken)
{
  const std::string whole = FileText(Make("a.ar", {{"n", std::string(5000, 'a') + "end"}, {"m", "more"}}));
  const auto with = [&](size_t at, char c) {
    std::string changed = whole;
    changed[at] = c;
    return changed;
  };
  const std::string notOpen[] = {"",
                                 "AR0",
                                 whole.substr(0, whole.size() - 1),
                                 with(0, 'B'),
                                 with(whole.size() - 4, '\xFF'),
                                 with(whole.size() - 1, '\x7F')};
  for (const std::string& content : notOpen) {
    PutFile(Path("bad.ar"), content);
    reports.Clear();
    EXPECT_FALSE(QArchive(Path("bad.ar")).IsOpen());
    EXPECT_GT(reports.Problems(), 0);
  }
  // Whatever is wrong with a member, it is the right one or none.
  for (size_t at = 4; at < whole.size() - 4; ++at) {
    PutFile(Path("bad.ar"), with(at, '\xFF'));
    QArchive archive(Path("bad.ar"));
    std::vector<std::byte> data;
    if (!archive.ReadFile("n", data))
      EXPECT_TRUE(data.empty());
    else
      EXPECT_EQ(5003u, data.size());
  }
}

TEST_F(ArchiveTest, AppearsInItsDirectoryBehindTheDisk)
{
  const std::string path = Make("graphics.ar", {{"a.dof", "packed"}, {"b.dof", "both"}});
  PutFile(Path("b.dof"), "disk");
  QVirtualFileSystem files;
  QArchive archive(path);
  EXPECT_FALSE(files.FileExists(Path("a.dof")));
  files.AddArchive(&archive);
  std::string upper = dir.Path();
  std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return std::toupper(c); });
  EXPECT_TRUE(files.FileExists(Path("a.dof")));
  EXPECT_TRUE(files.FileExists(upper + "/a.dof"));
  EXPECT_FALSE(files.FileExists(upper + "/A.dof"));
  EXPECT_FALSE(files.FileExists(Path("below/a.dof")));
  EXPECT_TRUE(QFileExists(Path("a.dof")));
  std::string content;
  EXPECT_TRUE(QReadFile(Path("A.DOF"), content, true));
  EXPECT_EQ("packed", content);
  EXPECT_TRUE(QReadFile(Path("b.dof"), content, true));
  EXPECT_EQ("disk", content);
  ASSERT_TRUE(files.OpenFile(Path("a.dof")));
  EXPECT_FALSE(files.OpenFile(Path("c.dof")));
  EXPECT_TRUE(files.RemoveArchive(&archive));
  EXPECT_FALSE(QFileExists(Path("a.dof")));
}

TEST_F(ArchiveTest, HasRoomForAHundred)
{
  QArchive archive(Make("a.ar", {}));
  {
    QVirtualFileSystem files;
    for (int i = 0; i < QVirtualFileSystem::MAX_ARCHIVE; ++i)
      EXPECT_TRUE(files.AddArchive(&archive));
    EXPECT_FALSE(files.AddArchive(&archive));
    EXPECT_TRUE(reports.Contains("Out of space to add archive"));
  }
  EXPECT_TRUE(reports.Contains("QVirtualFileSystem: still 100 archives attached upon destruction"));
}

} // namespace
