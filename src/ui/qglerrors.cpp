#include "ui/qglerrors.h"

#include "foundation/qarg.h"
#include "foundation/qreport.h"

#include <epoxy/gl.h>
#include <string>

namespace {

const char* SourceName(GLenum source)
{
  switch (source) {
  case GL_DEBUG_SOURCE_API:
    return "API";
  case GL_DEBUG_SOURCE_WINDOW_SYSTEM:
    return "Window System";
  case GL_DEBUG_SOURCE_SHADER_COMPILER:
    return "Shader Compiler";
  case GL_DEBUG_SOURCE_THIRD_PARTY:
    return "Third Party";
  case GL_DEBUG_SOURCE_APPLICATION:
    return "Application";
  case GL_DEBUG_SOURCE_OTHER:
    return "Other";
  default:
    return "Unknown";
  }
}

const char* TypeName(GLenum type)
{
  switch (type) {
  case GL_DEBUG_TYPE_ERROR:
    return "Error";
  case GL_DEBUG_TYPE_DEPRECATED_BEHAVIOR:
    return "Deprecated Behavior";
  case GL_DEBUG_TYPE_UNDEFINED_BEHAVIOR:
    return "Undefined Behavior";
  case GL_DEBUG_TYPE_PORTABILITY:
    return "Portability";
  case GL_DEBUG_TYPE_PERFORMANCE:
    return "Performance";
  case GL_DEBUG_TYPE_OTHER:
    return "Other";
  default:
    return "Unknown";
  }
}

const char* SeverityName(GLenum severity)
{
  switch (severity) {
  case GL_DEBUG_SEVERITY_HIGH:
    return "High";
  case GL_DEBUG_SEVERITY_MEDIUM:
    return "Medium";
  case GL_DEBUG_SEVERITY_LOW:
    return "Low";
  default:
    return "??";
  }
}

void APIENTRY QGLErrorCallback(GLenum source, GLenum type, GLuint id, GLenum severity, GLsizei, const GLchar* message,
                               const void*)
{
  constexpr GLuint SHADER_RECOMPILED = 131218; // a driver's talk about its own ways
  if (id == SHADER_RECOMPILED) {
    QDBG("OpenGL message 131218 seen - ignored\n");
    return;
  }
  QWARN("OpenGL message: %s, [source %s, type %s, severity %s]\n", message, SourceName(source), TypeName(type),
        SeverityName(severity));
}

} // namespace

void QInstallGLErrorCallback()
{
  if (!(QDebugOptions() & QDEBUG_OPENGL) || !epoxy_has_gl_extension("GL_KHR_debug"))
    return;
  glEnable(GL_DEBUG_OUTPUT);
  glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS); // in the call that is at fault, so that the stack tells which
  glDebugMessageCallback(QGLErrorCallback, nullptr);
}

void QShowCGErrors(std::string_view call, std::string_view error, std::string_view listing)
{
  const auto shown = [](std::string_view text) { return std::string(text); };
  QWARN("%s: %s", shown(call).c_str(), shown(error).c_str());
  while (!listing.empty()) {
    const size_t end = listing.find('\n');
    QWARN("  %s", shown(listing.substr(0, end)).c_str());
    listing.remove_prefix(end == std::string_view::npos ? listing.size() : end + 1);
  }
}
