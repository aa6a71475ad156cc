#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

class DPipeDifferences;

// What OpenGL's state is known to be, so that asking for what already stands costs nothing. All drawing of the
// scenery sets state through here. Without a context it only remembers.
class DPipe
{
public:
  static constexpr int MAX_UNITS = 8;
  static constexpr unsigned TANGENT_ATTRIBUTE = 14; // of a vertex: where programs look for tangents
  enum Array
  {
    VERTEX_ARRAY,
    NORMAL_ARRAY,
    COLOR_ARRAY,
    INDEX_ARRAY,
    TANGENT_ARRAY,
    ARRAY_COUNT
  };

  DPipe();
  // Nothing is known any more: after foreign code drew, or with a new context.
  void Invalidate();

  // Flags of OpenGL, by its numbers; one that isn't kept is reported and nothing happens.
  void Enable(uint32_t cap);
  void Disable(uint32_t cap);
  void Set(uint32_t cap, bool on) { on ? Enable(cap) : Disable(cap); }
  void BlendFunc(uint32_t source, uint32_t destination);
  void DepthFunc(uint32_t function);
  void DepthMask(bool on);
  void AlphaFunc(uint32_t function, float reference);
  void CullFace(uint32_t face);
  void PolygonOffset(float factor, float units);
  void MatrixMode(uint32_t mode);
  void UseProgram(uint32_t name); // 0: the fixed pipeline
  void BindArrayBuffer(uint32_t name);
  void BindIndexBuffer(uint32_t name);
  void EnableArray(Array a);
  void DisableArray(Array a);

  // The unit that the calls below mean.
  void SelectUnit(int unit);
  int Unit() const { return unit; }
  void
  EnableTexture(uint32_t target); // GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP, or a texture generation flag
  void DisableTexture(uint32_t target);
  void SelectTexture(uint32_t target, uint32_t name);
  void TexEnv(uint32_t mode);
  void EnableTexCoordArray();
  void DisableTexCoordArray();
  // A name that OpenGL may give out again.
  void ForgetTexture(uint32_t name);
  void ForgetBuffer(uint32_t name);

  // Compares all that is known with OpenGL and reports each difference. How many there are; 0 without a context.
  int SyncCheck() const;
  // Requests that changed something since the last Invalidate; for measuring.
  int Changes() const { return changes; }

private:
  static constexpr int CAPS = 14;
  static constexpr int UNIT_CAPS = 7;
  static constexpr int UNKNOWN = -1;
  struct TextureUnit
  {
    std::array<int8_t, UNIT_CAPS> enabled;
    std::array<int64_t, 3> texture;
    int64_t env;
    int8_t coordArray;
  };
  bool Change(int64_t& known, int64_t wanted);
  bool Change(int8_t& known, bool wanted);
  void SetCap(uint32_t cap, bool on, const char* report);
  void SetUnitCap(uint32_t cap, bool on, const char* report);
  void SetArray(Array a, bool on);
  void SetCoordArray(bool on);
  void CheckValues(DPipeDifferences& found) const;
  void CheckUnit(size_t n, DPipeDifferences& found) const;

  std::array<int8_t, CAPS> caps;
  std::array<int8_t, ARRAY_COUNT> arrays;
  std::array<TextureUnit, MAX_UNITS> units;
  int64_t blendFunc, depthFunc, depthMask, alphaFunc, cullFace, polygonOffset, matrixMode, program, arrayBuffer,
      indexBuffer, activeUnit, clientUnit;
  int unit = 0;
  int changes = 0;
};
// The one of the current context.
DPipe& DThePipe();
