#pragma once

#include "foundation/qblock.h"
#include "foundation/qobject.h"
#include "foundation/qstring.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Opens a regular file by a mode of fopen; directories, pipes and devices are refused. A name that doesn't exist is
// looked for without regard to case (QFindPath). Null with errno set when that fails; nothing is reported.
[[nodiscard]] std::FILE* qfopen(const char* path, const char* mode);
// False when what was written didn't reach the file. A null stream is reported.
bool qfclose(std::FILE* stream);
// Streams opened by qfopen and not closed yet.
int QOpenFileCount();

// A whole regular file. False with errno set (ENOENT: it doesn't exist) and an empty content when it can't be read.
// With archives a file that isn't on the disk may be a member of an open archive.
[[nodiscard]] bool QReadFile(const std::string& path, std::vector<std::byte>& content, bool archives = false);
[[nodiscard]] bool QReadFile(const std::string& path, std::string& content, bool archives = false);
// The same into a block, for big files; size is the file's.
[[nodiscard]] bool QReadFile(const std::string& path, QBlock& block, size_t& size, bool archives = false);

// A stream over a file, or over a file's content in memory. One that couldn't be opened acts as an empty file.
// It writes in place: what must never be half written goes through QWriteFile instead.
class QFile : public QObject
{
public:
  enum Mode : uint32_t
  {
    READ_BINARY = 1,   // "rb"
    WRITE_BINARY = 2,  // "wb"
    UPDATE_BINARY = 3, // "rb+"
    CREATE_BINARY = 4, // "wb+"
    READ_TEXT = 5,     // "r"
    APPEND_TEXT = 6,   // "a"
    APPEND_READ = 7,   // "a+"
    APPEND_BINARY = 8, // "ab"
    WRITE_TEXT = 9,    // "w"
    MODE_MASK = 0xFF,
    MEMORY = 0x100, // the file is read whole at construction; with READ_BINARY only
  };
  enum SeekMode
  {
    FROM_START,
    FROM_END,
    FROM_CURRENT
  };

  explicit QFile(std::string_view path, uint32_t mode = READ_BINARY);
  // A file that is nowhere but in memory; to be read.
  QFile(std::string_view name, std::vector<std::byte> bytes);
  // Takes over a stream of qfopen and closes it in the end.
  QFile(std::string_view name, std::FILE* stream, uint32_t mode);
  ~QFile() override;
  QFile(const QFile&) = delete;
  QFile& operator=(const QFile&) = delete;
  const char* GetClassName() const override { return "QFile"; }

  bool IsOpen() const { return stream || inMemory; }
  // True once a read went past the end, as with the streams of the C library.
  bool IsEOF() const;
  int GetChar();                                        // 0..255; 0xFF past the end
  void UnGetChar(int c);                                // one byte deep
  bool Seek(int64_t offset, int seekMode = FROM_START); // in memory the position is clamped to the content
  int64_t Tell() const;
  int64_t Size() const;
  size_t Read(void* buffer, size_t n); // bytes read
  size_t Write(const void* buffer, size_t n);
  // A 16-bit length, low byte first, and as many bytes. False, and an empty string, when they aren't all there.
  bool Read(qstring& text);
  bool Write(const qstring& text, bool withLength); // cut at 65,535 characters when the length is written
  bool Write(const char* text);
  [[gnu::format(printf, 2, 3)]] bool Printf(const char* format, ...);
  // To LF, which isn't stored; CR is dropped. A longer line goes on in the next call. False at the end of the file.
  bool GetLine(char* buffer, int size);
  bool GetLine(qstring& line);
  // The same for 16-bit characters, low byte first.
  bool GetLine(std::u16string& line);
  // A word between blanks, tabs and line ends, or what stands between two '"'. False when there is none.
  bool GetString(char* buffer, int size);
  bool PutChar(int c);
  bool Flush();

private:
  // For CR LF and words: -1 past the end.
  int Next();
  void Preload();

  std::FILE* stream = nullptr;
  uint32_t mode;
  int pushedBack = -1; // -1: none
  bool inMemory = false;
  bool pastEnd = false; // in memory: a read found no byte
  std::vector<std::byte> content;
  size_t position = 0;
};
