#pragma once

#include <string>
#include <string_view>

// Holds the program's place for a user while it lives, by a name in the system that no file stands behind and that
// goes with the process, however it ends.
class QSingleInstance
{
public:
  explicit QSingleInstance(std::string_view program);
  ~QSingleInstance();
  QSingleInstance(const QSingleInstance&) = delete;
  QSingleInstance& operator=(const QSingleInstance&) = delete;
  // False when another process of this user holds it. A system that can't tell counts as free.
  bool IsFirst() const { return first; }

private:
  int handle = -1;
  bool first = true;
};
