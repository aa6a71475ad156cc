#include "foundation/qinfo.h"

#include "foundation/eval.h"
#include "foundation/qfile.h"
#include "foundation/qinfotree.h"
#include "foundation/qnumber.h"
#include "foundation/qpathcase.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int64_t Nanoseconds(const struct stat& info)
{
  return int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
}

// The time of its last change; 0 when there is no such file.
int64_t FileTime(const std::string& path)
{
  struct stat info;
  return stat(QFindPath(path).c_str(), &info) == 0 ? Nanoseconds(info) : 0;
}

// A whole regular file in memory.
struct FileContent
{
  QBlock block;
  size_t length = 0;
  int64_t time = 0;
  int error = 0; // of errno; 0 when all was read
};

int ReadAll(int fd, FileContent& content)
{
  for (;;) {
    if (content.length == content.block.Size()) { // it grows while it is read
      QBlock larger(2 * content.length + 1);
      std::memcpy(larger.Data(), content.block.Data(), content.length);
      content.block = std::move(larger);
    }
    const ssize_t got = read(fd, content.block.Data() + content.length, content.block.Size() - content.length);
    if (got == 0)
      return 0;
    if (got > 0)
      content.length += static_cast<size_t>(got);
    else if (errno != EINTR)
      return errno;
  }
}

FileContent ReadFile(const std::string& path)
{
  FileContent content;
  // Without O_NONBLOCK the opening of a pipe would wait for its writer.
  const int fd = open(QFindPath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) {
    content.error = errno;
    if (content.error == ENOENT && QReadFile(path, content.block, content.length, true))
      content.error = 0; // a member of an archive
    return content;
  }
  struct stat info;
  if (fstat(fd, &info) != 0) {
    content.error = errno;
  } else if (!S_ISREG(info.st_mode)) {
    content.error = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
  } else {
    content.block = QBlock(static_cast<size_t>(info.st_size) + 1); // one more, to see the end at once
    content.time = Nanoseconds(info);
    content.error = ReadAll(fd, content);
  }
  close(fd);
  return content;
}

// Takes the next of numbers that are separated by blanks and commas off the text. False when there is none.
bool NextElement(std::string_view& text, std::string_view& element)
{
  const size_t start = text.find_first_not_of(" ,");
  if (start == std::string_view::npos)
    return false;
  text.remove_prefix(start);
  element = text.substr(0, text.find_first_of(" ,"));
  text.remove_prefix(element.size());
  return true;
}

} // namespace

QInfo::QInfo(std::string_view file, uint32_t newFlags) :
    fileName(file), flags(newFlags & ~uint32_t{MODIFIED | FILE_READ}), tree(std::make_unique<QInfoTree>())
{
  if (!(flags & NO_READ))
    Read();
}

QInfo::~QInfo()
{
  if (IsModified())
    Write(nullptr, true);
}

void QInfo::ReportUnreadFile(int error) const
{
  // A file that may be absent is still missed when it's there and can't be read.
  if (error == ENOENT && (flags & NO_OPEN_WARNING))
    return;
  std::error_code ignored;
  QWARN("QInfo: can't open '%s', current directory is '%s'", fileName.c_str(),
        std::filesystem::current_path(ignored).c_str());
}

bool QInfo::Read()
{
  FileContent content = ReadFile(fileName);
  tree = std::make_unique<QInfoTree>();
  SetModified(false);
  unreadable = content.error != 0 && content.error != ENOENT;
  flags &= ~uint32_t{FILE_READ};
  fileTime = 0;
  if (content.error != 0) {
    ReportUnreadFile(content.error);
    return true;
  }
  flags |= FILE_READ;
  fileTime = content.time;
  const std::string_view text = tree->HoldText(std::move(content.block), content.length);
  QInfoReadText(*tree, text, fileName, flags & STOP_AT_BRACE);
  return true;
}

void QInfo::ReadFromText(std::string_view text)
{
  tree = std::make_unique<QInfoTree>();
  SetModified(false);
  QBlock copy(text.size() + 1);
  if (!text.empty())
    std::memcpy(copy.Data(), text.data(), text.size());
  QInfoReadText(*tree, tree->HoldText(std::move(copy), text.size()), fileName, flags & STOP_AT_BRACE);
}

bool QInfo::Reload()
{
  if (fallback)
    fallback->Reload();
  if (IsModified())
    Write(nullptr, true);
  return Read();
}

bool QInfo::KeepsOtherFile(const std::string& path) const
{
  const int64_t time = FileTime(path);
  return time != 0 && time != fileTime &&
         QSystemMessage("File was modified",
                        "The file '" + path + "' was modified - it will be overwritten; do you want to overwrite?",
                        false);
}

bool QInfo::Write(const char* path, bool checkChanged)
{
  if (!path && !IsModified())
    return true;
  const std::string target = path ? path : fileName;
  const bool fromScratch = flags & NO_READ;
  flags &= ~uint32_t{NO_READ};
  if (!unreadable && !fromScratch && checkChanged && KeepsOtherFile(target)) {
    SetModified(false);
    return false;
  }
  size_t length = 0;
  const QBlock text = QInfoText(tree->Root(), length);
  if (unreadable || !QWriteFile(target, std::string_view(text.Text(), length))) {
    QWARN("QInfo:Write(); file (%s) can't be written", target.c_str());
    return false;
  }
  SetModified(false);
  fileTime = FileTime(target);
  return true;
}

std::string QInfo::WriteToText() const
{
  size_t length = 0;
  const QBlock text = QInfoText(tree->Root(), length);
  return length > 0 ? std::string(text.Text(), length) : std::string();
}

