#include "track/rsaveset.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <cerrno>
#include <cstring>

RSaveSet::RSaveSet() = default;

RSaveSet::~RSaveSet()
{
  for (const auto& tree : trees)
    tree->MarkWritten(); // a tree writes itself when it goes
}

bool RSaveSet::Add(std::unique_ptr<QInfo> tree, bool checkChanged)
{
  trees.push_back(std::move(tree));
  QInfo& info = *trees.back();
  const std::string& path = info.FileName();
  if (failed || !info.IsModified())
    return !failed;
  if (!info.IsUnreadable() && checkChanged && info.KeepsOtherFile(path)) {
    failed = true;
  } else if (info.IsUnreadable() || !files.Add(path, info.WriteToText())) {
    QWARN("QInfo:Write(); file (%s) can't be written", path.c_str());
    failed = true;
  }
  return !failed;
}

bool RSaveSet::Commit()
{
  if (failed)
    return false;
  failed = !files.Commit();
  if (failed)
    QERR("Can't put a saved file in its place: %s", std::strerror(errno));
  return !failed;
}
