#include "track/rbestlaps.h"

#include "foundation/qinfo.h"

namespace {

std::string Key(const std::string& section, int i)
{
  return section + ".best" + std::to_string(i);
}

} // namespace

void RBestLaps::Load(const QInfo& info, const std::string& section)
{
  for (int i = 0; i < COUNT; ++i) {
    const std::string key = Key(section, i);
    Entry& e = best[static_cast<size_t>(i)];
    e.lapTime = info.GetInt(key + ".laptime");
    e.date = info.GetInt(key + ".date");
    info.GetString(key + ".car", e.car);
    info.GetString(key + ".car_id", e.carID);
    e.flags = info.GetInt(key + ".flags");
  }
}

void RBestLaps::Save(QInfo& info, const std::string& section) const
{
  for (int i = 0; i < COUNT; ++i) {
    const std::string key = Key(section, i);
    const Entry& e = best[static_cast<size_t>(i)];
    info.SetInt(key + ".laptime", e.lapTime);
    info.SetInt(key + ".date", e.date);
    info.SetString(key + ".car", e.car);
    info.SetString(key + ".car_id", e.carID);
    info.SetInt(key + ".flags", e.flags);
  }
}
