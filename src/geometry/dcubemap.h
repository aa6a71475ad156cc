#pragma once

#include "geometry/dtexture.h"

#include <array>
#include <memory>
#include <string>

// A texture of six pictures, one for each side of a cube.
class DCubeMap : public DTexture
{
public:
  static constexpr int SIDES = 6;
  // The ends of the pictures' names, in OpenGL's order of sides: right, left, up, down, back, front.
  static constexpr std::array<const char*, SIDES> SIDE_NAMES = {"_rt", "_lt", "_up", "_dn", "_bk", "_ft"};

  DCubeMap();
  ~DCubeMap() override;
  const char* GetClassName() const override { return "DCubeMap"; }
  const char* GetTypeName() const override { return "cubeMap"; }
  // "dir/sky" loads "dir/sky_rt.tga" and so on. A picture that is missing gives the stub; false then.
  bool LoadImages(const std::string& base);

protected:
  void Upload() override;

private:
  std::array<std::unique_ptr<QBitMap>, SIDES> pending;
};
