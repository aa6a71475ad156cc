#include "scene/worldnode.h"

#include "foundation/qreport.h"
#include "scene/worldscene.h"

namespace {

std::string NameOf(const char* given, const char* classWord)
{
  if (given)
    return given;
  static int unnamed = 0;
  QWARN("WorldNode ctor with _name=0");
  return classWord + std::to_string(unnamed++);
}

} // namespace

WorldNode::WorldNode(WorldScene* owner, const char* nodeName, const char* classWord) :
    scene(owner), name(NameOf(nodeName, classWord))
{}

WorldNode::~WorldNode()
{
  if (sceneGone)
    QERR("WorldNode dtor; scene graph was already deleted - delete node from the leaves up!");
  Unlink();
  while (child)
    child->Unlink();
  static_cast<volatile uint32_t&>(flags) = flags | DELETED; // or the compiler drops a write that nothing may read
}

void WorldNode::Unlink()
{
  if (!parent)
    return;
  (prev ? prev->next : parent->child) = next;
  if (next)
    next->prev = prev;
  parent = next = prev = nullptr;
  if (scene)
    scene->names.Remove(*this);
}

bool WorldNode::SetNoofProperties(int count)
{
  if (!properties.empty()) {
    QWARN("WorldNode:SetNoofProperties() already set before");
    return false;
  }
  properties.resize(static_cast<size_t>(count > 0 ? count : 0));
  return true;
}

bool WorldNode::DefineProperty(int n, std::string_view propertyName, std::string_view value)
{
  const int count = static_cast<int>(properties.size());
  if (n < 0 || n >= count) {
    QWARN("WorldNode:DefineProperty(); n (%d) out of range 0..%d", n, count - 1);
    return false;
  }
  properties[static_cast<size_t>(n)] = {std::string(propertyName), std::string(value)};
  return true;
}

const std::string* WorldNode::FindProperty(std::string_view propertyName) const
{
  for (const auto& [property, value] : properties)
    if (property == propertyName)
      return &value;
  return nullptr;
}
