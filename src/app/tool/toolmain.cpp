#include "app/tool/tool.h"

#include "foundation/qappcore.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "foundation/qversion.h"

#include <CLI/CLI.hpp>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <map>
#include <unistd.h>

namespace {

std::vector<ToolVerb> AllVerbs()
{
  std::vector<ToolVerb> all;
  for (const auto& group : {ToolIniVerbs, ToolExprVerbs, ToolArchiveVerbs, ToolAseVerbs, ToolBatchVerbs, ToolImageVerbs,
                            ToolLidarVerbs, ToolModelVerbs, ToolShaderVerbs, ToolTrackVerbs})
    for (ToolVerb& verb : group())
      all.push_back(std::move(verb));
  return all;
}

// What stands behind a group in the usage.
const char* GroupHelp(std::string_view group)
{
  static constexpr struct
  {
    std::string_view group;
    const char* help;
  } helps[] = {{"ini", "Configuration trees"},
               {"ase", "Exported scenes"},
               {"archive", "Archives"},
               {"batch", "Work on all files of a track"},
               {"model", "Models"},
               {"track", "Tracks"}};
  for (const auto& h : helps)
    if (h.group == group)
      return h.help;
  return "";
}

// The command line's parts, kept by the parser while it runs.
struct VerbInput
{
  const ToolVerb* verb = nullptr;
  CLI::App* app = nullptr;
  std::deque<std::string> texts; // one for each parameter; a deque, since the parser holds their places
  std::vector<std::string> many; // of the last parameter
  std::deque<std::string> values;
};

struct Tool
{
  CLI::App app{"The file, model and track work of the track editor, for scripts", "pavex-tool"};
  std::vector<ToolVerb> verbs = AllVerbs();
  std::map<std::string, CLI::App*> groups;
  std::deque<VerbInput> inputs;
  std::string root;
  bool quiet = false;
};

// Only "--" starts an option, so "-5" is a number and "-x" a name. The parser thinks otherwise: the dash is kept from
// it.
constexpr char HIDDEN_DASH = '\x01';

std::string HideDash(std::string text)
{
  if (text.starts_with('-'))
    text[0] = HIDDEN_DASH;
  return text;
}

std::string ShowDash(std::string text)
{
  if (text.starts_with(HIDDEN_DASH))
    text[0] = '-';
  return text;
}

// From the last argument to the first, as the parser takes them.
std::vector<std::string> Arguments(const Tool& tool, int argc, char** argv)
{
  std::vector<std::string> args;
  bool allText = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    const bool help = arg == "--help";
    if (!help && (allText || !arg.starts_with("--")))
      arg = HideDash(arg);
    const bool isValue = i > 1 && std::string_view(argv[i - 1]) == "--root";
    if (!allText && !isValue && !arg.starts_with("--")) // the group or verb
      for (const ToolVerb& verb : tool.verbs)
        allText = allText || (verb.dashes && arg == (verb.group ? verb.group : verb.name));
    args.push_back(std::move(arg));
  }
  return {args.rbegin(), args.rend()};
}

void DeclareVerb(Tool& tool, const ToolVerb& verb)
{
  CLI::App* parent = &tool.app;
  if (verb.group) {
    CLI::App*& group = tool.groups[verb.group];
    if (!group)
      group = tool.app.add_subcommand(verb.group, GroupHelp(verb.group))->require_subcommand(1);
    parent = group;
  }
  VerbInput& input = tool.inputs.emplace_back();
  input.verb = &verb;
  input.app = parent->add_subcommand(verb.name, verb.help);
  for (const ToolParameter& p : verb.parameters) {
    CLI::Option* option = p.count == ToolParameter::MANY ? input.app->add_option(p.name, input.many)
                                                         : input.app->add_option(p.name, input.texts.emplace_back());
    option->required(p.count != ToolParameter::OPTIONAL)->type_name("");
  }
  for (const ToolOption& o : verb.options) {
    if (o.value)
      input.app->add_option(o.name, input.values.emplace_back(), o.help)->type_name(o.value)->required(o.required);
    else
      input.app->add_flag(o.name, o.help);
  }
}

