#include "foundation/qsystemnode.h"

QSystemNode* QSystemNode::AddChild(const char* name)
{
  return children.emplace_back(std::make_unique<QSystemNode>(name)).get();
}

void QSystemNode::RemoveChild(const QSystemNode* child)
{
  std::erase_if(children, [child](const auto& own) { return own.get() == child; });
}

QSystemNode* QSystemNode::FindChild(std::string_view name) const
{
  for (const auto& child : children)
    if (child->GetName() == name)
      return child.get();
  return nullptr;
}

void QSystemNode::Publish(std::string_view name, std::string_view unit, float& value)
{
  values.push_back({std::string(name), std::string(unit), &value, nullptr});
}

void QSystemNode::Publish(std::string_view name, std::string_view unit, int& value)
{
  values.push_back({std::string(name), std::string(unit), nullptr, &value});
}

float* QSystemNode::Find(std::string_view name) const
{
  for (const Value& published : values)
    if (published.name == name)
      return published.value;
  return nullptr;
}

int* QSystemNode::FindInt(std::string_view name) const
{
  for (const Value& published : values)
    if (published.name == name)
      return published.number;
  return nullptr;
}
