#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class DShader;

// Components that several models use, found by a key of a path's form and counted by their users. A reference is a
// number from 1 on; 0 is none.
class RResourceManager
{
public:
  enum Type
  {
    TYPE_NONE = 0, // of a reference that isn't there
    TYPE_MATERIAL = 1,
    TYPE_TEXTURE = 2
  };
  // With one user. A key that is there already gives its reference, with one user more.
  int Add(std::string_view key, Type type, void* component);
  int Find(std::string_view key) const; // 0: none
  void Attach(int ref);
  // The last one takes the component out of the table. One too many is reported.
  void Detach(int ref);
  int GetRefCount(int ref) const; // 0 for what isn't there
  Type GetType(int ref) const;
  // Null, reported, for another type.
  DShader* GetMaterial(int ref) const;

private:
  struct Component
  {
    std::string key;
    Type type = TYPE_NONE;
    void* component = nullptr;
    int refCount = 0;
  };
  const Component* At(int ref) const;

  std::vector<Component> components; // reference - 1
  std::unordered_map<std::string, int> byKey;
};
