#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Files are replaced, never rewritten: the new content goes to a temporary file in the target's directory, is flushed
// to the disk, takes over mode and owner of the file it replaces, and is renamed over it. At each instant the name
// holds the whole old or the whole new content. A link is followed: its target is what gets replaced.

// Writes one file. False when any step failed: the old file stands, and no temporary file is left.
// The caller reports, since it knows what the file was for; errno tells the reason.
[[nodiscard]] bool QWriteFile(const std::string& path, std::string_view content);
[[nodiscard]] bool QWriteFile(const std::string& path, std::span<const std::byte> content);

// Several files that belong together. All contents are on the disk beside their targets before the first is renamed,
// so that a full disk is noticed while every old file still stands.
class QFileSet
{
public:
  QFileSet();
  ~QFileSet(); // removes what was added and not committed
  QFileSet(const QFileSet&) = delete;
  QFileSet& operator=(const QFileSet&) = delete;
  // Writes the content beside path. False when that failed, and then Commit will refuse.
  [[nodiscard]] bool Add(const std::string& path, std::string_view content);
  // Renames all, in the order of Add. False when a file couldn't be added or renamed; the files renamed before that
  // stay new, the others old.
  [[nodiscard]] bool Commit();

private:
  friend class QFileBatch;
  struct Entry;
  std::vector<std::unique_ptr<Entry>> entries;
  bool failed = false;
};

// Many files of one directory that don't belong together. Each is replaced as above, but they reach the disk at one
// go: a flush a file costs more than the making of most files.
class QFileBatch
{
public:
  explicit QFileBatch(const std::string& targetDirectory);
  ~QFileBatch(); // removes what was added and not committed
  QFileBatch(const QFileBatch&) = delete;
  QFileBatch& operator=(const QFileBatch&) = delete;
  // Writes the content beside the file of that name. False when that failed; the other files aren't concerned.
  [[nodiscard]] bool Add(const std::string& name, std::span<const std::byte> content);
  size_t Pending() const { return entries.size(); }
  // Flushes and renames what was added since the last one. Gives the paths that couldn't be, none when all is well.
  [[nodiscard]] std::vector<std::string> Commit();

private:
  struct Names;
  std::string directory;
  std::string realDirectory;    // whose file system is flushed
  std::unique_ptr<Names> names; // in the directory at the start
  std::vector<std::unique_ptr<QFileSet::Entry>> entries;
};

// Where a write to path lands: the file at the end of its links, and, when no file of that very name exists, the file
// whose name differs only in case or in "\" for "/". A new name stays as given.
std::string QWriteTarget(const std::string& path);
