#include "foundation/qinfo.h"
#include "foundation/qinfotree.h"
#include "foundation/qreport.h"

namespace {

// Calls visit(node, depth) before a node's children and leave(node, depth) behind them. Doesn't recurse.
template <typename Visit, typename Leave>
void Walk(const QInfoNode* root, Visit visit, Leave leave)
{
  const QInfoNode* parent = root;
  const QInfoNode* node = root->FirstChild();
  for (int depth = 0;;) {
    if (node) {
      visit(node, depth);
      if (node->FirstChild()) {
        parent = node;
        ++depth;
      }
      node = node->FirstChild() ? node->FirstChild() : node->Next();
    } else if (parent == root) {
      return;
    } else {
      leave(parent, --depth);
      node = parent->Next();
      parent = parent->Parent();
    }
  }
}

std::string Indent(int depth)
{
  return std::string(static_cast<size_t>(2 * std::min(depth, QInfo::MAX_LEVEL)), ' ');
}

} // namespace

void QInfo::DbgPrint(const char* text, bool unusedOnly) const
{
  if (unusedOnly) {
    QLOG("QInfo(%s) [%s] - UNUSED KEYS ONLY\n", fileName.c_str(), text);
    const auto print = [](const QInfoNode* node, int) {
      if (node->type == QInfoNode::KEY && !(node->flags & QInfoNode::USED))
        QLOG("- %s (=%s)\n", QInfoFullPath(node).c_str(), std::string(node->Value()).c_str());
    };
    Walk(Root(), print, [](const QInfoNode*, int) {});
    return;
  }
  QLOG("QInfo(%s) [%s]\n", fileName.c_str(), text);
  const auto print = [](const QInfoNode* node, int depth) {
    QDBG("%s%s=%s\n", Indent(depth).c_str(), std::string(node->Name()).c_str(), std::string(node->Value()).c_str());
    if (node->FirstChild())
      QDBG("%s{\n", Indent(depth).c_str());
  };
  Walk(Root(), print, [](const QInfoNode*, int depth) { QDBG("%s}\n", Indent(depth).c_str()); });
}
