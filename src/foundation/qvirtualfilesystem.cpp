#include "foundation/qvirtualfilesystem.h"

#include "foundation/qfilename.h"
#include "foundation/qreport.h"

namespace {

// Directories are compared in upper case, with "/" between them.
std::string DirectoryKey(const std::string& path)
{
  const size_t end = path.find_last_of("/\\");
  std::string key = path.substr(0, end == std::string::npos ? 0 : end);
  for (char& c : key)
    c = c == '\\' ? '/' : c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return key;
}

} // namespace

QVirtualFileSystem::QVirtualFileSystem()
{
  QFileHooks().archiveHas = [this](const std::string& path) { return HasMember(path); };
  QFileHooks().archiveRead = [this](const std::string& path, std::vector<std::byte>& content) {
    return ReadMember(path, content);
  };
}

QVirtualFileSystem::~QVirtualFileSystem()
{
  QFileHooks().archiveHas = nullptr;
  QFileHooks().archiveRead = nullptr;
  if (archives.Count() > 0)
    QERR("QVirtualFileSystem: still %d archives attached upon destruction", archives.Count());
}

bool QVirtualFileSystem::AddArchive(QArchive* archive)
{
  if (archives.Add(archive))
    return true;
  QWARN("Out of space to add archive");
  return false;
}

bool QVirtualFileSystem::RemoveArchive(QArchive* archive)
{
  for (int i = 0; i < archives.Count(); ++i)
    if (*archives.At(i) == archive)
      return archives.Remove(i);
  return false;
}

bool QVirtualFileSystem::HasMember(const std::string& path)
{
  if (archives.Count() == 0)
    return false;
  const std::string directory = DirectoryKey(path);
  const std::string file = QFileBase(path.c_str());
  for (QArchive* archive : archives)
    if (DirectoryKey(archive->GetName()) == directory && archive->FindFile(file))
      return true;
  return false;
}

bool QVirtualFileSystem::ReadMember(const std::string& path, std::vector<std::byte>& content)
{
  const std::string directory = DirectoryKey(path);
  const std::string file = QFileBase(path.c_str());
  for (QArchive* archive : archives) {
    if (DirectoryKey(archive->GetName()) != directory)
      QDBG("Directory does not match\n");
    else if (archive->ReadFile(file, content))
      return true;
  }
  return false;
}

bool QVirtualFileSystem::FileExists(const std::string& path)
{
  return QFileExists(path, false) || HasMember(path);
}

std::unique_ptr<QFile> QVirtualFileSystem::OpenFile(const std::string& path, uint32_t mode)
{
  if (QFileExists(path, false))
    return std::make_unique<QFile>(path, mode);
  std::vector<std::byte> content;
  if (!ReadMember(path, content))
    return nullptr;
  return std::make_unique<QFile>(path, std::move(content));
}
