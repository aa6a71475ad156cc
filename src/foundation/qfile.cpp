#include "foundation/qfile.h"

#include "foundation/qblock.h"
#include "foundation/qbytes.h"
#include "foundation/qfilename.h"
#include "foundation/qpathcase.h"
#include "foundation/qreport.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

std::atomic<int> openFiles = 0;

int OpenFlags(const char* mode)
{
  const bool both = std::strchr(mode, '+') != nullptr;
  switch (mode[0]) {
  case 'w':
    return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
  case 'a':
    return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
  default:
    return both ? O_RDWR : O_RDONLY;
  }
}

// The file's descriptor, or -1. Nothing but a regular file is touched: opening a pipe or a device can wait for ever.
int OpenRegular(const std::string& path, int flags)
{
  const int fd = open(path.c_str(), (flags & ~O_TRUNC) | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
  if (fd < 0)
    return -1;
  struct stat info;
  const bool regular = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
  if (regular && (!(flags & O_TRUNC) || ftruncate(fd, 0) == 0))
    return fd;
  const int reason = regular ? errno : S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
  close(fd);
  errno = reason;
  return -1;
}

const char* ModeText(uint32_t mode)
{
  static constexpr std::array<const char*, 10> texts = {"rb", "rb", "wb", "rb+", "wb+", "r", "a", "a+", "ab", "w"};
  const uint32_t n = mode & QFile::MODE_MASK;
  return texts[n < texts.size() ? n : 0];
}

// Fills the block from the file's start; gives less when the file shrank meanwhile, -1 on an error.
ssize_t ReadInto(int fd, void* block, size_t size)
{
  size_t have = 0;
  while (have < size) {
    const ssize_t n = read(fd, static_cast<char*>(block) + have, size - have);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0)
      return -1;
    if (n == 0)
      break;
    have += static_cast<size_t>(n);
  }
  return static_cast<ssize_t>(have);
}

// Calls room(size), which gives where the file's content goes, and answers its size. -1 with errno set when the file
// can't be opened or read.
template <typename Room>
ssize_t ReadWhole(const std::string& path, Room room)
{
  const int fd = OpenRegular(QFindPath(path), O_RDONLY);
  if (fd < 0)
    return -1;
  struct stat info;
  ssize_t have = -1;
  int reason = ENOMEM;
  try {
    if (fstat(fd, &info) == 0)
      have = ReadInto(fd, room(static_cast<size_t>(info.st_size)), static_cast<size_t>(info.st_size));
    reason = errno;
  } catch (const std::exception&) { // no memory of that size
  }
  close(fd);
  errno = reason;
  return have;
}

template <typename Content>
bool ReadContent(const std::string& path, Content& content)
{
  content = Content();
  const ssize_t size = ReadWhole(path, [&](size_t wanted) {
    content.resize(wanted);
    return content.data();
  });
  content.resize(size > 0 ? static_cast<size_t>(size) : 0);
  return size >= 0;
}

// Of an open archive, for a file that the disk doesn't have; errno stays the disk's.
bool ReadMember(const std::string& path, std::vector<std::byte>& content)
{
  const int reason = errno;
  const bool good = reason == ENOENT && QFileHooks().archiveRead && QFileHooks().archiveRead(path, content);
  errno = reason;
  return good;
}

} // namespace

std::FILE* qfopen(const char* path, const char* mode)
{
  const int fd = OpenRegular(QFindPath(path), OpenFlags(mode));
  if (fd < 0)
    return nullptr;
  std::FILE* stream = fdopen(fd, mode);
  if (stream)
    ++openFiles;
  else
    close(fd);
  return stream;
}

bool qfclose(std::FILE* stream)
{
  if (!stream) {
    QWARN("qfclose(0) called");
    return false;
  }
  --openFiles;
  return std::fclose(stream) == 0;
}

int QOpenFileCount()
{
  return openFiles;
}

bool QReadFile(const std::string& path, std::vector<std::byte>& content, bool archives)
{
  return ReadContent(path, content) || (archives && ReadMember(path, content));
}

