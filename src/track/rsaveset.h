#pragma once

#include <memory>
#include <string>
#include <vector>

class QFileSet;
class QInfo;

// Configuration files that are saved together: all are on the disk beside their targets before the first takes its
// place, so a failure on the way leaves every file as it was.
class RSaveSet
{
public:
  RSaveSet();
  ~RSaveSet(); // what wasn't committed is dropped
  RSaveSet(const RSaveSet&) = delete;
  RSaveSet& operator=(const RSaveSet&) = delete;

  // The file's tree, to be changed. One that stays unchanged isn't written. It lives as long as the set.
  QInfo& Open(const std::string& path);
  // An empty tree, which replaces all that the file holds.
  QInfo& OpenEmpty(const std::string& path);
  // Once. False with no file changed when one couldn't be written, or is there and couldn't be read (both reported), or
  // was changed by somebody else since it was opened and the user keeps it.
  [[nodiscard]] bool Commit();

private:
  struct Entry
  {
    std::unique_ptr<QInfo> tree;
    bool replaces;
  };
  static bool Prepare(const Entry& entry, QFileSet& files);

  std::vector<Entry> entries;
};
