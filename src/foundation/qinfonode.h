#pragma once

#include <cstdint>
#include <string_view>

// What only a node with children or a reference needs.
struct QInfoBranch
{
  struct QInfoNode* node = nullptr; // the one that this belongs to
  const char* prefix = nullptr;     // how the paths of its keys begin: its own, and a dot; null when that isn't kept
  QInfoNode* first = nullptr;
  QInfoNode* last = nullptr;
  QInfoNode* reference = nullptr; // the tree that this one inherits from; always earlier in the file
  uint32_t count = 0;             // of children, comments included
  uint32_t prefixHash = 0;
  uint8_t prefixLength = 0;
  bool hashed = false;  // prefixHash holds
  bool indexed = false; // the children stand in the tree's index by name
};

// A comment, a key or a tree. It lives as long as the tree that it is part of, until the file is read again.
struct QInfoNode
{
  enum Type : uint8_t
  {
    COMMENT,
    KEY,
    TREE
  };
  enum Flag : uint8_t
  {
    USED = 0x01,    // a Get reached it
    REMOVED = 0x02, // skipped by Get and Write
    INDEXED = 0x04, // has its value from the file, and so is found by its full path
  };

  std::string_view Name() const { return {name, nameLength}; } // ";" for a comment
  std::string_view Value() const { return {value, valueLength}; }
  bool HasValue() const { return value != nullptr; }
  bool IsRemoved() const { return flags & REMOVED; }
  const QInfoNode* Next() const { return next; }
  const QInfoNode* Parent() const { return home ? home->node : nullptr; } // null for the root
  const QInfoNode* FirstChild() const { return branch ? branch->first : nullptr; }
  const QInfoNode* Reference() const { return branch ? branch->reference : nullptr; }

  const char* name = nullptr; // name and value are not terminated by zero
  const char* value = nullptr;
  uint32_t nameLength = 0;
  uint32_t valueLength = 0;
  QInfoNode* next = nullptr;   // sibling
  QInfoBranch* home = nullptr; // of the parent
  QInfoBranch* branch = nullptr;
  uint32_t pathHash = 0; // of the full path; only for what is indexed
  Type type = KEY;
  uint8_t flags = 0;
};