bool QReadFile(const std::string& path, std::string& content, bool archives)
{
  std::vector<std::byte> bytes;
  if (ReadContent(path, content))
    return true;
  if (!archives || !ReadMember(path, bytes))
    return false;
  content.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return true;
}

bool QReadFile(const std::string& path, QBlock& block, size_t& size, bool archives)
{
  block = QBlock();
  const ssize_t have = ReadWhole(path, [&](size_t wanted) {
    block = QBlock(wanted);
    return block.Data();
  });
  size = have > 0 ? static_cast<size_t>(have) : 0;
  std::vector<std::byte> member;
  if (have >= 0 || !archives || !ReadMember(path, member))
    return have >= 0;
  block = QBlock(member.size());
  std::ranges::copy(member, block.Data());
  size = member.size();
  return true;
}

QFile::QFile(std::string_view name, std::vector<std::byte> bytes) :
    mode(READ_BINARY | MEMORY), inMemory(true), content(std::move(bytes))
{
  const std::string owned(name);
  SetName(owned.c_str());
}

QFile::QFile(std::string_view path, uint32_t fileMode) : mode(fileMode)
{
  const std::string name(path);
  SetName(name.c_str());
  const uint32_t kind = mode & MODE_MASK;
  if (mode & MEMORY && kind == READ_TEXT) {
    QERR("QFile ctor: READ_TEXT and MEMORY flags are incompatible (buggy); turning off MEMORY");
    mode &= ~uint32_t{MEMORY};
  }
  if (mode & MEMORY && kind != READ_BINARY) {
    QERR("QFile:ctor MEMORY req'd for '%s' but incompatible mode given", name.c_str());
    mode &= ~uint32_t{MEMORY};
  }
  if (mode & MEMORY)
    Preload();
  else
    stream = qfopen(name.c_str(), ModeText(mode));
}

QFile::QFile(std::string_view name, std::FILE* opened, uint32_t fileMode) :
    stream(opened), mode(fileMode & ~uint32_t{MEMORY})
{
  SetName(std::string(name).c_str());
  if (fileMode & MEMORY)
    QWARN("QFile: can't use memory mapping with 'fp' takeover");
}

QFile::~QFile()
{
  if (stream)
    qfclose(stream);
}

void QFile::Preload()
{
  inMemory = QReadFile(GetName(), content, true);
  if (!inMemory && errno == ENOMEM)
    QERR("QFile:ctor; not enough memory to preload file '%s'", GetName());
}

bool QFile::IsEOF() const
{
  if (pushedBack >= 0)
    return false;
  if (inMemory)
    return pastEnd;
  return !stream || std::feof(stream) != 0;
}

int QFile::Next()
{
  if (pushedBack >= 0)
    return std::exchange(pushedBack, -1);
  if (inMemory) {
    pastEnd = position >= content.size();
    return pastEnd ? -1 : std::to_integer<int>(content[position++]);
  }
  return stream ? std::fgetc(stream) : -1;
}

int QFile::GetChar()
{
  return Next() & 0xFF;
}

void QFile::UnGetChar(int c)
{
  pushedBack = c & 0xFF;
}

bool QFile::Seek(int64_t offset, int seekMode)
{
  static constexpr std::array<int, 3> whence = {SEEK_SET, SEEK_END, SEEK_CUR};
  if (seekMode < FROM_START || seekMode > FROM_CURRENT)
    return false;
  if (seekMode == FROM_CURRENT && pushedBack >= 0 && offset > INT64_MIN)
    --offset; // Tell counts the byte as not read
  pushedBack = -1;
  if (!inMemory)
    return stream && fseeko(stream, offset, whence[static_cast<size_t>(seekMode)]) == 0;
  const auto size = static_cast<int64_t>(content.size());
  const int64_t from = seekMode == FROM_START ? 0 : seekMode == FROM_END ? size : static_cast<int64_t>(position);
  position = static_cast<size_t>(from + std::clamp(offset, -from, size - from));
  pastEnd = false;
  return true;
}

int64_t QFile::Tell() const
{
  const int64_t at = inMemory ? static_cast<int64_t>(position) : stream ? ftello(stream) : 0;
  return at > 0 && pushedBack >= 0 ? at - 1 : at;
}

