#pragma once

#include "foundation/qfile.h"
#include "foundation/qobject.h"
#include "foundation/qstring.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class QArchiveDecoder;

// A compressed file that holds other files: "AR01", the members, the directory, and as the last four bytes the
// directory's position. Numbers are little-endian. A member is "D", chunks with a 16-bit length before each, and a
// length of 0; a directory entry is the name with a zero behind it, the member's position and its original size.
//
// What is changed is gathered in memory and replaces the file when the archive is closed: a program that dies in
// between leaves the old one.
class QArchive : public QObject
{
public:
  enum Mode
  {
    READ,
    CREATE, // empty, whatever stood there
    UPDATE
  };
  // A file that can't be opened is reported; one that isn't an archive, or whose directory is damaged, too.
  explicit QArchive(std::string_view path, int mode = READ);
  // Closes it; a failure is reported.
  ~QArchive() override;
  QArchive(const QArchive&) = delete;
  QArchive& operator=(const QArchive&) = delete;
  const char* GetClassName() const override { return "QArchive"; }

  bool IsOpen() const { return open; }
  // Writes what was changed. False, reported, when that failed: the file is then as it was.
  bool Close();
  // Does it begin with "AR01"?
  bool IsArchive() const;
  // Empties it; in the modes that write.
  bool Create();
  // Compresses a file into it, under another name if one is given. False, with nothing changed, when the file can't be
  // read, or the archive would grow beyond what its 32-bit numbers can say.
  bool AddFile(const std::string& path, const char* storedName = nullptr);
  // Its entry is marked with "$" and the size 0; the space stays in use. The name is compared exactly.
  bool RemoveFile(const std::string& name);
  // Does a file of that name stay below the directory that it is written to? A member's name can come from anywhere.
  static bool IsSafeName(const std::string& name);
  // Writes the member to a file. Without outPath to its own name, if that is safe.
  bool ExtractFile(const std::string& name, const char* outPath = nullptr);
  // The member's bytes; its name is compared without regard to case. False, with no bytes, when there is no such
  // member, it is empty, or it is damaged (reported).
  bool ReadFile(const std::string& name, std::vector<std::byte>& data);
  // A stream over the member's bytes; null as ReadFile is false.
  std::unique_ptr<QFile> OpenFile(const std::string& name);
  // By its exact name; with seek Position is the member's.
  bool FindFile(const std::string& name, bool seek = false);
  int64_t Position() const { return position; }
  // Walks the directory, with the removed entries; false at its end.
  bool GetNextFile(qstring& name, int* offset, int* size);
  void Rewind() { walk = 0; }
  // Told of the position in the file and that of the directory for each chunk that is decoded; false stops.
  using Progress = std::function<bool(int64_t position, int64_t directory)>;
  void SetProgressCallback(Progress callback) { progress = std::move(callback); }
  // Tells on the standard output what is compressed and how well.
  void SetVerbose(bool on) { verbose = on; }

private:
  struct Entry
  {
    std::string name;
    uint32_t offset;
    uint32_t size;
  };
  bool Open();
  bool ReadDirectory(uint32_t dirOffset, int64_t end);
  void IndexNames();
  const Entry* Find(const std::string& name) const;
  const Entry* FindAnyCase(const std::string& name) const;
  // Bytes of the file or of what is to become it; fewer at the end.
  size_t ReadAt(int64_t offset, std::span<uint8_t> bytes);
  bool MayWrite(const char* what) const;
  std::vector<std::byte> Compress(std::span<const std::byte> content, const std::string& path) const;
  bool Decode(const Entry& entry, std::vector<std::byte>& data);
  int64_t FindData(int64_t at);
  bool DecodeChunks(int64_t at, const Entry& entry, std::vector<std::byte>& data);
  std::vector<std::byte> Directory() const;

  int mode;
  bool open = false;
  bool changed = false;
  bool verbose = false;
  std::FILE* stream = nullptr; // in mode READ
  std::vector<std::byte> body; // in the others: the file up to its directory
  int64_t dirPosition = 0;
  std::vector<Entry> entries;
  // First entries of their names, as they are and in lower case.
  std::unordered_map<std::string, size_t> byName, byLowerName;
  size_t walk = 0;
  int64_t position = 0;
  Progress progress;
  std::unique_ptr<QArchiveDecoder> decoder;
};
