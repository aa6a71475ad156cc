#pragma once

#include "geometry/dbox.h"
#include "geometry/dvector.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class WorldScene;
class WorldState;

// What hangs in the scene's tree. Whoever makes a node owns it; the tree's links only visit. A node that is destroyed
// takes itself out of the tree, and its children stay behind without a parent.
class WorldNode
{
public:
  enum Flag : uint32_t
  {
    SKY = 0x02, // not lit, drawn before the rest
    VISIBLE = 0x04,
    DELETED = 0x10,    // who still comes here holds a dead node: the program stops
    POST_FRAME = 0x20, // called back after the frame
  };
  // A null name is reported, and the node is named by its class word and a running number.
  WorldNode(WorldScene* owner, const char* nodeName) : WorldNode(owner, nodeName, "node") {}
  virtual const char* GetClassName() const { return "node"; }
  virtual ~WorldNode();
  WorldNode(const WorldNode&) = delete;
  WorldNode& operator=(const WorldNode&) = delete;

  // Enter and Leave bracket what lies below. True from Enter: the walk doesn't go down.
  virtual bool Enter(WorldState&) { return false; }
  virtual void Leave(WorldState&) {}
  virtual void Render() {}
  virtual void Prepare() {}
  virtual void Update(float /*seconds*/) {}
  virtual void Simulate(float /*seconds*/) {}
  virtual bool Query(const DVector3& /*from*/, const DVector3& /*to*/, DVector3* /*hit*/) { return false; }
  virtual bool GetMatrix(DMatrix4& /*matrix*/) const { return false; }
  virtual bool SetMatrix(const DMatrix4& /*matrix*/) { return false; }
  // In the node's own space; null: never culled.
  virtual const DBox* GetBox() { return nullptr; }

  const std::string& GetName() const { return name; }
  WorldScene* GetScene() const { return scene; }
  WorldNode* GetParent() const { return parent; }
  WorldNode* GetChild() const { return child; } // the head of the list
  WorldNode* GetNext() const { return next; }
  WorldNode* GetPrev() const { return prev; }
  bool IsInTree() const { return parent != nullptr; }
  bool IsVisible() const { return flags & VISIBLE; }
  void SetVisible(bool on) { flags = on ? flags | VISIBLE : flags & ~static_cast<uint32_t>(VISIBLE); }
  // Takes the node, with what lies below it, out of the tree. Nothing happens outside one.
  void Unlink();

  // Named properties: the number is set once, then each is defined. False, with a report, on a second number or an
  // index out of range.
  bool SetNoofProperties(int count);
  bool DefineProperty(int n, std::string_view propertyName, std::string_view value);
  // Null when absent.
  const std::string* FindProperty(std::string_view propertyName) const;

  uint32_t flags = VISIBLE;
  int type = 0;       // for the owner's use
  float distance = 0; // from the camera, as of the last walk

protected:
  WorldNode(WorldScene* owner, const char* nodeName, const char* classWord);

private:
  friend class WorldScene;
  friend class WorldNameIndex;
  WorldScene* scene; // not owned; null: none
  WorldNode* parent = nullptr;
  WorldNode* next = nullptr;
  WorldNode* prev = nullptr;
  WorldNode* child = nullptr;
  WorldNode* olderNamesake = nullptr; // of the scene's index
  WorldNode* newerNamesake = nullptr;
  bool sceneGone = false; // the scene went while the node hung in its tree
  std::string name;
  std::vector<std::pair<std::string, std::string>> properties;
};
