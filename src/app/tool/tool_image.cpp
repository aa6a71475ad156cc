#include "app/tool/tool.h"
#include "app/tool/tooljson.h"

#include "foundation/qbmp.h"
#include "foundation/qfile.h"
#include "foundation/qimage.h"
#include "foundation/qsafewrite.h"

#include <cctype>
#include <charconv>

namespace {

// The picture of the first argument; what the library lets pass without a picture fails here. Null when it did.
std::unique_ptr<QImage> Open(const ToolArgs& args)
{
  const std::string path = args.Path(0);
  const char* name = args.Text(0).c_str();
  std::vector<std::byte> file;
  const QImage::FileFormat format = QImage::FormatOf(path);
  if (format == QImage::FORMAT_NONE || format == QImage::FORMAT_PNG) {
    ToolFail("there is no reader for %s", name);
    return nullptr;
  }
  if (!QReadFile(path, file)) {
    ToolFail("can't read %s", name);
    return nullptr;
  }
  if (format == QImage::FORMAT_BMP && !QIsReadableBMP(file)) {
    ToolFail("%s is no bitmap of 8 or 24 bits", name);
    return nullptr;
  }
  auto picture = std::make_unique<QImage>(path);
  if (!picture->LoadFailed() && picture->GetMemSize() > 0)
    return picture;
  ToolFail("%s holds no picture that can be read", name);
  return nullptr;
}

int RunInfo(const ToolArgs& args)
{
  const auto picture = Open(args);
  if (!picture)
    return TOOL_FAILED;
  ToolJson::Object()
      .Add("width", picture->GetWidth())
      .Add("height", picture->GetHeight())
      .Add("depth", picture->GetDepth())
      .Add("transparency", picture->HasTransparency())
      .Print();
  return TOOL_DONE;
}

int RunRaw(const ToolArgs& args)
{
  const auto picture = Open(args);
  if (!picture)
    return TOOL_FAILED;
  const size_t row = static_cast<size_t>(picture->GetWidth()) * 4;
  std::string bytes;
  bytes.reserve(row * static_cast<size_t>(picture->GetHeight()));
  for (int y = picture->GetHeight() - 1; y >= 0; --y)
    bytes.append(reinterpret_cast<const char*>(picture->GetPixelAddress(0, y)), row);
  return QWriteFile(args.Path(1), bytes) ? TOOL_DONE : ToolFail("can't write %s", args.Text(1).c_str());
}

// -1 for an extension without a writer.
int FormatToWrite(const std::string& name, bool grey)
{
  std::string extension = name.substr(std::min(name.find_last_of('.'), name.size()));
  for (char& c : extension)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (extension == ".tga")
    return grey ? QBitMap::TGA_GREY : QBitMap::TGA;
  if (extension == ".rgb")
    return QBitMap::RGB;
  return extension == ".jpg" || extension == ".jpeg" ? QBitMap::JPG : -1;
}

bool IsQuality(const std::string& text, int& quality)
{
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, quality);
  return read.ec == std::errc() && read.ptr == end && quality >= 0 && quality <= 100;
}

int RunConvert(const ToolArgs& args)
{
  int quality = 90;
  if (args.Option("--quality") && !IsQuality(args.OptionText("--quality"), quality))
    return ToolFail("--quality takes a number from 0 to 100, not '%s'", args.OptionText("--quality").c_str());
  const int format = FormatToWrite(args.Text(1), args.Option("--grey"));
  if (format < 0)
    return ToolFail("there is no writer for %s", args.Text(1).c_str());
  const auto picture = Open(args);
  if (!picture)
    return TOOL_FAILED;
  const std::string file = picture->Encode(args.Text(1), format, quality);
  return !file.empty() && QWriteFile(args.Path(1), file) ? TOOL_DONE : ToolFail("can't write %s", args.Text(1).c_str());
}

} // namespace

std::vector<ToolVerb> ToolImageVerbs()
{
  return {
      {"image", "info", "Size and transparency as JSON", {{"FILE"}}, RunInfo},
      {"image", "raw", "Bytes red, green, blue, alpha, top row first", {{"FILE"}, {"OUT"}}, RunRaw},
      {"image",
       "convert",
       "Write a .tga, .rgb or .jpg, by OUT's extension",
       {{"IN"}, {"OUT"}},
       RunConvert,
       {{"--quality", "of a .jpg, from 0 to 100; 90 unless told", "N"}, {"--grey", "a .tga of 8 bits, the red byte"}}},
  };
}
