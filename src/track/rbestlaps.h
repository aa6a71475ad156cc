#pragma once

#include <array>
#include <string>

class QInfo;

// The ten best laps of a track, as "bestlaps.ini" keeps them.
class RBestLaps
{
public:
  struct Entry
  {
    int lapTime = 0; // milliseconds; 0: none
    int date = 0;
    std::string car;
    std::string carID;
    int flags = 0;
  };
  static constexpr int COUNT = 10;
  std::array<Entry, COUNT> best;
  bool dirty = false; // Save has something to write

  // section: in front of the keys, such as "results".
  void Load(const QInfo& info, const std::string& section);
  void Save(QInfo& info, const std::string& section) const;
};
