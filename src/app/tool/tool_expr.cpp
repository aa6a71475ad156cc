#include "app/tool/tool.h"

#include "foundation/eval.h"
#include "foundation/qmatch.h"

namespace {

int RunEval(const ToolArgs& args)
{
  ToolPrint(std::to_string(Eval(args.Text(0).c_str())) + "\n");
  return TOOL_DONE;
}

int RunMatch(const ToolArgs& args)
{
  ToolPrint(QMatch(args.Text(0).c_str(), args.Text(1).c_str()) ? "true\n" : "false\n");
  return TOOL_DONE;
}

} // namespace

std::vector<ToolVerb> ToolExprVerbs()
{
  return {
      {nullptr, "eval", "The whole number that an expression gives", {{"TEXT"}}, RunEval, {}, true},
      {nullptr, "match", "Does a text match a wildcard pattern? true or false", {{"PATTERN"}, {"TEXT"}}, RunMatch},
  };
}
