#pragma once

#include "foundation/qblock.h"

#include <cstddef>
#include <cstdio>
#include <span>
#include <string>

// A file's bytes from front to back in pieces, for what is rearranged as it arrives: a piece of a file on the disk is
// still in the cache when its bytes go to their place, and there is never a second copy of the whole file.
class QPieceReader
{
public:
  static constexpr size_t PIECE = size_t{256} << 10; // what to take at a time, in bytes

  // Of memory that must outlive it.
  explicit QPieceReader(std::span<const std::byte> bytes) : rest(bytes) {}
  // A regular file on the disk, or a member of an open archive.
  explicit QPieceReader(const std::string& path);
  ~QPieceReader();
  QPieceReader(const QPieceReader&) = delete;
  QPieceReader& operator=(const QPieceReader&) = delete;
  // False, with errno set by the constructor, when there is no such file.
  bool IsOpen() const { return open; }
  size_t Left() const { return rest.size() + unread; }
  // The next bytes, which hold until the next Take or Look. None, and none from then on, when fewer are left, the file
  // shrank meanwhile, or there is no memory for them.
  std::span<const std::byte> Take(size_t count);
  // A piece of the next bytes without taking them: at least that many, unless fewer are left.
  std::span<const std::byte> Look(size_t count);

private:
  bool Fill(size_t count);

  std::FILE* stream = nullptr; // null: in memory
  bool open = true;
  std::span<const std::byte> rest; // what is in memory and not taken
  size_t unread = 0;               // bytes behind the rest, in the stream
  QBlock buffer;                   // of the stream's piece, or all of a member
};
