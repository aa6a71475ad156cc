#pragma once

#include "foundation/qtable.h"

#include <string>

struct RPaceNote
{
  float start = 0; // metres along the road
  float end = 0;
  int image = 0;
};

// What a co-driver reads out: "pacenotes.ini".
class RPaceNotes
{
public:
  static constexpr int MAX_NOTES = 200;
  DTable<RPaceNote, MAX_NOTES> notes;

  // A missing file gives no notes and no report; more notes than there is room for are reported and left out.
  void Load(const std::string& path);
  // False when the file couldn't be written (reported).
  bool Save(const std::string& path) const;
};
