#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "track/rfindfile.h"
#include "track/rsaveset.h"
#include "track/rtrackvrml.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>

namespace {

constexpr float LOD_STEP = 250; // metres that each further level reaches

// The name before "_lod" and what stands behind it; false for a name without "_lod" and a number at its end.
bool SplitLodName(const std::string& name, std::string& base, std::string& number)
{
  const size_t at = name.rfind("_lod");
  if (at == std::string::npos)
    return false;
  base = name.substr(0, at);
  number = name.substr(at + 4);
  return number.find_first_not_of("0123456789") == std::string::npos;
}

std::string Rounded(float value)
{
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%.0f", static_cast<double>(value));
  return text.data();
}

// Writes the entries of "objects", and keeps their names apart.
class NodeWriter
{
public:
  explicit NodeWriter(QInfo& target) : info(target) {}

  void Write(const RTrackNode& node)
  {
    std::string base, number;
    if (!SplitLodName(node.name, base, number))
      WriteEntry(node);
    else if (number.empty())
      QWARN("Failed to save lod %s", node.name.c_str());
    else
      WriteLod(base, number);
  }

private:
  // A coarser level that an author loaded as a node of its own: only its distance belongs to the base object.
  void WriteLod(const std::string& base, const std::string& number)
  {
    int level = 0;
    std::from_chars(number.data(), number.data() + number.size(), level);
    if (level == 1)
      info.SetString("objects." + base + ".lod0_z", Rounded(LOD_STEP));
    info.SetString("objects." + base + ".lod" + std::to_string(level) + "_z",
                   Rounded((static_cast<float>(level) + 1) * LOD_STEP));
    taken.insert(base);
  }

  void WriteEntry(const RTrackNode& node)
  {
    const std::string key = "objects." + FreeName(node.name);
    info.SetString(key + ".file", node.file);
    info.SetInt(key + ".flags", static_cast<int>(node.flags));
    for (int i = 0; i < RTrackNode::LODS; ++i)
      if (const float distance = node.LodDistance(i); distance != 0)
        info.SetString(key + ".lod" + std::to_string(i) + "_z", Rounded(distance));
    for (const auto& [name, value] : node.movableKeys)
      info.SetString(key + "." + name, value);
  }

  // The name, or the name and the first number that makes it new.
  std::string FreeName(const std::string& name)
  {
    std::string entry = name;
    int& next = numbers[name];
    while (!taken.insert(entry).second)
      entry = name + std::to_string(next++);
    return entry;
  }

  QInfo& info;
  std::set<std::string> taken;
  std::map<std::string, int> numbers; // the next to try for a name
};

} // namespace

void RTrackVRML::SaveNodes(QInfo& info) const
{
  NodeWriter writer(info);
  for (const auto& node : nodes)
    writer.Write(*node);
}

// The four files belong together: none changes before all are on the disk beside the old ones, which makes a backup of
// geometry.ini needless. One that an interrupted save of an older program left behind goes.
bool RTrackVRML::Save()
{
  if (cancelled) {
    QWARN("The track '%s' was loaded in part only; saving it would lose the rest", trackName.c_str());
    return false;
  }
  // What a file of a packed track holds beside the records is kept as well.
  const ROpenArchive packed(RFindPath("track.ar", trackDir)), graphics(PathOf("graphics.ar"));
  RSaveSet set;
  if (!AddToSave(set))
    return false;
  SaveNodes(set.OpenEmpty(PathOf("geometry.ini")));
  if (!set.Commit())
    return false;
  std::remove(PathOf("geometry_backupold.ini").c_str());
  RereadSpecial();
  return true;
}
