#pragma once

#include "foundation/qsafewrite.h"

#include <memory>
#include <string>
#include <vector>

class QInfo;

// Configuration files that are saved together: all are on the disk beside their targets before the first takes its
// place, so a failure on the way leaves every file as it was.
class RSaveSet
{
public:
  RSaveSet();
  ~RSaveSet(); // what wasn't committed is dropped
  // The tree goes to the file that it was opened on; an unchanged tree writes nothing. False when the file exists and
  // couldn't be read or when writing failed (both reported), or when the user keeps a file that somebody else changed;
  // then Commit refuses. checkChanged: ask for such a file.
  bool Add(std::unique_ptr<QInfo> tree, bool checkChanged = true);
  // False (reported) when a file couldn't be put in its place.
  bool Commit();

private:
  std::vector<std::unique_ptr<QInfo>> trees;
  QFileSet files;
  bool failed = false;
};
