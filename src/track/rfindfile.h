#pragma once

#include <string>
#include <string_view>

// The first of these that exists: file, dir/file, fallback/file, and the last two below the directory that the
// environment variable TORVIK names. dir/file when there is none. The fallback may be null.
std::string RFindPath(const std::string& file, const std::string& dir, const char* fallback = nullptr);

// The same; the next call overwrites what the pointer shows.
const char* RFindFile(const char* file, const char* dir, const char* fallback = nullptr);

// A path out of a file may only lead to what lies below the directory that the process works in: it isn't absolute, and
// no ".." leads above where it starts.
bool RStaysInside(std::string_view path);

// A track's sound file, in its directory or else the shared one; "" for one outside of both (reported).
std::string RFindSample(const std::string& given, const std::string& trackDir);
