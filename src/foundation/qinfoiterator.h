#pragma once

#include "foundation/qinfo.h"

#include <string_view>
#include <vector>

// Walks a tree depth first, a parent before its children, in file order. Children of a referenced tree aren't visited.
// It stays good while keys are set or removed, until the file is read again.
class QInfoIterator
{
public:
  // From a tree's first child, or from a key on; the root's first child without a path. A path that doesn't exist
  // leaves nothing to give.
  explicit QInfoIterator(const QInfo& info, std::string_view path = {});

  // The full path of the next key or tree, and its own name. False at the end.
  bool GetNext(qstring& path, bool recurse, qstring* name = nullptr);
  // Comments too.
  bool GetNextAny(qstring& path, bool recurse);

private:
  const QInfoNode* Give(qstring& path, bool recurse);
  const QInfoNode* NextFrom(const QInfoNode* node, bool recurse);

  const QInfoNode* current;              // what the next call gives
  std::vector<const QInfoNode*> parents; // QInfo::MAX_LEVEL at most
};
