#pragma once

#include <memory>
#include <vector>

class DMaterial;
class DShader;

// Shaders that stand in for materials without one. Materials that look the same share one, which is what lets
// neighbours in the frame's list be painted in one go.
class WorldShaders
{
public:
  // Null gives a plain grey. The shader lives as long as someone holds it.
  std::shared_ptr<DShader> Find(const DMaterial* material, bool sky);

private:
  std::vector<std::weak_ptr<DShader>> made;
};