void QInfo::MarkWritten()
{
  SetModified(false);
  flags &= ~uint32_t{NO_READ};
  fileTime = FileTime(fileName);
}

void QInfo::SetFallback(std::unique_ptr<QInfo> info)
{
  fallback = std::move(info);
}

// What all Gets read. False when the key is nowhere; that and a find in the fallback are reported as the flags ask.
bool QInfo::Lookup(std::string_view path, std::string_view& value) const
{
  if (QInfoNode* node = tree->FindKey(path)) {
    node->flags |= QInfoNode::USED;
    value = node->HasValue() ? node->Value() : "?";
    return true;
  }
  if (fallback && fallback->Lookup(path, value)) {
    if (flags & WARN_FALLBACK)
      QLOG("QInfo: '%s' only found in fallback file.", std::string(path).c_str());
    return true;
  }
  if (flags & REQUIRED)
    QWARN("QInfo: '%s' not found in info or fallback - required", std::string(path).c_str());
  return false;
}

bool QInfo::GetString(std::string_view path, std::string& out, const char* otherwise) const
{
  std::string_view value = otherwise ? otherwise : "";
  const bool found = Lookup(path, value);
  out = value;
  return found;
}

bool QInfo::GetString(std::string_view path, qstring& out, const char* otherwise) const
{
  std::string_view value = otherwise ? otherwise : "";
  const bool found = Lookup(path, value);
  out = qstring(value);
  return found;
}

const char* QInfo::GetStringDirect(std::string_view path, const char* otherwise) const
{
  static std::string result;
  GetString(path, result, otherwise);
  return result.c_str();
}

int QInfo::GetInt(std::string_view path, int otherwise) const
{
  std::string_view value;
  if (!Lookup(path, value))
    return otherwise;
  qstring reason;
  if (const qstring text(value); !text.ValidateInt(reason))
    QWARN("%s value '%s' (in %s) is not a valid integer: %s", std::string(path).c_str(), text.c_str(), fileName.c_str(),
          reason.c_str());
  return Eval(value);
}

bool QInfo::GetBool(std::string_view path, bool otherwise) const
{
  std::string_view value;
  return Lookup(path, value) ? Eval(value) != 0 : otherwise;
}

float QInfo::GetFloat(std::string_view path, float otherwise) const
{
  std::string_view value;
  if (!Lookup(path, value))
    return otherwise;
  qstring reason;
  if (const qstring text(value); !text.ValidateFloat(reason))
    QWARN("%s value '%s' (in %s) is not a valid float: %s", std::string(path).c_str(), text.c_str(), fileName.c_str(),
          reason.c_str());
  return QParseFloat(value);
}

bool QInfo::GetInts(std::string_view path, int count, int* out, int otherwise) const
{
  std::string_view value;
  const bool found = Lookup(path, value);
  std::string_view element;
  for (int i = 0; i < count; ++i)
    out[i] = found && NextElement(value, element) ? Eval(element) : otherwise;
  return found;
}

bool QInfo::GetInts(std::string_view path, QRect& out) const
{
  int numbers[4];
  const bool found = GetInts(path, 4, numbers);
  out = {numbers[0], numbers[1], numbers[2], numbers[3]};
  return found;
}

bool QInfo::GetFloats(std::string_view path, int count, float* out, const float* otherwise) const
{
  std::string_view value;
  Lookup(path, value);
  std::string_view element;
  for (int i = 0; i < count; ++i)
    out[i] = NextElement(value, element) ? QParseFloat(element) : otherwise ? otherwise[i] : 0;
  return true;
}

bool QInfo::GetHost(std::string_view path, qstring& out, const char* otherwise) const
{
  const bool found = GetString(path, out, otherwise);
  if (out.BeginsWith("/") && !out.Contains("+"))
    QWARN("QInfo:GetHost(); bad format of host IP (%s) for key '%s'", out.c_str(), std::string(path).c_str());
  if (out.BeginsWith("/") || out.BeginsWith("+"))
    out = "127.0.0.1";
  return found;
}

bool QInfo::PathExists(std::string_view path) const
{
  return FindNode(path) || (fallback && fallback->PathExists(path));
}

int QInfo::CountChildren(std::string_view path) const
{
  const QInfoNode* node = FindNode(path);
  int count = 0;
  for (const QInfoNode* child = node ? node->FirstChild() : nullptr; child; child = child->Next())
    count += child->type != QInfoNode::COMMENT;
  return count;
}

bool QInfo::SetString(std::string_view path, std::string_view value)
{
  QInfoNode* key = tree->MakeKey(path);
  if (!key)
    return false;
  if (key->HasValue() && key->Value() == value)
    return true;
  tree->SetValue(key, value);
  SetModified(true);
  return true;
}

bool QInfo::SetInt(std::string_view path, int value)
{
  return SetString(path, std::to_string(value));
}

bool QInfo::SetFloat(std::string_view path, float value)
{
  return SetFloats(path, &value, 1);
}

bool QInfo::SetFloats(std::string_view path, const float* values, int count)
{
  std::string text;
  for (int i = 0; i < count; ++i)
    text += (i > 0 ? " " : "") + QFormatFloat(double{values[i]});
  return SetString(path, text);
}

bool QInfo::RemoveKey(std::string_view path)
{
  QInfoNode* node = tree->FindNode(path);
  if (!node || node == tree->Root())
    return false;
  node->flags |= QInfoNode::REMOVED;
  SetModified(true);
  return true;
}

const QInfoNode* QInfo::Root() const
{
  return tree->Root();
}

const QInfoNode* QInfo::FindNode(std::string_view path) const
{
  return tree->FindNode(path);
}
