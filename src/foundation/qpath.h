#pragma once

#include "foundation/qobject.h"
#include "foundation/qstring.h"
#include "foundation/qtable.h"

#include <string>

// An ordered list of directories in which files are looked for.
class QPath : public QObject
{
public:
  static constexpr int MAX_PATH = 20;
  const char* GetClassName() const override { return "QPath"; }

  // False, with a report, when the list is full.
  bool Add(const std::string& directory);
  void Clear() { directories.Clear(); }
  // "" with a report outside 0..GetCount() - 1.
  const char* GetPath(int index) const;
  int GetCount() const { return directories.Count(); }
  // The first "directory/name" that exists, members of archives included, else name itself.
  // The next call overwrites what the pointer shows.
  const char* Resolve(const char* name) const;
  // The same; false, with name and "", when no directory has it.
  bool Find(const char* name, qstring& full, qstring* directory = nullptr) const;

private:
  DTable<std::string, MAX_PATH> directories;
};
