#pragma once

#include <memory>
#include <utility>

class DTexture;

// One reference to a texture, counted in the texture itself. The last one that goes destroys it.
class DTexturePtr
{
public:
  DTexturePtr() = default;
  DTexturePtr(std::nullptr_t) {}
  // Null or made by operator new, and from here on referred to in this way alone.
  explicit DTexturePtr(DTexture* referred);
  template <typename T>
  DTexturePtr(std::unique_ptr<T> made) : DTexturePtr(made.release())
  {}
  DTexturePtr(const DTexturePtr& other) : DTexturePtr(other.texture) {}
  DTexturePtr(DTexturePtr&& other) noexcept : texture(std::exchange(other.texture, nullptr)) {}
  ~DTexturePtr() { reset(); }
  DTexturePtr& operator=(DTexturePtr other) noexcept
  {
    std::swap(texture, other.texture);
    return *this;
  }
  void reset();
  DTexture* get() const { return texture; }
  DTexture* operator->() const { return texture; }
  DTexture& operator*() const { return *texture; }
  explicit operator bool() const { return texture != nullptr; }
  bool operator==(const DTexturePtr& other) const = default;
  bool operator==(const DTexture* other) const { return texture == other; }

private:
  DTexture* texture = nullptr;
};
