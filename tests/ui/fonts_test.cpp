#include "foundation/qfile.h"
#include "support/tempdir.h"
#include "ui/qfont.h"
#include "uifixture.h"

#include <cmath>
#include <cstddef>
#include <fontconfig/fontconfig.h>
#include <fstream>
#include <string>
#include <vector>

namespace {

void WriteBytes(const std::string& path, const std::vector<std::byte>& bytes)
{
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// The path of some outline font of the machine.
std::string MachineFont()
{
  std::string path;
  FcPattern* pattern = FcNameParse(reinterpret_cast<const FcChar8*>("sans-serif"));
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result = FcResultNoMatch;
  if (FcPattern* match = FcFontMatch(nullptr, pattern, &result)) {
    FcChar8* file = nullptr;
    if (FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch)
      path = reinterpret_cast<const char*>(file);
    FcPatternDestroy(match);
  }
  FcPatternDestroy(pattern);
  return path;
}

// While it lives, the machine has no font but the one at path.
class OnlyFont
{
public:
  explicit OnlyFont(const std::string& path) : before(FcConfigReference(nullptr)), only(FcConfigCreate())
  {
    EXPECT_TRUE(FcConfigAppFontAddFile(only, reinterpret_cast<const FcChar8*>(path.c_str())));
    FcConfigSetCurrent(only);
  }
  ~OnlyFont()
  {
    FcConfigSetCurrent(before);
    FcConfigDestroy(before);
  }
  OnlyFont(const OnlyFont&) = delete;
  OnlyFont& operator=(const OnlyFont&) = delete;

private:
  FcConfig* before;
  FcConfig* only;
};

} // namespace

// The list of fonts said that the file is fine; what is found in it then isn't.
TEST_F(UiTest, AFontFileThatLiesIsRefusedOrDrawnAsFarAsItGoes)
{
  std::vector<std::byte> good;
  ASSERT_TRUE(QReadFile(MachineFont(), good));
  TempDir directory;
  const std::string path = directory.Path("font.ttf");
  WriteBytes(path, good);
  const OnlyFont only(path);
  const auto tryIt = [&](const char* what, size_t where) {
    QFont font("some", 12);
    if (!font.Create())
      return false;
    for (const char* text : {"The quick brown fox, 0123456789", "\u00e4\u0416\u03a9"}) {
      const float width = font.GetWidth(text);
      EXPECT_TRUE(std::isfinite(width) && width >= 0 && width < 1e6F) << what << where << ": " << width;
    }
    EXPECT_TRUE(std::isfinite(font.GetHeight())) << what << where;
    return true;
  };
  EXPECT_TRUE(tryIt("whole", 0));
  ReportCapture reports;
  for (size_t length = 0; length < good.size(); length += good.size() / 16 + 1) {
    WriteBytes(path, {good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)});
    tryIt("cut at ", length);
  }
  EXPECT_TRUE(reports.Contains("QFUC_GenDefaultList; can't create font some/12 (Win error 0)"));
  // The tables' directory and heads stand in front; letters behind.
  for (size_t at = 4; at < good.size(); at += at < 512 ? 5 : good.size() / 64) {
    std::vector<std::byte> bad = good;
    for (size_t i = at; i < std::min(at + 4, bad.size()); ++i)
      bad[i] = std::byte{0xff};
    WriteBytes(path, bad);
    tryIt("changed at ", at);
  }
}
