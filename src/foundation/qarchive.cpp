#include "foundation/qarchive.h"

#include "foundation/qarchivecoder.h"
#include "foundation/qbytes.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <limits>
#include <system_error>
#include <thread>

namespace {

constexpr std::string_view MAGIC = "AR01";
constexpr uint8_t DATA = 'D';
constexpr size_t NUMBER = 4;
constexpr size_t MIN_BLOCKS_FOR_THREAD = 32;
// A directory is kept in memory; no archive of a track comes near this.
constexpr int64_t MAX_DIRECTORY = 256 << 20;

std::string LowerCase(std::string_view text)
{
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::span<const uint8_t> AsBytes(std::span<const std::byte> bytes)
{
  return {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
}

uint32_t NumberIn(const uint8_t* bytes, size_t size)
{
  uint32_t value = 0;
  for (size_t i = 0; i < size; ++i)
    value |= static_cast<uint32_t>(bytes[i]) << 8 * i;
  return value;
}

// Each block's chunk behind its length.
std::vector<std::byte> CompressBlocks(std::span<const std::byte> content)
{
  const auto encoder = std::make_unique<QArchiveEncoder>();
  QByteWriter writer;
  writer.Reserve(content.size() / 2 + QARCHIVE_MAX_CHUNK);
  while (!content.empty()) {
    const auto block = content.first(std::min(content.size(), QARCHIVE_BLOCK));
    content = content.subspan(block.size());
    const auto chunk = encoder->Encode(AsBytes(block));
    writer.PutU16(static_cast<uint16_t>(chunk.size()));
    writer.PutBytes(std::as_bytes(chunk));
  }
  return writer.TakeBytes();
}

} // namespace

QArchive::QArchive(std::string_view path, int wanted) : mode(wanted), decoder(std::make_unique<QArchiveDecoder>())
{
  const std::string name(path);
  SetName(name.c_str());
  if (mode == CREATE) {
    open = true;
    open = Create();
  } else {
    open = Open();
  }
}

QArchive::~QArchive()
{
  Close();
}

bool QArchive::Open()
{
  stream = qfopen(GetName(), "rb");
  if (!stream) {
    QWARN("QArchive: can't open '%s'", GetName());
    return false;
  }
  std::fseek(stream, 0, SEEK_END);
  const int64_t end = std::ftell(stream) - static_cast<int64_t>(NUMBER);
  std::array<uint8_t, NUMBER> number;
  bool good = end >= static_cast<int64_t>(MAGIC.size()) && ReadAt(end, number) == NUMBER && IsArchive();
  good = good && ReadDirectory(NumberIn(number.data(), NUMBER), end);
  if (good && mode == UPDATE) {
    body.resize(static_cast<size_t>(dirPosition));
    good = ReadAt(0, {reinterpret_cast<uint8_t*>(body.data()), body.size()}) == body.size();
  }
  if (!good)
    QWARN("QArchive: '%s' isn't an archive, or its directory is damaged", GetName());
  if (!good || mode == UPDATE) {
    qfclose(stream);
    stream = nullptr;
  }
  return good;
}

bool QArchive::ReadDirectory(uint32_t dirOffset, int64_t end)
{
  if (dirOffset < MAGIC.size() || dirOffset > end || end - dirOffset > MAX_DIRECTORY)
    return false;
  dirPosition = dirOffset;
  std::vector<uint8_t> bytes(static_cast<size_t>(end - dirOffset));
  if (ReadAt(dirPosition, bytes) != bytes.size())
    return false;
  entries.clear();
  for (size_t at = 0; at < bytes.size();) {
    const auto nameEnd = std::find(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(), uint8_t{0});
    const auto name = static_cast<size_t>(nameEnd - bytes.begin());
    if (bytes.size() - name < 1 + 2 * NUMBER)
      return false;
    const uint8_t* numbers = bytes.data() + name + 1;
    entries.push_back({std::string(reinterpret_cast<const char*>(bytes.data()) + at, name - at),
                       NumberIn(numbers, NUMBER), NumberIn(numbers + NUMBER, NUMBER)});
    at = name + 1 + 2 * NUMBER;
  }
  IndexNames();
  return true;
}

void QArchive::IndexNames()
{
  byName.clear();
  byLowerName.clear();
  for (size_t i = 0; i < entries.size(); ++i) {
    byName.emplace(entries[i].name, i);
    byLowerName.emplace(LowerCase(entries[i].name), i);
  }
  Rewind();
}

std::vector<std::byte> QArchive::Directory() const
{
  QByteWriter writer;
  for (const Entry& entry : entries) {
    writer.PutText(entry.name);
    writer.PutU8(0);
    writer.PutU32(entry.offset);
    writer.PutU32(entry.size);
  }
  return writer.TakeBytes();
}

bool QArchive::Close()
{
  bool good = true;
  if (open && changed) {
    const std::vector<std::byte> directory = Directory();
    body.insert(body.end(), directory.begin(), directory.end());
    QByteWriter trailer;
    trailer.PutU32(static_cast<uint32_t>(dirPosition));
    body.insert(body.end(), trailer.Bytes().begin(), trailer.Bytes().end());
    good = QWriteFile(GetName(), body);
    if (!good)
      QERR("QArchive: can't write '%s'", GetName());
  }
  if (stream)
    qfclose(stream);
  stream = nullptr;
  open = changed = false;
  entries.clear();
  IndexNames();
  body = {};
  return good;
}

bool QArchive::IsArchive() const
{
  std::array<char, MAGIC.size()> start{};
  if (!stream)
    return open;
  std::fseek(stream, 0, SEEK_SET);
  return std::fread(start.data(), 1, start.size(), stream) == start.size() &&
         std::string_view(start.data(), start.size()) == MAGIC;
}

bool QArchive::MayWrite(const char* what) const
{
  if (open && mode != READ)
    return true;
  QWARN("QArchive:%s() '%s' isn't open for writing", what, GetName());
  return false;
}

bool QArchive::Create()
{
  if (!MayWrite("Create"))
    return false;
  entries.clear();
  IndexNames();
  QByteWriter start;
  start.PutText(MAGIC);
  body = start.TakeBytes();
  dirPosition = static_cast<int64_t>(body.size());
  changed = true;
  return true;
}

const QArchive::Entry* QArchive::Find(const std::string& name) const
{
  const auto found = byName.find(name);
  return found == byName.end() ? nullptr : &entries[found->second];
}

const QArchive::Entry* QArchive::FindAnyCase(const std::string& name) const
{
  const auto found = byLowerName.find(LowerCase(name));
  return found == byLowerName.end() ? nullptr : &entries[found->second];
}

bool QArchive::FindFile(const std::string& name, bool seek)
{
  const Entry* entry = Find(name);
  if (entry && seek)
    position = entry->offset;
  return entry != nullptr;
}

bool QArchive::GetNextFile(qstring& name, int* offset, int* size)
{
  if (walk >= entries.size())
    return false;
  const Entry& entry = entries[walk++];
  name = entry.name.c_str();
  if (offset)
    *offset = static_cast<int>(entry.offset);
  if (size)
    *size = static_cast<int>(entry.size);
  return true;
}

size_t QArchive::ReadAt(int64_t offset, std::span<uint8_t> bytes)
{
  if (offset < 0)
    return 0;
  if (stream)
    return std::fseek(stream, static_cast<long>(offset), SEEK_SET) == 0
               ? std::fread(bytes.data(), 1, bytes.size(), stream)
               : 0;
  const auto start = static_cast<size_t>(offset);
  if (start >= body.size())
    return 0;
  const size_t count = std::min(bytes.size(), body.size() - start);
  std::memcpy(bytes.data(), body.data() + start, count);
  return count;
}

std::vector<std::byte> QArchive::Compress(std::span<const std::byte> content, const std::string& path) const
{
  // Blocks don't know of each other: the second half is coded beside the first.
  const size_t blocks = (content.size() + QARCHIVE_BLOCK - 1) / QARCHIVE_BLOCK;
  const size_t split = blocks < MIN_BLOCKS_FOR_THREAD ? content.size() : blocks / 2 * QARCHIVE_BLOCK;
  std::vector<std::byte> first, second;
  const auto codeSecond = [&] { second = CompressBlocks(content.subspan(split)); };
  std::thread beside;
  try {
    if (split < content.size())
      beside = std::thread(codeSecond);
  } catch (const std::system_error&) { // no thread to be had
    codeSecond();
  }
  first = CompressBlocks(content.first(split));
  if (beside.joinable())
    beside.join();
  QByteWriter writer;
  writer.Reserve(first.size() + second.size() + 8);
  writer.PutU8(DATA);
  writer.PutBytes(first);
  writer.PutBytes(second);
  writer.PutU16(0);
  if (verbose)
    std::printf("Compress '%s'%s %d%%\n", path.c_str(), std::string(blocks, '.').c_str(),
                content.empty() ? 100 : static_cast<int>(writer.Size() * 100 / content.size()));
  return writer.TakeBytes();
}

bool QArchive::AddFile(const std::string& path, const char* storedName)
{
  if (!MayWrite("AddFile"))
    return false;
  std::vector<std::byte> content;
  if (!QReadFile(path, content)) {
    std::printf("** ERROR: '%s' not found!\n", path.c_str());
    return false;
  }
  const std::string name = storedName ? storedName : path;
  const std::vector<std::byte> member = Compress(content, path);
  constexpr size_t LIMIT = std::numeric_limits<int32_t>::max();
  if (content.size() > LIMIT || member.size() > LIMIT - std::min(LIMIT, body.size())) {
    QERR("QArchive: '%s' can't hold '%s' as well; it would be too large", GetName(), path.c_str());
    return false;
  }
  entries.push_back({name, static_cast<uint32_t>(dirPosition), static_cast<uint32_t>(content.size())});
  body.insert(body.end(), member.begin(), member.end());
  dirPosition = static_cast<int64_t>(body.size());
  IndexNames();
  changed = true;
  return true;
}

bool QArchive::RemoveFile(const std::string& name)
{
  if (!MayWrite("RemoveFile"))
    return false;
  const auto found = byName.find(name);
  if (found == byName.end() || name.empty())
    return false;
  Entry& entry = entries[found->second];
  entry.name[0] = '$';
  entry.size = 0;
  IndexNames();
  changed = true;
  return true;
}

// Where the chunks of a member begin, with blocks of other kinds skipped; -1 when the file ends before.
int64_t QArchive::FindData(int64_t at)
{
  std::array<uint8_t, 1 + NUMBER> head;
  for (;;) {
    const size_t have = ReadAt(at, head);
    if (have >= 1 && head[0] == DATA)
      return at + 1;
    if (have < head.size())
      return -1;
    at += static_cast<int64_t>(head.size()) + NumberIn(head.data() + 1, NUMBER);
  }
}

bool QArchive::DecodeChunks(int64_t at, const Entry& entry, std::vector<std::byte>& data)
{
  std::array<uint8_t, QARCHIVE_MAX_CHUNK> chunk;
  for (;;) {
    std::array<uint8_t, 2> head;
    if (ReadAt(at, head) != head.size())
      return false;
    const size_t length = NumberIn(head.data(), head.size());
    at += static_cast<int64_t>(head.size());
    if (length == 0)
      return true;
    if (length > QARCHIVE_MAX_CHUNK) {
      QERR("QArchive: attempt to read decompress chunk of size %d (max %d)", static_cast<int>(length),
           static_cast<int>(QARCHIVE_MAX_CHUNK));
      return false;
    }
    if (progress && !progress(at, dirPosition))
      return false;
    if (ReadAt(at, std::span(chunk).first(length)) != length)
      return false;
    at += static_cast<int64_t>(length);
    const auto result = decoder->Decode(std::span(chunk).first(length));
    if (result == QArchiveDecoder::Result::OVERFLOW)
      QERR("QArchive: decompressed chunk overflow of size %d (max %d)", static_cast<int>(QARCHIVE_MAX_CHUNK) + 1,
           static_cast<int>(QARCHIVE_MAX_CHUNK));
    if (result != QArchiveDecoder::Result::GOOD || decoder->Bytes().size() > entry.size - data.size())
      return false;
    const auto bytes = std::as_bytes(decoder->Bytes());
    data.insert(data.end(), bytes.begin(), bytes.end());
  }
}

bool QArchive::Decode(const Entry& entry, std::vector<std::byte>& data)
{
  data.clear();
  // What the directory says is only believed so far: the rest comes as it is decoded.
  data.reserve(std::min<size_t>(entry.size, 64 << 20));
  const int64_t start = FindData(entry.offset);
  if (start >= 0 && DecodeChunks(start, entry, data) && data.size() == entry.size)
    return true;
  QERR("QArchive: '%s' in '%s' can't be decoded", entry.name.c_str(), GetName());
  data.clear();
  return false;
}

bool QArchive::ReadFile(const std::string& name, std::vector<std::byte>& data)
{
  const Entry* entry = FindAnyCase(name);
  data.clear();
  return entry && entry->size > 0 && Decode(*entry, data);
}

std::unique_ptr<QFile> QArchive::OpenFile(const std::string& name)
{
  std::vector<std::byte> data;
  if (!ReadFile(name, data))
    return nullptr;
  return std::make_unique<QFile>(name, std::move(data));
}

bool QArchive::IsSafeName(const std::string& name)
{
  if (name.empty() || name[0] == '/' || name[0] == '\\' || name.find(':') != std::string::npos)
    return false;
  for (size_t at = 0; at <= name.size();) {
    const size_t end = std::min(name.find_first_of("/\\", at), name.size());
    if (name.compare(at, end - at, "..") == 0)
      return false;
    at = end + 1;
  }
  return true;
}

bool QArchive::ExtractFile(const std::string& name, const char* outPath)
{
  const Entry* entry = Find(name);
  if (!entry)
    return false;
  if (!outPath && !IsSafeName(name)) {
    QERR("QArchive: '%s' lies outside the directory that it would be extracted to", name.c_str());
    return false;
  }
  const std::string target = outPath ? outPath : name;
  std::vector<std::byte> data;
  if (!Decode(*entry, data))
    return false;
  if (QWriteFile(target, data))
    return true;
  QERR("Can't open '%s' for output", target.c_str());
  return false;
}
