#pragma once

#include "geometry/dtexture.h"

#include <cstddef>
#include <string>
#include <vector>

// A texture of three dimensions: of a strip picture that is cut into slices, or of a file of numbers.
class DTexture3D : public DTexture
{
public:
  static constexpr int SLICES = 16;
  // A file of 256 x 128 x 32 pixels of four 32-bit floats each. One that can't be read is reported, and the texture
  // stays empty.
  explicit DTexture3D(const std::string& fileName);
  // As many slices beside each other as SLICES says.
  explicit DTexture3D(const QBitMap& strip);
  const char* GetClassName() const override { return "DTexture3D"; }
  const char* GetTypeName() const override { return "3dTexture"; }
  int GetDepth() const { return depth; }

protected:
  void Upload() override;

private:
  bool FromFloat32File(const std::string& fileName);
  void Clamp();

  int depth = 0;
  uint32_t type = 0x1401;         // GL_UNSIGNED_BYTE
  std::vector<std::byte> pending; // until OpenGL has it
};
