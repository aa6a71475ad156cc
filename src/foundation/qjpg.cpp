#include "foundation/qjpg.h"

#include "foundation/qreport.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio> // before jpeglib.h, which needs it
#include <cstdlib>

#include <jerror.h>
#include <jpeglib.h>

// The library leaves by a jump: between setjmp and the last call no object with a destructor may be made.

namespace {

constexpr int MAX_SIZE = 16384;
constexpr JDIMENSION ROWS_A_CALL = 16;

struct Errors
{
  jpeg_error_mgr standard; // first: the library hands out a pointer to it
  std::jmp_buf leave;
  const char* name;
  const char* function;
};

[[noreturn]] void OnError(j_common_ptr common)
{
  auto* errors = reinterpret_cast<Errors*>(common->err);
  std::array<char, JMSG_LENGTH_MAX> text{};
  common->err->format_message(common, text.data());
  QERR("%s(%s); %s", errors->function, errors->name, text.data());
  std::longjmp(errors->leave, 1);
}

// A warning is of a file with a fault that can be seen past; one that ends early has no picture.
void OnMessage(j_common_ptr common, int level)
{
  if (level < 0 && common->err->msg_code == JWRN_JPEG_EOF)
    OnError(common);
}

void SetErrors(Errors& errors, const char* function, const char* name)
{
  jpeg_std_error(&errors.standard);
  errors.standard.error_exit = OnError;
  errors.standard.emit_message = OnMessage;
  errors.name = name;
  errors.function = function;
}

// Each block of 8 by 8 pixels takes a bit at least: a picture that can't be in the file isn't allocated.
bool CanHold(size_t bytes, const jpeg_decompress_struct& info)
{
  const auto blocks = [](JDIMENSION pixels) { return size_t{pixels / 8 / 4}; }; // a component may be a quarter as fine
  return blocks(info.image_width) * blocks(info.image_height) / 8 <= bytes;
}

bool Prepare(jpeg_decompress_struct& info, size_t bytes, QBitMap& picture, const char* name)
{
  const int wid = static_cast<int>(std::min<JDIMENSION>(info.image_width, INT32_MAX));
  const int hgt = static_cast<int>(std::min<JDIMENSION>(info.image_height, INT32_MAX));
  if (wid > MAX_SIZE || hgt > MAX_SIZE) {
    QERR("QImage:ReadJPG(); (%s) is %dx%d large; supported only upto %dx%d", name, wid, hgt, MAX_SIZE, MAX_SIZE);
    return false;
  }
  if (!CanHold(bytes, info)) {
    QERR("QImage:ReadJPG(%s); %dx%d pixels don't fit in %zu bytes", name, wid, hgt, bytes);
    return false;
  }
  if (!picture.AllocUnset(32, wid, hgt)) {
    QERR("QImage:ReadJPG(); (%s) out of memory", name);
    return false;
  }
  return true;
}

// Straight to their place: the first line is the top one, the last row of the memory.
void ReadLines(jpeg_decompress_struct& info, const QBitMap& picture)
{
  JSAMPROW rows[ROWS_A_CALL];
  while (info.output_scanline < info.output_height) {
    const JDIMENSION count = std::min(ROWS_A_CALL, info.output_height - info.output_scanline);
    for (JDIMENSION i = 0; i < count; ++i)
      rows[i] = picture.GetPixelAddress(0, picture.GetHeight() - 1 - static_cast<int>(info.output_scanline + i));
    jpeg_read_scanlines(&info, rows, count);
  }
}

void MakeOpaque(const QBitMap& picture)
{
  for (int i = 3; i < picture.GetMemSize(); i += 4)
    picture.GetBuffer()[i] = 255;
}

bool Decompress(jpeg_decompress_struct& info, Errors& errors, std::span<const std::byte> file, QBitMap& picture)
{
  if (setjmp(errors.leave) != 0)
    return false;
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(file.data()), file.size());
  jpeg_read_header(&info, TRUE);
  if (!Prepare(info, file.size(), picture, errors.name))
    return false;
  const int components = info.num_components;
  if (components != 1 && components != 3 && components != 4) {
    QERR("QImage:ReadJPG(%s); unsupported number of components (%d)", errors.name, components);
    picture.Clear();
    return true;
  }
  if (components != 4)
    info.out_color_space = JCS_EXT_RGBA;
  jpeg_start_decompress(&info);
  ReadLines(info, picture);
  if (components == 4)
    MakeOpaque(picture);
  jpeg_finish_decompress(&info);
  return true;
}

struct Output
{
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
};

bool Compress(jpeg_compress_struct& info, Errors& errors, const QBitMap& picture, int quality, Output& out)
{
  if (setjmp(errors.leave) != 0)
    return false;
  jpeg_create_compress(&info);
  jpeg_mem_dest(&info, &out.bytes, &out.size);
  info.image_width = static_cast<JDIMENSION>(picture.GetWidth());
  info.image_height = static_cast<JDIMENSION>(picture.GetHeight());
  info.input_components = 4;
  info.in_color_space = JCS_EXT_RGBX;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, quality, TRUE);
  jpeg_start_compress(&info, TRUE);
  while (info.next_scanline < info.image_height) {
    JSAMPROW row = picture.GetPixelAddress(0, picture.GetHeight() - 1 - static_cast<int>(info.next_scanline));
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  return true;
}

} // namespace

bool QReadJPG(std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  jpeg_decompress_struct info = {};
  Errors errors = {};
  SetErrors(errors, "QImage:ReadJPG", name);
  info.err = &errors.standard;
  const bool read = Decompress(info, errors, file, picture);
  jpeg_destroy_decompress(&info);
  if (!read)
    picture.Free();
  return read;
}

std::string QWriteJPG(const QBitMap& picture, int quality, const char* name)
{
  if (picture.GetDepth() != 32 || !picture.GetBuffer()) {
    QERR("QBitMap:WriteJPG(%s); no 32-bit picture", name);
    return {};
  }
  jpeg_compress_struct info = {};
  Errors errors = {};
  SetErrors(errors, "QBitMap:WriteJPG", name);
  info.err = &errors.standard;
  Output out;
  const bool written = Compress(info, errors, picture, quality, out);
  jpeg_destroy_compress(&info);
  std::string file;
  if (written)
    file.assign(reinterpret_cast<const char*>(out.bytes), out.size);
  std::free(out.bytes);
  return file;
}
