#pragma once

#include <string>
#include <string_view>
#include <vector>

class QInfo;

// Several chosen files: the directory first, then the names in it.
using QSplit = std::vector<std::string>;

// Lets the user choose a file and waits for the answer. A title with "xport" or "ave" in it asks for a file to write,
// any other for one to read. Window position, directory, file and filter are remembered in info (null: not at all)
// below "qfiledlg.<key>."; an empty initialDir means the remembered one. fullName gets the whole path, fileName the
// name in its directory; each may be null. list turns on the choice of several. The working directory is the same
// afterwards. False, with nothing changed, when the user chose nothing.
bool QDlgFile(std::string_view title, QInfo* info, std::string_view key, const std::string& initialDir,
              std::string* fullName, std::string* fileName, QSplit* list = nullptr);
