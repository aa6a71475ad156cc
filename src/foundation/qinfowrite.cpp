#include "foundation/qinfo.h"
#include "foundation/qinfotree.h"
#include "foundation/qreport.h"

#include <cstring>
#include <initializer_list>

namespace {

// Text that grows in one block.
class Output
{
public:
  void Line(int depth, std::initializer_list<std::string_view> parts)
  {
    // The file has trees below the tenth level only when it was reported as wrong; their indent grows no more, or
    // the text of a small bad file could fill the memory.
    const auto indent = static_cast<size_t>(2 * std::min(depth, QInfo::MAX_LEVEL));
    size_t size = indent + 1;
    for (const std::string_view part : parts)
      size += part.size();
    char* to = Room(size);
    std::memset(to, ' ', indent);
    to += indent;
    for (const std::string_view part : parts) {
      if (part.empty())
        continue; // may have no address
      std::memcpy(to, part.data(), part.size());
      to += part.size();
    }
    *to = '\n';
    used += size;
  }
  QBlock Take(size_t& length)
  {
    length = used;
    return std::move(block);
  }

private:
  char* Room(size_t size)
  {
    if (size > block.Size() - used) {
      QBlock larger(std::max<size_t>(2 * block.Size(), used + size + 256));
      if (used > 0)
        std::memcpy(larger.Data(), block.Data(), used);
      block = std::move(larger);
    }
    return block.Text() + used;
  }
  QBlock block;
  size_t used = 0;
};

// A tree of this name has no line of its own: its children stand in its place.
bool IsHeadless(const QInfoNode* tree)
{
  return tree->Name() == "root";
}

void WriteHead(Output& out, const QInfoNode* node, int depth)
{
  const bool isTree = node->type == QInfoNode::TREE;
  const std::string reference = isTree && node->Reference() ? "~" + QInfoFullPath(node->Reference()) : "";
  if (node->type == QInfoNode::COMMENT)
    out.Line(depth, {";", node->Value()});
  else if (node->type == QInfoNode::KEY)
    out.Line(depth, {node->Name(), "=", node->Value()});
  else if (!isTree)
    QERR("QInfo:Write() internal error; unknown node type");
  else if (!IsHeadless(node))
    out.Line(depth, {node->Name(), reference, node->HasValue() ? "=" : "", node->Value()});
  if (isTree && !IsHeadless(node))
    out.Line(depth, {"{"});
}

} // namespace

QBlock QInfoText(const QInfoNode* root, size_t& length)
{
  Output out;
  int depth = 0;
  const QInfoNode* node = root->FirstChild();
  const QInfoNode* parent = root;
  for (;;) {
    while (node && node->IsRemoved())
      node = node->Next();
    if (node) {
      WriteHead(out, node, depth);
      if (node->type == QInfoNode::TREE) {
        ++depth;
        parent = node;
        node = node->FirstChild();
      } else {
        node = node->Next();
      }
      continue;
    }
    if (parent == root)
      break;
    --depth;
    if (!IsHeadless(parent))
      out.Line(depth, {"}"});
    node = parent->Next();
    parent = parent->Parent();
  }
  return out.Take(length);
}
