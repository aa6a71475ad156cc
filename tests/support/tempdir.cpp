#include "support/tempdir.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

TempDir::TempDir()
{
  std::string name = (fs::temp_directory_path() / "pavex-test-XXXXXX").string();
  path = mkdtemp(name.data());
}

TempDir::~TempDir()
{
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

std::string TempDir::Path(std::string_view name) const
{
  return name.empty() ? path.string() : (path / name).string();
}

std::string TempDir::Write(std::string_view name, std::string_view content) const
{
  const fs::path full = path / name;
  fs::create_directories(full.parent_path());
  std::ofstream(full, std::ios::binary) << content;
  return full.string();
}

std::string FileText(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

InDirectory::InDirectory(const std::string& path) : before(fs::current_path())
{
  fs::current_path(path);
}

InDirectory::~InDirectory()
{
  fs::current_path(before);
}
