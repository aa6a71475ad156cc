// Compares what the pipe believes with what OpenGL says.
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dpipenames.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <string>

namespace {

GLint Ask(GLenum name)
{
  GLint value = 0;
  glGetIntegerv(name, &value);
  return value;
}

float AskFloat(GLenum name)
{
  GLfloat value = 0;
  glGetFloatv(name, &value);
  return value;
}

uint32_t High(int64_t pair)
{
  return static_cast<uint32_t>(pair >> 32);
}

uint32_t Low(int64_t pair)
{
  return static_cast<uint32_t>(pair);
}

} // namespace

// What isn't known (below 0) is never wrong.
class DPipeDifferences
{
public:
  void Flag(const std::string& what, int8_t known, bool actual)
  {
    if (known < 0 || known == static_cast<int8_t>(actual))
      return;
    QWARN("DPipe: %s was expected to be %s", what.c_str(), known ? "on" : "off");
    ++count;
  }
  void Value(const std::string& what, int64_t known, int64_t actual)
  {
    if (known < 0 || known == actual)
      return;
    QWARN("DPipe: %s was expected to be 0x%x", what.c_str(), static_cast<unsigned>(known));
    ++count;
  }
  void Number(const char* what, bool same, float known)
  {
    if (same)
      return;
    QWARN("DPipe: %s was expected to be %g", what, static_cast<double>(known));
    ++count;
  }
  int count = 0;
};

void DPipe::CheckValues(DPipeDifferences& found) const
{
  found.Flag("GL_DEPTH_WRITEMASK", static_cast<int8_t>(depthMask), Ask(GL_DEPTH_WRITEMASK) != 0);
  found.Value("GL_DEPTH_FUNC", depthFunc, Ask(GL_DEPTH_FUNC));
  found.Value("GL_CULL_FACE_MODE", cullFace, Ask(GL_CULL_FACE_MODE));
  found.Value("GL_MATRIX_MODE", matrixMode, Ask(GL_MATRIX_MODE));
  found.Value("GL_ARRAY_BUFFER_BINDING", arrayBuffer, Ask(GL_ARRAY_BUFFER_BINDING));
  found.Value("GL_ELEMENT_ARRAY_BUFFER_BINDING", indexBuffer, Ask(GL_ELEMENT_ARRAY_BUFFER_BINDING));
  if (blendFunc != UNKNOWN) {
    found.Value("GL_BLEND_SRC", High(blendFunc), Ask(GL_BLEND_SRC));
    found.Value("GL_BLEND_DST", Low(blendFunc), Ask(GL_BLEND_DST));
  }
  if (alphaFunc != UNKNOWN) {
    found.Value("GL_ALPHA_TEST_FUNC", High(alphaFunc), Ask(GL_ALPHA_TEST_FUNC));
    const float known = std::bit_cast<float>(Low(alphaFunc));
    const float held = std::clamp(known, 0.0f, 1.0f); // as OpenGL does, in steps of its own
    found.Number("GL_ALPHA_TEST_REF", std::abs(AskFloat(GL_ALPHA_TEST_REF) - held) < 0.002f, known);
  }
  if (polygonOffset != UNKNOWN) {
    const float factor = std::bit_cast<float>(High(polygonOffset) << 1); // but for its last bit
    const float offset = std::bit_cast<float>(Low(polygonOffset));
    const uint32_t actual = std::bit_cast<uint32_t>(AskFloat(GL_POLYGON_OFFSET_FACTOR));
    found.Number("GL_POLYGON_OFFSET_FACTOR", actual >> 1 == High(polygonOffset), factor);
    found.Number("GL_POLYGON_OFFSET_UNITS", AskFloat(GL_POLYGON_OFFSET_UNITS) == offset, offset);
  }
}

void DPipe::CheckUnit(size_t n, DPipeDifferences& found) const
{
  const TextureUnit& u = units[n];
  const std::string behind = " of unit " + std::to_string(n);
  glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(n));
  glClientActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(n));
  for (size_t i = 0; i < UNIT_CAPS; ++i)
    found.Flag(PIPE_UNIT_CAPS[i].text + behind, u.enabled[i], glIsEnabled(PIPE_UNIT_CAPS[i].name));
  for (size_t i = 0; i < u.texture.size(); ++i)
    found.Value(PIPE_BINDINGS[i].text + behind, u.texture[i], Ask(PIPE_BINDINGS[i].name));
  GLint env = 0;
  glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &env);
  found.Value("GL_TEXTURE_ENV_MODE" + behind, u.env, env);
  found.Flag("GL_TEXTURE_COORD_ARRAY" + behind, u.coordArray, glIsEnabled(GL_TEXTURE_COORD_ARRAY));
}

int DPipe::SyncCheck() const
{
  if (!DGlobals().hasContext)
    return 0;
  DPipeDifferences found;
  for (size_t i = 0; i < CAPS; ++i)
    found.Flag(PIPE_CAPS[i].text, caps[i], glIsEnabled(PIPE_CAPS[i].name));
  for (size_t i = 0; i < std::size(PIPE_ARRAYS); ++i)
    found.Flag(PIPE_ARRAYS[i].text, arrays[i], glIsEnabled(PIPE_ARRAYS[i].name));
  GLint tangent = 0;
  glGetVertexAttribiv(TANGENT_ATTRIBUTE, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &tangent);
  found.Flag("tangent array", arrays[TANGENT_ARRAY], tangent != 0);
  CheckValues(found);
  const GLint active = Ask(GL_ACTIVE_TEXTURE);
  const GLint client = Ask(GL_CLIENT_ACTIVE_TEXTURE);
  const auto expected = [](int64_t n) { return n == UNKNOWN ? n : n + GL_TEXTURE0; };
  found.Value("GL_ACTIVE_TEXTURE", expected(activeUnit), active);
  found.Value("GL_CLIENT_ACTIVE_TEXTURE", expected(clientUnit), client);
  const auto present = static_cast<size_t>(std::clamp(Ask(GL_MAX_TEXTURE_UNITS), 0, MAX_UNITS));
  for (size_t n = 0; n < present; ++n)
    CheckUnit(n, found);
  glActiveTexture(static_cast<GLenum>(active));
  glClientActiveTexture(static_cast<GLenum>(client));
  return found.count;
}