int64_t QFile::Size() const
{
  if (inMemory)
    return static_cast<int64_t>(content.size());
  struct stat info;
  if (!stream || std::fflush(stream) != 0 || fstat(fileno(stream), &info) != 0)
    return 0;
  return info.st_size;
}

size_t QFile::Read(void* buffer, size_t n)
{
  auto* to = static_cast<unsigned char*>(buffer);
  size_t have = 0;
  if (n > 0 && pushedBack >= 0)
    to[have++] = static_cast<unsigned char>(Next());
  if (!inMemory)
    return stream ? have + std::fread(to + have, 1, n - have, stream) : have;
  const size_t count = std::min(n - have, content.size() - position);
  if (count > 0)
    std::memcpy(to + have, content.data() + position, count);
  position += count;
  pastEnd = have + count < n;
  return have + count;
}

size_t QFile::Write(const void* buffer, size_t n)
{
  return stream ? std::fwrite(buffer, 1, n, stream) : 0;
}

bool QFile::Read(qstring& text)
{
  text.Empty();
  std::array<std::byte, 2> size;
  if (Read(size.data(), size.size()) != size.size())
    return false;
  std::string bytes(QByteReader(size).GetU16(), '\0');
  if (Read(bytes.data(), bytes.size()) != bytes.size())
    return false;
  text = qstring(std::move(bytes));
  return true;
}

bool QFile::Write(const qstring& text, bool withLength)
{
  std::string_view bytes = text.View();
  if (withLength) {
    bytes = bytes.substr(0, UINT16_MAX);
    QByteWriter size;
    size.PutU16(static_cast<uint16_t>(bytes.size()));
    if (Write(size.Bytes().data(), size.Size()) != size.Size())
      return false;
  }
  return Write(bytes.data(), bytes.size()) == bytes.size() && stream;
}

bool QFile::Write(const char* text)
{
  const size_t length = std::strlen(text);
  return stream && Write(text, length) == length;
}

bool QFile::Printf(const char* format, ...)
{
  va_list args;
  va_start(args, format);
  const bool good = stream && std::vfprintf(stream, format, args) >= 0;
  va_end(args);
  return good;
}

bool QFile::GetLine(char* buffer, int size)
{
  if (size <= 0)
    return false;
  int length = 0;
  bool any = false;
  while (length < size - 1) {
    const int c = Next();
    any = any || c >= 0;
    if (c < 0 || c == '\n')
      break;
    if (c != '\r')
      buffer[length++] = static_cast<char>(c);
  }
  buffer[length] = 0;
  return any;
}

bool QFile::GetLine(qstring& line)
{
  std::string text;
  int c = Next();
  const bool any = c >= 0;
  for (; c >= 0 && c != '\n'; c = Next())
    if (c != '\r')
      text += static_cast<char>(c);
  line = qstring(std::move(text));
  return any;
}

bool QFile::GetLine(std::u16string& line)
{
  line.clear();
  bool any = false;
  for (;;) {
    const int low = Next();
    const int high = low < 0 ? -1 : Next();
    if (high < 0)
      return any;
    any = true;
    const auto c = static_cast<char16_t>(low | high << 8);
    if (c == u'\n')
      return true;
    if (c != u'\r')
      line += c;
  }
}

bool QFile::GetString(char* buffer, int size)
{
  const auto separates = [](int c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  if (size <= 0)
    return false;
  int length = 0;
  int c = Next();
  while (separates(c))
    c = Next();
  const bool any = c >= 0;
  const bool quoted = c == '"';
  if (quoted)
    c = Next();
  for (; c >= 0 && (quoted ? c != '"' : !separates(c)); c = Next()) // what doesn't fit is read and dropped
    if (length < size - 1)
      buffer[length++] = static_cast<char>(c);
  if (!quoted && c >= 0)
    UnGetChar(c);
  buffer[length] = 0;
  return any;
}

bool QFile::PutChar(int c)
{
  if (inMemory) {
    QWARN("QFile:PutChar() not supported for memory files");
    return false;
  }
  return stream && std::fputc(c & 0xFF, stream) != EOF;
}

bool QFile::Flush()
{
  return stream && std::fflush(stream) == 0;
}
