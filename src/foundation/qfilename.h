#pragma once

#include "foundation/qstring.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Free functions on file names. "/" stands between directories; "\" is accepted wherever a name is taken apart.
// Names of files that are read are looked for as QFindPath does.

// What they ask of others. Owned by the process, one instance; all null until somebody can answer.
struct QFileServices
{
  // Is this a member of an open archive?
  std::function<bool(const std::string& path)> archiveHas;
  // Its content; false when there is no such member or it is damaged.
  std::function<bool(const std::string& path, std::vector<std::byte>& content)> archiveRead;
  // The platform's "open" for a document, program or address.
  std::function<bool(const std::string& what, const std::string& args)> openDocument;
};
QFileServices& QFileHooks();

// The name behind the last separator, or path itself. The pointer lies inside path.
const char* QFileBase(const char* path);
// At the last dot, or null; an empty path gives itself.
const char* QFileExtension(const char* path);
bool QFileExists(const std::string& path, bool archives = true);
bool QDirectoryExists(const std::string& path);
int QFileSize(const std::string& path); // -1 when absent
[[nodiscard]] bool QCopyFile(const std::string& from, const std::string& to);
// "base/name". A name of ".." takes the last component of base away and leaves "/" or "" at the top.
std::string QPathJoin(std::string_view base, std::string_view name);
// True when it exists already. False, and errno tells why, when it can't be made.
[[nodiscard]] bool QCreateDirectory(const std::string& path);
[[nodiscard]] bool QCreateDirectories(const std::string& path); // with its parents
void QCurrentDir(qstring& path);                                // at most 1,024 bytes
bool QSetCurrentDirectory(const std::string& path);             // a failure is reported
// Handed to the platform's viewer; false, with a report, when that can't be done.
bool QNotePad(const std::string& path);
bool QOpen(const std::string& what, const std::string& args = {});
// Logs the bytes, 16 to a line.
void QHexDump(const void* buffer, size_t size);
// The smallest power of two not below n; 1 for n below 2, and 2^30 above that. Rounding isn't supported (reported).
int QNearestPowerOf2(int n, bool round = false);
