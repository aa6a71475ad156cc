#pragma once

#include <string>
#include <string_view>
#include <vector>

// pavex-tool: a table of verbs, each a thin call of a public operation.
//
// A group of verbs lives in a file of its own that gives its rows; toolmain.cpp lists the groups, reads the command
// line by the rows and calls the verb. A verb prints its result with ToolPrint and answers TOOL_DONE, or what ToolFail
// answers.

enum ToolStatus
{
  TOOL_DONE = 0,
  TOOL_FAILED = 1,
  TOOL_USAGE = 2
};

// What the user typed for a verb, already checked against its row.
class ToolArgs
{
public:
  // As typed; "" for an optional parameter that wasn't given, and then Has answers false.
  const std::string& Text(size_t i) const;
  bool Has(size_t i) const { return i < texts.size(); }
  size_t Count() const { return texts.size(); } // more than the row has parameters, if its last may be many
  // For files and directories: the path as the process sees it, wherever --root has led it.
  std::string Path(size_t i) const { return Resolve(Text(i)); }
  // An option by its name, "--arrays": was it given, and its value.
  bool Option(std::string_view name) const { return FindOption(name) != nullptr; }
  const std::string& OptionText(std::string_view name) const;
  std::string OptionPath(std::string_view name) const { return Resolve(OptionText(name)); }

  struct GivenOption
  {
    std::string name;
    std::string value;
  };
  std::vector<std::string> texts;
  std::vector<GivenOption> options;
  std::string startDirectory; // typed paths start here; empty while that is the current directory

private:
  const GivenOption* FindOption(std::string_view name) const;
  std::string Resolve(const std::string& path) const;
};

struct ToolParameter
{
  enum Count
  {
    ONE,
    OPTIONAL,
    MANY
  };                // OPTIONAL and MANY (one or more) come last
  const char* name; // as in the usage: "FILE"
  Count count = ONE;
};

struct ToolOption
{
  const char* name; // "--arrays"
  const char* help;
  const char* value = nullptr; // the value's name in the usage; null for a switch
  bool required = false;
};

struct ToolVerb
{
  const char* group; // null for a verb that stands alone
  const char* name;
  const char* help;
  std::vector<ToolParameter> parameters;
  int (*run)(const ToolArgs& args);
  std::vector<ToolOption> options = {};
  bool dashes = false; // all that follows is text, even "--5"
};

// One line on stderr, and the answer TOOL_FAILED.
[[gnu::format(printf, 1, 2)]] int ToolFail(const char* format, ...);
// On stdout, as it is.
void ToolPrint(std::string_view text);
// A bar on stderr when that is a terminal; from 0 to 1, which ends it.
void ToolProgress(const char* what, float done);

// The groups.
std::vector<ToolVerb> ToolArchiveVerbs();
std::vector<ToolVerb> ToolAseVerbs();
std::vector<ToolVerb> ToolBatchVerbs();
std::vector<ToolVerb> ToolImageVerbs();
std::vector<ToolVerb> ToolIniVerbs();
std::vector<ToolVerb> ToolExprVerbs();
std::vector<ToolVerb> ToolLidarVerbs();
std::vector<ToolVerb> ToolModelVerbs();
std::vector<ToolVerb> ToolShaderVerbs();
std::vector<ToolVerb> ToolTrackVerbs();
