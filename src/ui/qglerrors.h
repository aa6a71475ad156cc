#pragma once

#include <string_view>

// OpenGL's own messages as warnings. Does nothing unless the settings ask for such checks, or when the driver can't
// tell. Only with a context.
void QInstallGLErrorCallback();

// A failed call of the shader program library: the call, its error, and the compiler's listing, a line at a time.
void QShowCGErrors(std::string_view call, std::string_view error, std::string_view listing);
