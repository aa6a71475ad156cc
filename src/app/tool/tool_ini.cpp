#include "app/tool/tool.h"
#include "app/tool/tooljson.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qinfonode.h"
#include "foundation/qsafewrite.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

namespace {

// The tree of the file that is the verb's first parameter; null, said on stderr, when it can't be read.
std::unique_ptr<QInfo> OpenInfo(const ToolArgs& args)
{
  const std::string path = args.Path(0);
  if (QFileExists(path, false))
    if (auto info = std::make_unique<QInfo>(path, QInfo::NO_OPEN_WARNING); info->IsRead())
      return info;
  ToolFail("can't read %s", args.Text(0).c_str());
  return nullptr;
}

int NoKey(const ToolArgs& args)
{
  return ToolFail("no key '%s' in %s", args.Text(1).c_str(), args.Text(0).c_str());
}

// Writes the changed tree back.
int WriteInfo(QInfo& info, const ToolArgs& args)
{
  if (info.Write())
    return TOOL_DONE;
  const int reason = errno;
  info.MarkWritten(); // or its destructor would try again
  return ToolFail("can't write %s (%s)", args.Text(0).c_str(), std::strerror(reason));
}

int RunGet(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  std::string value;
  if (!info->GetString(args.Text(1), value))
    return NoKey(args);
  ToolPrint(value + "\n");
  return TOOL_DONE;
}

// The default is read as a value in the file would be.
template <typename Get>
auto WithDefault(const QInfo& info, const ToolArgs& args, Get get)
{
  QInfo typed("command line", QInfo::NO_READ);
  typed.ReadFromText("default=" + args.Text(2) + "\n");
  const auto otherwise = args.Has(2) ? get(typed, "default", {}) : decltype(get(typed, "default", {})){};
  typed.MarkWritten();
  return get(info, args.Text(1), otherwise);
}

int RunInt(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  const auto get = [](const QInfo& i, std::string_view path, int otherwise) { return i.GetInt(path, otherwise); };
  ToolPrint(std::to_string(WithDefault(*info, args, get)) + "\n");
  return TOOL_DONE;
}

int RunFloat(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  const auto get = [](const QInfo& i, std::string_view path, float otherwise) { return i.GetFloat(path, otherwise); };
  std::array<char, 64> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), WithDefault(*info, args, get));
  ToolPrint(std::string(text.data(), end.ptr) + "\n");
  return TOOL_DONE;
}

int RunBool(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  const auto get = [](const QInfo& i, std::string_view path, bool otherwise) { return i.GetBool(path, otherwise); };
  ToolPrint(WithDefault(*info, args, get) ? "1\n" : "0\n");
  return TOOL_DONE;
}

int RunSet(const ToolArgs& args)
{
  QInfo info(args.Path(0), QInfo::NO_OPEN_WARNING); // a new file is made
  if (info.IsUnreadable())
    return ToolFail("can't read %s", args.Text(0).c_str());
  if (!info.SetString(args.Text(1), args.Text(2)))
    return ToolFail("can't set '%s' in %s", args.Text(1).c_str(), args.Text(0).c_str());
  return WriteInfo(info, args);
}

int RunRemove(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  if (!info->RemoveKey(args.Text(1)))
    return NoKey(args);
  return WriteInfo(*info, args);
}

int RunCopy(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  if (!QWriteFile(args.Path(1), info->WriteToText()))
    return ToolFail("can't write %s (%s)", args.Text(1).c_str(), std::strerror(errno));
  return TOOL_DONE;
}

// "view.left" for a tree that stands in another; the root has no name of its own.
std::string FullPath(const QInfoNode& node)
{
  std::string path(node.Name());
  for (const QInfoNode* p = node.Parent(); p && p->Parent(); p = p->Parent())
    path = std::string(p->Name()) + "." + path;
  return path;
}

ToolJson NodeJson(const QInfoNode& node);

ToolJson ChildrenJson(const QInfoNode& node)
{
  ToolJson children = ToolJson::Array();
  for (const QInfoNode* child = node.FirstChild(); child; child = child->Next())
    if (!child->IsRemoved())
      children.Add(NodeJson(*child));
  return children;
}

ToolJson NodeJson(const QInfoNode& node)
{
  static constexpr std::array<const char*, 3> types = {"comment", "key", "tree"};
  ToolJson json = ToolJson::Object();
  json.Add("type", types[node.type]);
  json.Add("name", node.Name());
  json.Add("value", node.HasValue() ? ToolJson(node.Value()) : ToolJson());
  json.Add("reference", node.Reference() ? ToolJson(FullPath(*node.Reference())) : ToolJson());
  json.Add("children", ChildrenJson(node));
  return json;
}

int RunDump(const ToolArgs& args)
{
  const auto info = OpenInfo(args);
  if (!info)
    return TOOL_FAILED;
  ToolJson::Object().Add("children", ChildrenJson(*info->Root())).Print();
  return TOOL_DONE;
}

} // namespace

std::vector<ToolVerb> ToolIniVerbs()
{
  constexpr auto OPTIONAL = ToolParameter::OPTIONAL;
  return {
      {"ini", "get", "A key's text", {{"FILE"}, {"PATH"}}, RunGet},
      {"ini", "int", "A key as a whole number", {{"FILE"}, {"PATH"}, {"DEFAULT", OPTIONAL}}, RunInt},
      {"ini", "float", "A key as a number", {{"FILE"}, {"PATH"}, {"DEFAULT", OPTIONAL}}, RunFloat},
      {"ini", "bool", "A key as 0 or 1", {{"FILE"}, {"PATH"}, {"DEFAULT", OPTIONAL}}, RunBool},
      {"ini", "set", "Set a key and write the file", {{"FILE"}, {"PATH"}, {"VALUE"}}, RunSet},
      {"ini", "remove", "Remove a key and write the file", {{"FILE"}, {"PATH"}}, RunRemove},
      {"ini", "copy", "Read a file and write its tree to another", {{"IN"}, {"OUT"}}, RunCopy},
      {"ini", "dump", "The whole tree as JSON", {{"FILE"}}, RunDump},
  };
}