ToolArgs Collect(const VerbInput& input)
{
  ToolArgs args;
  size_t next = 0;
  for (const ToolParameter& p : input.verb->parameters) {
    if (p.count == ToolParameter::MANY)
      for (const std::string& text : input.many)
        args.texts.push_back(ShowDash(text));
    else if (const std::string& text = input.texts[next++]; input.app->count(p.name) > 0)
      args.texts.push_back(ShowDash(text));
  }
  size_t value = 0;
  for (const ToolOption& o : input.verb->options) {
    const size_t at = value;
    value += o.value ? 1 : 0;
    if (input.app->count(o.name) > 0)
      args.options.push_back({o.name, o.value ? ShowDash(input.values[at]) : ""});
  }
  return args;
}

// The usage is that of the verb or group that the command line had reached.
int Usage(const Tool& tool, const std::string& what)
{
  std::fprintf(stderr, "pavex-tool: %s\n%s", ShowDash(what).c_str(), tool.app.help().c_str());
  return TOOL_USAGE;
}

// Goes to the data root. Typed paths are relative to the directory in which the program was started.
bool EnterRoot(const Tool& tool, ToolArgs& args)
{
  if (tool.root.empty())
    return true;
  qstring start;
  QCurrentDir(start);
  args.startDirectory = start.Str();
  return QSetCurrentDirectory(ShowDash(tool.root));
}

int RunVerb(const Tool& tool, const VerbInput& input)
{
  ToolArgs args = Collect(input);
  if (!EnterRoot(tool, args))
    return ToolFail("can't enter the data root %s", ShowDash(tool.root).c_str());
  const int status = input.verb->run(args);
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
    return ToolFail("can't write the result");
  return status;
}

void SetReports(bool quiet)
{
  QReportSettings& reports = QReports();
  reports.applicationName = "pavex-tool";
  reports.quiet = quiet;
  reports.exitStatus = TOOL_FAILED;
  reports.fatalExits = true;
}

void Declare(Tool& tool)
{
  tool.app.set_help_flag("--help", "Print this help and exit");
  tool.app.set_version_flag("--version", PAVEX_VERSION);
  tool.app.add_option("--root", tool.root, "The data root; without it the current directory")->type_name("DIR");
  tool.app.add_flag("--quiet", tool.quiet, "Leave out messages below a warning");
  tool.app.require_subcommand(1);
  for (const ToolVerb& verb : tool.verbs)
    DeclareVerb(tool, verb);
}

int Main(int argc, char** argv)
{
  Tool tool;
  Declare(tool);
  try {
    tool.app.parse(Arguments(tool, argc, argv));
  } catch (const CLI::Success& e) { // help or version
    tool.app.exit(e);
    return std::fflush(stdout) == 0 ? TOOL_DONE : ToolFail("can't write the result");
  } catch (const CLI::Error& e) {
    return Usage(tool, e.what());
  }
  SetReports(tool.quiet);
  const QAppCore application("pavex-tool"); // tracks may be packed into archives
  for (const VerbInput& input : tool.inputs)
    if (input.app->parsed())
      return RunVerb(tool, input);
  return Usage(tool, "no verb");
}

} // namespace

const std::string& ToolArgs::Text(size_t i) const
{
  static const std::string none;
  return Has(i) ? texts[i] : none;
}

const ToolArgs::GivenOption* ToolArgs::FindOption(std::string_view name) const
{
  for (const GivenOption& o : options)
    if (o.name == name)
      return &o;
  return nullptr;
}

const std::string& ToolArgs::OptionText(std::string_view name) const
{
  static const std::string none;
  const GivenOption* option = FindOption(name);
  return option ? option->value : none;
}

std::string ToolArgs::Resolve(const std::string& path) const
{
  return startDirectory.empty() || path.empty() || path[0] == '/' ? path : QPathJoin(startDirectory, path);
}

int ToolFail(const char* format, ...)
{
  va_list args;
  va_start(args, format);
  std::fputs("pavex-tool: ", stderr);
  std::vfprintf(stderr, format, args);
  std::fputc('\n', stderr);
  va_end(args);
  return TOOL_FAILED;
}

void ToolPrint(std::string_view text)
{
  std::fwrite(text.data(), 1, text.size(), stdout);
}

void ToolProgress(const char* what, float done)
{
  constexpr int WIDTH = 40;
  if (isatty(STDERR_FILENO) == 0)
    return;
  const int filled = done >= 1 ? WIDTH : done > 0 ? static_cast<int>(done * WIDTH) : 0;
  std::fprintf(stderr, "\r%s [%-*s]%s", what, WIDTH, std::string(static_cast<size_t>(filled), '#').c_str(),
               done >= 1 ? "\n" : "");
}

int main(int argc, char** argv)
{
  return Main(argc, argv);
}
