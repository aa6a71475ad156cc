#pragma once

#include "geometry/dgpuparameters.h"
#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

class DGPUShader;

// Programs of the stages put together, as the driver runs them; a stage without a program is the fixed pipeline's.
// The handles of the parameters are looked up once. Parameters are set while the link is in use.
class DGPULink
{
public:
  ~DGPULink();
  DGPULink(const DGPULink&) = delete;
  DGPULink& operator=(const DGPULink&) = delete;
  // Null, reported, when the driver refuses to link them. Each stage may be null. The new link is in use.
  static std::unique_ptr<DGPULink> Create(std::span<const DGPUShader* const> stages);

  uint32_t GetProgram() const { return program; } // OpenGL's name
  bool Has(DGPUParameter parameter) const;
  // Numbers, as many as the parameter takes: missing ones are 0. Nothing happens for a parameter that isn't there.
  void Set(DGPUParameter parameter, std::span<const float> numbers) const;
  void Set(DGPUParameter parameter, float number) const { Set(parameter, std::span(&number, 1)); }
  void Set(DGPUParameter parameter, const DVector2& v) const { Set(parameter, std::span(&v.x, 2)); }
  void Set(DGPUParameter parameter, const DVector3& v) const { Set(parameter, std::span(&v.x, 3)); }
  void Set(DGPUParameter parameter, const DVector4& v) const { Set(parameter, std::span(&v.x, 4)); }
  void Set(DGPUParameter parameter, const DMatrix4& m) const;

  uint64_t frame = 0; // in which what holds for a whole frame was set last

private:
  struct Handle
  {
    int location = -1;
    uint32_t type = 0; // OpenGL's
  };
  explicit DGPULink(uint32_t linked) : program(linked) {}
  static void SetHandle(const Handle& handle, std::span<const float> numbers);
  Handle FindHandle(const std::string& uniform) const;
  void LookUp(const DGPUShader& shader);
  void AssignSamplers(const DGPUShader& shader, uint32_t& taken) const;

  uint32_t program;
  // Two stages may declare the same parameter.
  std::array<std::vector<Handle>, static_cast<size_t>(DGPUParameter::COUNT)> handles;
};
