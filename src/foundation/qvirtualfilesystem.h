#pragma once

#include "foundation/qarchive.h"
#include "foundation/qtable.h"

#include <memory>
#include <string>
#include <vector>

// Makes the members of open archives appear as files in the directory of their archive: "a.dof" of
// "data/tracks/x/graphics.ar" is there as "data/tracks/x/a.dof". A file on the disk always wins over a member.
// While it lives, what asks QFileExists and reads files "with archives" is answered from here too.
class QVirtualFileSystem
{
public:
  static constexpr int MAX_ARCHIVE = 100;
  QVirtualFileSystem();
  ~QVirtualFileSystem(); // archives that are still attached are reported
  QVirtualFileSystem(const QVirtualFileSystem&) = delete;
  QVirtualFileSystem& operator=(const QVirtualFileSystem&) = delete;
  // Not owned. False, reported, when there is no place for one more.
  bool AddArchive(QArchive* archive);
  bool RemoveArchive(QArchive* archive); // false when it isn't attached
  void RemoveAll() { archives.Clear(); }
  int Count() const { return archives.Count(); }
  // On the disk, or as a member by its exact name.
  bool FileExists(const std::string& path);
  // From the disk with the mode of QFile, else a member, its name taken without regard to case. Null when there is
  // neither.
  std::unique_ptr<QFile> OpenFile(const std::string& path, uint32_t mode = QFile::READ_BINARY);

private:
  bool HasMember(const std::string& path);
  bool ReadMember(const std::string& path, std::vector<std::byte>& content);
  DTable<QArchive*, MAX_ARCHIVE> archives;
};
