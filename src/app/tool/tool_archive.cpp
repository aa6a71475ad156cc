#include "app/tool/tool.h"
#include "app/tool/tooljson.h"

#include "foundation/qarchive.h"
#include "foundation/qfilename.h"

namespace {

const char* NameOf(const ToolArgs& args)
{
  return args.Text(0).c_str();
}

int Closed(QArchive& archive, const ToolArgs& args)
{
  return archive.Close() ? TOOL_DONE : ToolFail("can't write %s", NameOf(args));
}

int RunCreate(const ToolArgs& args)
{
  QArchive archive(args.Path(0), QArchive::CREATE);
  return Closed(archive, args);
}

int RunAdd(const ToolArgs& args)
{
  QArchive archive(args.Path(0), QArchive::UPDATE);
  if (!archive.IsOpen())
    return ToolFail("%s isn't an archive", NameOf(args));
  const std::string& name = args.Text(args.Has(2) ? 2 : 1);
  if (!QFileExists(args.Path(1), false))
    return ToolFail("there is no file %s", args.Text(1).c_str());
  if (!archive.AddFile(args.Path(1), name.c_str()))
    return ToolFail("can't add %s", args.Text(1).c_str());
  return Closed(archive, args);
}

int RunRemove(const ToolArgs& args)
{
  QArchive archive(args.Path(0), QArchive::UPDATE);
  if (!archive.IsOpen())
    return ToolFail("%s isn't an archive", NameOf(args));
  if (!archive.RemoveFile(args.Text(1)))
    return ToolFail("there is no %s in %s", args.Text(1).c_str(), NameOf(args));
  return Closed(archive, args);
}

int RunExtract(const ToolArgs& args)
{
  QArchive archive(args.Path(0));
  if (!archive.IsOpen())
    return ToolFail("%s isn't an archive", NameOf(args));
  if (!archive.FindFile(args.Text(1)))
    return ToolFail("there is no %s in %s", args.Text(1).c_str(), NameOf(args));
  if (!args.Has(2) && !QArchive::IsSafeName(args.Text(1)))
    return ToolFail("%s lies outside this directory; say where it is to go", args.Text(1).c_str());
  if (!archive.ExtractFile(args.Text(1), args.Path(args.Has(2) ? 2 : 1).c_str()))
    return ToolFail("can't extract %s from %s", args.Text(1).c_str(), NameOf(args));
  return TOOL_DONE;
}

int RunList(const ToolArgs& args)
{
  QArchive archive(args.Path(0));
  if (!archive.IsOpen())
    return ToolFail("%s isn't an archive", NameOf(args));
  ToolJson list = ToolJson::Array();
  qstring name;
  int offset = 0, size = 0;
  while (archive.GetNextFile(name, &offset, &size))
    list.Add(ToolJson::Object().Add("name", name.Str()).Add("offset", offset).Add("size", size));
  list.Print();
  return TOOL_DONE;
}

} // namespace

std::vector<ToolVerb> ToolArchiveVerbs()
{
  using P = ToolParameter;
  return {
      {"archive", "create", "A new, empty archive", {{"AR"}}, RunCreate},
      {"archive", "add", "Add a file, under another name if told", {{"AR"}, {"FILE"}, {"NAME", P::OPTIONAL}}, RunAdd},
      {"archive", "remove", "Remove a member; its space stays in use", {{"AR"}, {"NAME"}}, RunRemove},
      {"archive", "extract", "Write a member to a file", {{"AR"}, {"NAME"}, {"OUT", P::OPTIONAL}}, RunExtract},
      {"archive", "list", "The directory as JSON", {{"AR"}}, RunList},
  };
}
