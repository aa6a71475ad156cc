#include "foundation/qinfoiterator.h"

#include "foundation/qinfotree.h"
#include "foundation/qreport.h"

QInfoIterator::QInfoIterator(const QInfo& info, std::string_view path) : current(info.FindNode(path))
{
  if (current && current->type == QInfoNode::TREE)
    current = current->FirstChild();
}

const QInfoNode* QInfoIterator::NextFrom(const QInfoNode* node, bool recurse)
{
  if (recurse && node->FirstChild()) {
    if (parents.size() < static_cast<size_t>(QInfo::MAX_LEVEL))
      parents.push_back(node);
    else
      QERR("nestLevel>%d (QInfo::MAX_LEVEL) in QInfoIterator", QInfo::MAX_LEVEL);
    return node->FirstChild();
  }
  while (!node->Next() && !parents.empty()) {
    node = parents.back();
    parents.pop_back();
  }
  return node->Next();
}

const QInfoNode* QInfoIterator::Give(qstring& path, bool recurse)
{
  const QInfoNode* given = current;
  if (!given)
    return nullptr;
  path = qstring(QInfoFullPath(given));
  current = NextFrom(given, recurse);
  return given;
}

bool QInfoIterator::GetNextAny(qstring& path, bool recurse)
{
  return Give(path, recurse) != nullptr;
}

bool QInfoIterator::GetNext(qstring& path, bool recurse, qstring* name)
{
  const QInfoNode* given = Give(path, recurse);
  while (given && given->type == QInfoNode::COMMENT)
    given = Give(path, recurse);
  if (given && name)
    *name = qstring(given->Name());
  return given != nullptr;
}
