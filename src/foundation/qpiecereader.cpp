#include "foundation/qpiecereader.h"

#include "foundation/qfile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr size_t MIN_BUFFER = size_t{1} << 20; // from this size on, blocks are kept for the next file

} // namespace

QPieceReader::QPieceReader(const std::string& path) : stream(qfopen(path.c_str(), "rb"))
{
  struct stat info;
  if (stream && fstat(fileno(stream), &info) == 0) {
    unread = static_cast<size_t>(info.st_size);
    return;
  }
  size_t size = 0;
  open = QReadFile(path, buffer, size, true);
  rest = {buffer.Data(), size};
}

QPieceReader::~QPieceReader()
{
  if (stream)
    qfclose(stream);
}

// Reads until the rest has that many bytes; it moves to the buffer's front.
bool QPieceReader::Fill(size_t count)
{
  const size_t old = rest.size();
  if (buffer.Size() < count) {
    QBlock larger;
    try {
      larger = QBlock(std::max(count, std::min(Left(), MIN_BUFFER)));
    } catch (const std::bad_alloc&) {
      return false;
    }
    std::ranges::copy(rest, larger.Data());
    buffer = std::move(larger);
  } else if (old > 0) {
    std::memmove(buffer.Data(), rest.data(), old);
  }
  for (size_t have = old; have < count;) {
    const ssize_t n = read(fileno(stream), buffer.Data() + have, count - have); // the stream itself stays unused
    if (n == 0 || (n < 0 && errno != EINTR))
      return false;
    have += n > 0 ? static_cast<size_t>(n) : 0;
  }
  rest = {buffer.Data(), count};
  unread -= count - old;
  return true;
}

std::span<const std::byte> QPieceReader::Take(size_t count)
{
  if (count > Left() || (count > rest.size() && !Fill(count))) {
    rest = {};
    unread = 0;
    return {};
  }
  const auto taken = rest.first(count);
  rest = rest.subspan(count);
  return taken;
}

std::span<const std::byte> QPieceReader::Look(size_t count)
{
  if (count > rest.size() && unread > 0 && !Fill(std::min(std::max(count, PIECE), Left()))) {
    rest = {};
    unread = 0;
  }
  return rest;
}
