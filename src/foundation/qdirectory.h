#pragma once

#include "foundation/qobject.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

// What is known of a directory's entry; all zero when it can't be examined.
struct QFileInfo
{
  int64_t size = 0; // bytes
  std::time_t modifyTime = 0;
  std::time_t accessTime = 0;
  bool isDirectory = false;
};

// Walks the entries of a directory, "." and ".." included, in the platform's order. A directory that can't be read
// has none.
class QDirectory : public QObject
{
public:
  explicit QDirectory(const std::string& path);
  ~QDirectory() override;
  QDirectory(const QDirectory&) = delete;
  QDirectory& operator=(const QDirectory&) = delete;
  const char* GetClassName() const override { return "QDirectory"; }

  // Starts over, at another path. False when it isn't a directory that can be read.
  bool Read(const std::string& path);
  // False behind the last entry.
  bool ReadNext(std::string& name, QFileInfo* info = nullptr);
  // False, with all zero, when the path doesn't exist.
  static bool GetInfo(const std::string& path, QFileInfo& info);
  // The names of the files, directories left out, in the order of their bytes; for results that mustn't depend on
  // the file system.
  static std::vector<std::string> SortedFiles(const std::string& path);

private:
  struct Stream;
  std::string path;
  std::unique_ptr<Stream> stream; // null when there is nothing to read
};
