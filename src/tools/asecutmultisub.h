#pragma once

#include <string>

class QToolUi;

// Cuts a scene whose objects use multi/sub materials apart: a file for each object and submaterial, with the faces of
// that material id alone, numbered anew, named "<submaterial>_<number>_<object>.ase" in lower case in the directory;
// where that is taken "_occ2" and so on follow. True when the scene was gone through; then, with showResult, the user
// is told. False (reported) when the file can't be read or isn't fit, and when the user cancelled.
bool ASECutMultiSub(const std::string& inputName, const std::string& outputDirectory, bool showResult, QToolUi& ui);
