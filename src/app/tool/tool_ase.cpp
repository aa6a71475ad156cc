#include "app/tool/tool.h"
#include "app/tool/toolui.h"
#include "tools/asecut.h"
#include "tools/asecutmultisub.h"

namespace {

int RunCut(const ToolArgs& args)
{
  ToolUi ui;
  return ASECut(args.Path(0), ui) ? TOOL_DONE : ToolFail("can't cut %s apart", args.Text(0).c_str());
}

int RunCutMultiSub(const ToolArgs& args)
{
  ToolUi ui;
  return ASECutMultiSub(args.Path(0), args.Path(1), false, ui) ? TOOL_DONE
                                                               : ToolFail("can't cut %s apart", args.Text(0).c_str());
}

} // namespace

std::vector<ToolVerb> ToolAseVerbs()
{
  return {
      {"ase",
       "cut",
       "Cut a scene apart, an object a file, into the directory output of the data root",
       {{"FILE"}},
       RunCut},
      {"ase",
       "cut-multisub",
       "Cut a scene apart, a submaterial of an object a file",
       {{"FILE"}, {"DIR"}},
       RunCutMultiSub},
  };
}
