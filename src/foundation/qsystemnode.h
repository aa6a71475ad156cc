#pragma once

#include "foundation/qobject.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A place in the tree of values that the parts of the program show to each other by name.
class QSystemNode : public QObject
{
public:
  explicit QSystemNode(const char* name) { SetName(name); }
  const char* GetClassName() const override { return "QSystemNode"; }

  QSystemNode* AddChild(const char* name);             // owned here
  void RemoveChild(const QSystemNode* child);          // with all below it; another's child is left alone
  QSystemNode* FindChild(std::string_view name) const; // null when absent
  // The value is visited: it must outlive the node. Unit is for a reader's eyes: "m".
  void Publish(std::string_view name, std::string_view unit, float& value);
  void Publish(std::string_view name, std::string_view unit, int& value);
  // Null when absent or of the other kind.
  float* Find(std::string_view name) const;
  int* FindInt(std::string_view name) const;
  int GetNoofValues() const { return static_cast<int>(values.size()); }

private:
  struct Value
  {
    std::string name;
    std::string unit;
    float* value;
    int* number;
  };
  std::vector<std::unique_ptr<QSystemNode>> children;
  std::vector<Value> values;
};
