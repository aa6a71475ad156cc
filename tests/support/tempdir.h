#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// A directory of a test's own, gone with it.
class TempDir
{
public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  std::string Path(std::string_view name = {}) const;
  // Makes the directories on the way; gives the full path.
  std::string Write(std::string_view name, std::string_view content) const;

private:
  std::filesystem::path path;
};

// The whole file; empty when there is none.
std::string FileText(const std::string& path);

// The process works inside the directory while this lives.
class InDirectory
{
public:
  explicit InDirectory(const std::string& path);
  ~InDirectory();
  InDirectory(const InDirectory&) = delete;
  InDirectory& operator=(const InDirectory&) = delete;

private:
  std::filesystem::path before;
};
