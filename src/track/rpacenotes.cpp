#include "track/rpacenotes.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <algorithm>

namespace {

std::string Key(int i)
{
  return "pacenotes.pacenote" + std::to_string(i);
}

// Any number a file may hold, NaN included, as a whole number.
int WholeNumber(float value)
{
  constexpr float LIMIT = 2147483520.0f; // the largest that fits
  return value >= -LIMIT && value <= LIMIT ? static_cast<int>(value) : 0;
}

} // namespace

void RPaceNotes::Load(const std::string& path)
{
  notes.Clear();
  const QInfo info(path, QInfo::NO_OPEN_WARNING);
  int count = info.GetInt("pacenotes.count");
  if (count > MAX_NOTES) {
    QWARN("Pacenotes: file indicates %d notes, max=%d", count, MAX_NOTES);
    count = MAX_NOTES;
  }
  for (int i = 0; i < count; ++i) {
    const std::string key = Key(i);
    static_cast<void>(notes.Add(
        {info.GetFloat(key + ".start"), info.GetFloat(key + ".end"), WholeNumber(info.GetFloat(key + ".image"))}));
  }
}

bool RPaceNotes::Save(const std::string& path) const
{
  QInfo info(path, QInfo::NO_OPEN_WARNING);
  info.SetInt("pacenotes.count", notes.Count());
  int i = 0;
  for (const RPaceNote& note : notes) {
    const std::string key = Key(i++);
    info.SetFloat(key + ".start", note.start);
    info.SetFloat(key + ".end", note.end);
    info.SetInt(key + ".image", note.image);
  }
  return info.Write();
}
