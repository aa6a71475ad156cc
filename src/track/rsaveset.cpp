#include "track/rsaveset.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

RSaveSet::RSaveSet() = default;

RSaveSet::~RSaveSet()
{
  for (const Entry& entry : entries)
    entry.tree->MarkWritten(); // or the tree writes itself when it goes
}

QInfo& RSaveSet::Open(const std::string& path)
{
  return *entries.emplace_back(Entry{std::make_unique<QInfo>(path, QInfo::NO_OPEN_WARNING), false}).tree;
}

QInfo& RSaveSet::OpenEmpty(const std::string& path)
{
  return *entries.emplace_back(Entry{std::make_unique<QInfo>(path, QInfo::NO_READ), true}).tree;
}

bool RSaveSet::Prepare(const Entry& entry, QFileSet& files)
{
  const QInfo& tree = *entry.tree;
  const std::string& path = tree.FileName();
  if (!entry.replaces && !tree.IsModified())
    return true;
  if (!entry.replaces && !tree.IsUnreadable() && tree.KeepsOtherFile(path))
    return false;
  if (!tree.IsUnreadable() && files.Add(path, tree.WriteToText()))
    return true;
  QWARN("QInfo:Write(); file (%s) can't be written", path.c_str());
  return false;
}

bool RSaveSet::Commit()
{
  QFileSet files;
  if (!std::all_of(entries.begin(), entries.end(), [&](const Entry& entry) { return Prepare(entry, files); }))
    return false;
  if (files.Commit())
    return true;
  QWARN("Can't put a saved file in its place: %s", std::strerror(errno));
  return false;
}
