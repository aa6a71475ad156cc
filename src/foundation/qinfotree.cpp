#include "foundation/qinfotree.h"

#include "foundation/qinfo.h"

#include <array>
#include <cstring>

namespace {

constexpr uint32_t MANY_CHILDREN = 8; // below this a walk along the children is as fast as the index
constexpr uint64_t FACTOR = 0x9FB21C651E98DF25;

uint64_t Load(const char* from, size_t size)
{
  uint64_t value = 0;
  std::memcpy(&value, from, size);
  return value;
}

// The last 1 to 8 bytes, by loads of fixed sizes that may overlap.
uint64_t LoadTail(const char* from, size_t size)
{
  if (size >= 4)
    return Load(from, 4) << 32 | Load(from + size - 4, 4);
  return Load(from, 1) << 16 | Load(from + size / 2, 1) << 8 | Load(from + size - 1, 1);
}

// Goes on from the hash of what stands in front.
uint32_t HashOn(uint32_t soFar, std::string_view name)
{
  uint64_t h = (soFar + name.size()) * FACTOR;
  const char* at = name.data();
  size_t left = name.size();
  for (; left > 8; left -= 8, at += 8)
    h = (h ^ Load(at, 8) ^ h >> 29) * FACTOR;
  if (left > 0)
    h = (h ^ LoadTail(at, left) ^ h >> 29) * FACTOR;
  return static_cast<uint32_t>(h >> 32);
}

uint32_t HashOfPath(std::string_view path)
{
  const size_t nameAt = path.rfind('.') + 1; // npos + 1 is 0
  return HashOn(HashOn(0, path.substr(0, nameAt)), path.substr(nameAt));
}

uint32_t HashOfChild(const QInfoNode* parent, std::string_view name)
{
  return HashOn(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(parent) >> 3), name);
}

// From the node upward, without the root.
struct Ancestors
{
  explicit Ancestors(const QInfoNode* node, int limit = QInfo::MAX_LEVEL)
  {
    for (; node->home && count < static_cast<size_t>(limit); node = node->home->node)
      nodes[count++] = node;
  }
  std::string Path() const
  {
    std::string path;
    for (size_t i = count; i-- > 0;) {
      path += nodes[i]->Name();
      if (i > 0)
        path += '.';
    }
    return path;
  }
  std::array<const QInfoNode*, QInfo::MAX_LEVEL> nodes;
  size_t count = 0;
};

// Whether QInfoFullPath would give this path.
bool HasFullPath(const QInfoNode* node, std::string_view path)
{
  if (node->home->prefix) {
    if (!path.ends_with(node->Name()))
      return false;
    path.remove_suffix(node->nameLength);
    return path == std::string_view(node->home->prefix, node->home->prefixLength);
  }
  const Ancestors ancestors(node);
  for (size_t i = 0; i < ancestors.count; ++i) {
    if (i > 0) {
      if (!path.ends_with('.'))
        return false;
      path.remove_suffix(1);
    }
    const std::string_view name = ancestors.nodes[i]->Name();
    if (!path.ends_with(name))
      return false;
    path.remove_suffix(name.size());
  }
  return path.empty();
}

} // namespace

void QInfoIndex::Reserve(size_t wanted)
{
  if (wanted + wanted / 2 <= slotCount) // at most two thirds full
    return;
  const size_t newCount = std::max({2 * slotCount, wanted + wanted / 2, size_t{8}});
  const QBlock old = std::exchange(block, QBlock(newCount * sizeof(Slot)));
  const auto* oldSlots = reinterpret_cast<const Slot*>(old.Data());
  const size_t oldCount = std::exchange(slotCount, newCount);
  std::uninitialized_fill_n(Slots(), slotCount, Slot{});
  for (size_t i = 0; i < oldCount; ++i)
    if (oldSlots[i].node)
      SlotFor(oldSlots[i].hash, [](const QInfoNode*) { return false; }) = oldSlots[i];
}

QInfoTree::QInfoTree()
{
  root.name = "root";
  root.nameLength = 4;
  root.type = QInfoNode::TREE;
}

std::string_view QInfoTree::HoldText(QBlock newText, size_t length)
{
  text = std::move(newText);
  byPath.SetText({text.Text(), length});
  nodes.Expect(std::max<size_t>(8, length / 28)); // a line of a usual file
  return {text.Text(), length};
}

QInfoBranch& QInfoTree::Branch(QInfoNode* node)
{
  if (!node->branch) {
    node->branch = branches.Add();
    node->branch->node = node;
  }
  return *node->branch;
}

QInfoNode* QInfoTree::Append(QInfoNode* parent, QInfoNode::Type type, std::string_view name)
{
  QInfoNode* node = nodes.Add();
  node->name = name.data();
  node->nameLength = static_cast<uint32_t>(name.size());
  node->type = type;
  QInfoBranch& branch = Branch(parent);
  node->home = &branch;
  (branch.last ? branch.last->next : branch.first) = node;
  branch.last = node;
  ++branch.count;
  if (branch.indexed)
    IndexChild(node);
  return node;
}

