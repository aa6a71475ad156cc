#pragma once

#include <string>

class QToolUi;

// Cuts an exported scene apart: a file "output/<name>.ase" below the current directory for each geometry object, with
// the scene's header and the one material that the object uses. True when it ran to the end of the scene; an object
// that is incomplete, or whose file can't be written (reported), ends the run, and what was cut until then stays.
// False (reported) when the file can't be read or holds no object.
bool ASECut(const std::string& path, QToolUi& ui);
