#include "scene/worldnameindex.h"

#include "scene/worldnode.h"

namespace {

bool IsBelow(const WorldNode& root, const WorldNode* node)
{
  while (node && node != &root)
    node = node->GetParent();
  return node;
}

} // namespace

void WorldNameIndex::Add(WorldNode& node)
{
  WorldNode*& head = newest[node.name];
  node.olderNamesake = head;
  if (head)
    head->newerNamesake = &node;
  head = &node;
}

void WorldNameIndex::Remove(WorldNode& node)
{
  if (node.olderNamesake)
    node.olderNamesake->newerNamesake = node.newerNamesake;
  if (node.newerNamesake)
    node.newerNamesake->olderNamesake = node.olderNamesake;
  else if (node.olderNamesake)
    newest[node.name] = node.olderNamesake;
  else
    newest.erase(node.name);
  node.olderNamesake = node.newerNamesake = nullptr;
}

WorldNode* WorldNameIndex::Find(std::string_view name, const WorldNode& root) const
{
  const auto known = newest.find(name);
  WorldNode* node = known == newest.end() ? nullptr : known->second;
  while (node && !IsBelow(root, node))
    node = node->olderNamesake;
  return node;
}

void WorldNameIndex::Clear()
{
  for (const auto& [name, head] : newest)
    for (WorldNode* node = head; node;) {
      WorldNode* older = node->olderNamesake;
      node->olderNamesake = node->newerNamesake = nullptr;
      node->scene = nullptr;
      node = older;
    }
  newest.clear();
}