// The text itself is kept where it isn't longer than usual: a Get compares with it in place of a walk through nodes
// that lie far apart.
uint32_t QInfoTree::PrefixHash(QInfoBranch& branch)
{
  if (branch.hashed)
    return branch.prefixHash;
  std::string path = Ancestors(branch.node, QInfo::MAX_LEVEL - 1).Path(); // a path has ten names, with the key's own
  if (!path.empty())
    path += '.';
  branch.hashed = true;
  branch.prefixHash = HashOn(0, path);
  if (path.size() <= sizeof(QInfoPrefix)) {
    char* kept = prefixes.Add()->data();
    std::copy(path.begin(), path.end(), kept);
    branch.prefix = kept;
    branch.prefixLength = static_cast<uint8_t>(path.size());
  }
  return branch.prefixHash;
}

void QInfoTree::SetText(QInfoNode* node, std::string_view value)
{
  node->value = value.data();
  node->valueLength = static_cast<uint32_t>(value.size());
}

void QInfoTree::SetFileValue(QInfoNode* node, std::string_view value)
{
  SetText(node, value);
  if (node->flags & QInfoNode::INDEXED)
    return;
  node->flags |= QInfoNode::INDEXED;
  node->pathHash = HashOn(PrefixHash(*node->home), node->Name());
  ++indexedCount;
}

void QInfoTree::BuildIndex()
{
  if (indexedCount == 0)
    return;
  constexpr size_t AHEAD = 8; // nodes; by then the slot has come from memory
  byPath.Reserve(indexedCount);
  for (size_t block = 0; block < nodes.BlockCount(); ++block) {
    const std::span<QInfoNode> entries = nodes.Entries(block);
    for (size_t i = 0; i < entries.size(); ++i) {
      if (i + AHEAD < entries.size())
        byPath.Prefetch(entries[i + AHEAD].pathHash);
      QInfoNode* node = &entries[i];
      if (node->flags & QInfoNode::INDEXED)
        byPath.Add(node->pathHash, node,
                   [&](const QInfoNode* other) { return HasFullPath(other, QInfoFullPath(node)); });
    }
  }
}

void QInfoTree::SetValue(QInfoNode* node, std::string_view value)
{
  std::string& own = values[node];
  own = value;
  for (char& c : own)
    c = c == '\r' || c == '\n' ? ' ' : c;
  SetText(node, own);
}

void QInfoTree::IndexChild(QInfoNode* child)
{
  byName.Add(HashOfChild(child->home->node, child->Name()), child,
             [child](const QInfoNode* other) { return other->home == child->home && other->Name() == child->Name(); });
}

QInfoNode* QInfoTree::FindChild(QInfoNode* parent, std::string_view name)
{
  QInfoBranch* branch = parent->branch;
  if (!branch)
    return nullptr;
  if (branch->count <= MANY_CHILDREN) {
    QInfoNode* child = branch->first;
    while (child && child->Name() != name)
      child = child->next;
    return child;
  }
  if (!branch->indexed) {
    branch->indexed = true;
    for (QInfoNode* child = branch->first; child; child = child->next)
      IndexChild(child);
  }
  return byName.Find(HashOfChild(parent, name),
                     [&](const QInfoNode* other) { return other->home == branch && other->Name() == name; });
}

QInfoNode* QInfoTree::FindNode(std::string_view path)
{
  QInfoNode* node = &root;
  for (std::string_view name; QInfoNextName(path, name);) {
    QInfoNode* found = nullptr;
    for (QInfoNode* tree = node; tree && !found; tree = tree->branch ? tree->branch->reference : nullptr)
      found = FindChild(tree, name);
    if (!found)
      return nullptr;
    node = found;
  }
  return node;
}

QInfoNode* QInfoTree::FindKey(std::string_view path)
{
  QInfoNode* node = byPath.Find(HashOfPath(path), [path](const QInfoNode* other) { return HasFullPath(other, path); });
  if (node && !node->IsRemoved())
    return node;
  node = FindNode(path);
  if (!node || node->IsRemoved() || (node->type == QInfoNode::TREE && !node->HasValue()))
    return nullptr;
  return node;
}

QInfoNode* QInfoTree::MakeKey(std::string_view path)
{
  QInfoNode* node = &root;
  bool made = false;
  for (std::string_view name; QInfoNextName(path, name);) {
    if (node->type != QInfoNode::TREE)
      return nullptr;
    QInfoNode* child = made ? nullptr : FindChild(node, name);
    if (!child) {
      made = true;
      child = Append(node, QInfoNode::KEY, names.emplace_front(name));
      if (path.find_first_not_of('.') != std::string_view::npos)
        child->type = QInfoNode::TREE;
    }
    node = child;
  }
  return node->type == QInfoNode::TREE ? nullptr : node;
}

std::string QInfoFullPath(const QInfoNode* node)
{
  return Ancestors(node).Path();
}

bool QInfoNextName(std::string_view& path, std::string_view& name)
{
  const size_t start = path.find_first_not_of('.');
  if (start == std::string_view::npos)
    return false;
  path.remove_prefix(start);
  name = path.substr(0, path.find('.'));
  path.remove_prefix(name.size());
  return true;
}
