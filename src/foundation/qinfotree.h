#pragma once

#include "foundation/qblock.h"
#include "foundation/qinfonode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <forward_list>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

// Nodes by a hash; of equal ones the first stays. The owner says what is equal.
class QInfoIndex
{
public:
  // Room for so many without growing.
  void Reserve(size_t wanted);
  template <typename Equal>
  QInfoNode* Find(uint32_t hash, Equal equal) const
  {
    return slotCount == 0 ? nullptr : SlotFor(hash, equal).node;
  }
  template <typename Equal>
  void Add(uint32_t hash, QInfoNode* node, Equal equal)
  {
    Reserve(count + 1);
    Slot& slot = SlotFor(hash, equal);
    if (slot.node)
      return;
    slot = {hash, text.data() ? static_cast<uint32_t>(node->name - text.data()) : 0, node};
    ++count;
  }
  // For a caller that knows what it is going to add.
  void Prefetch(uint32_t hash) const { __builtin_prefetch(Slots() + Home(hash), 1); }
  // The text that the names of all nodes are slices of, when there is one.
  void SetText(std::string_view newText) { text = newText; }

private:
  struct Slot
  {
    uint32_t hash = 0;
    uint32_t nameAt = 0; // in the text; only to fetch name and value from memory together with the node
    QInfoNode* node = nullptr;
  };
  Slot* Slots() const { return reinterpret_cast<Slot*>(const_cast<std::byte*>(block.Data())); }
  size_t Home(uint32_t hash) const { return static_cast<size_t>(uint64_t{hash} * slotCount >> 32); }
  // The slot of an equal node, or the free one for it.
  template <typename Equal>
  Slot& SlotFor(uint32_t hash, Equal equal) const
  {
    Slot* slots = Slots();
    for (size_t at = Home(hash);; at = at + 1 == slotCount ? 0 : at + 1) {
      Slot& slot = slots[at];
      if (!slot.node)
        return slot;
      if (slot.hash != hash)
        continue;
      // Name and value are on their way while the node is looked at.
      __builtin_prefetch(text.data() + slot.nameAt);
      if (equal(slot.node))
        return slot;
    }
  }

  QBlock block;
  size_t slotCount = 0;
  size_t count = 0;
  std::string_view text;
};

// Entries that stay where they are and go all at once, in few blocks.
template <typename T>
class QInfoPool
{
public:
  // The size of the first block; later ones double, up to 2 MB.
  void Expect(size_t entries) { nextSize = entries * sizeof(T); }
  T* Add()
  {
    if (used == capacity) {
      blocks.emplace_back(std::max(nextSize, sizeof(T)));
      nextSize = std::max(nextSize, std::min(2 * nextSize, size_t{2} << 20));
      capacity = blocks.back().Size() / sizeof(T);
      used = 0;
    }
    return new (blocks.back().Data() + used++ * sizeof(T)) T;
  }
  // In the order of Add: the number of blocks, and the entries of each.
  size_t BlockCount() const { return blocks.size(); }
  std::span<T> Entries(size_t block)
  {
    const bool last = block + 1 == blocks.size();
    return {reinterpret_cast<T*>(blocks[block].Data()), last ? used : blocks[block].Size() / sizeof(T)};
  }

private:
  static_assert(std::is_trivially_destructible_v<T>);
  std::vector<QBlock> blocks;
  size_t nextSize = 8 * sizeof(T);
  size_t capacity = 0; // of the last block
  size_t used = 0;     // likewise
};

// The path of a tree with a dot behind it, when it isn't longer than usual.
using QInfoPrefix = std::array<char, 48>;

// The nodes of a QInfo, the text that they show, and the ways to find them. Nodes are never freed one by one.
class QInfoTree
{
public:
  QInfoTree();
  QInfoTree(const QInfoTree&) = delete;
  QInfoTree& operator=(const QInfoTree&) = delete;

  QInfoNode* Root() { return &root; }
  // The text that is read into the tree: names and values are slices of it. Once, before the first node.
  std::string_view HoldText(QBlock text, size_t length);

  // A new last child. The name isn't copied.
  QInfoNode* Append(QInfoNode* parent, QInfoNode::Type type, std::string_view name);
  QInfoBranch& Branch(QInfoNode* node); // made when there is none
  // The text of a comment, as it stands in the file.
  static void SetText(QInfoNode* node, std::string_view value);
  // A value that stands in the file; the node will be found by its full path once BuildIndex has run.
  void SetFileValue(QInfoNode* node, std::string_view value);
  // To be called when the whole file was read.
  void BuildIndex();
  // The value is copied; line ends become blanks, since a file's value is one line.
  void SetValue(QInfoNode* node, std::string_view value);

  // Null when there is none. References aren't followed.
  QInfoNode* FindChild(QInfoNode* parent, std::string_view name);
  // Component by component from the root, on through references. The root for an empty path, null when there is none.
  QInfoNode* FindNode(std::string_view path);
  // The node that a Get reads: by full path first, then as FindNode. Null for what has no value or was removed.
  QInfoNode* FindKey(std::string_view path);
  // What SetString writes to: missing trees and the key are made. Null, with nothing changed, when the path is empty,
  // ends at a tree or runs on behind a key.
  QInfoNode* MakeKey(std::string_view path);

private:
  uint32_t PrefixHash(QInfoBranch& branch);
  void IndexChild(QInfoNode* child);

  QInfoNode root;
  QBlock text;
  QInfoPool<QInfoNode> nodes;
  QInfoPool<QInfoBranch> branches;
  QInfoPool<QInfoPrefix> prefixes;
  size_t indexedCount = 0;
  std::forward_list<std::string> names;                     // of nodes that aren't from the file
  std::unordered_map<const QInfoNode*, std::string> values; // likewise
  QInfoIndex byPath;
  QInfoIndex byName; // with the parent; only children of trees that have many
};

// The dotted path from the root, its last ten names at most.
std::string QInfoFullPath(const QInfoNode* node);
// Takes the next name off the path; neighbouring dots count as one. False when there is none.
bool QInfoNextName(std::string_view& path, std::string_view& name);
// What Write puts into a file.
QBlock QInfoText(const QInfoNode* root, size_t& length);
// Fills a new tree from the text that it holds. Problems are reported with the file's name.
void QInfoReadText(QInfoTree& tree, std::string_view text, const std::string& fileName, bool stopAtBrace);
