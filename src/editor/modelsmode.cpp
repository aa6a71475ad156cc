#include "editor/modelsmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/modelsmodeflags.h"
#include "editor/modelsmodepaint.h"
#include "editor/modelsmodereport.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qmatch.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "foundation/qstring.h"
#include "track/rtrackvrml.h"
#include "ui/qevent.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <utility>

// One row is an operation button, its key and what both do. Key 0: button only.
struct ModelsMode::Command
{
  const char* label;
  int key;
  void (*run)(ModelsMode& mode);
};

const std::array<ModelsMode::Command, 10> ModelsMode::commands = {{
    {"Goto line start", 0, [](ModelsMode& m) { m.view.GotoPickStart(); }},
    {"Toggle flag: Sk(y)", 'Y', [](ModelsMode& m) { m.ToggleFlag(RTrackNode::SKY); }},
    {"Toggle flag: (C)ollide", 'C', [](ModelsMode& m) { m.ToggleFlag(RTrackNode::COLLIDE); }},
    {"Toggle flag: (S)urface", 'S', [](ModelsMode& m) { m.ToggleFlag(RTrackNode::SURFACE); }},
    {"Toggle flag: (R)elative", 'R', [](ModelsMode& m) { m.ToggleFlag(RTrackNode::RELATIVE_POS); }},
    {"Toggle Flag: Movable (Ctrl-M)", QMOD_CTRL | 'M', [](ModelsMode& m) { m.ToggleFlag(RTrackNode::MOVABLE); }},
    {"Toggle flag: Receive Shadow", 0, [](ModelsMode& m) { m.ToggleFlag(RTrackNode::RECEIVE_SHADOW); }},
    {"Toggle flag: Receive Light", 0, [](ModelsMode& m) { m.ToggleFlag(RTrackNode::RECEIVE_LIGHT); }},
    {"Copy flags to group (Shift-G)", QMOD_SHIFT | 'G', [](ModelsMode& m) { m.CopyFlagsToGroup(); }},
    {"3D/material information(Shift-I)", QMOD_SHIFT | 'I', [](ModelsMode& m) { m.WriteReport(); }},
}};

// What has no button.
struct ModelsMode::Key
{
  int code;
  void (*run)(ModelsMode& mode);
};

const std::array<ModelsMode::Key, 6> ModelsMode::keys = {{
    {QKEY_PGUP, [](ModelsMode& m) { m.SelectBeside(-1); }},
    {QKEY_PGDN, [](ModelsMode& m) { m.SelectBeside(1); }},
    {QKEY_END, [](ModelsMode& m) { m.Select(m.NodeCount() - 1); }},
    {QKEY_HOME, [](ModelsMode& m) { m.Select(0); }},
    {'H', [](ModelsMode& m) { m.OpenList(); }},
    {'V', [](ModelsMode& m) { m.ShowColors(!m.colorize); }},
}};

namespace {

constexpr const char* CHECK_LABEL = "Colorize flags (Collide/Surface)";
constexpr const char* COLORIZE_KEY = "settings.colorize_props";
constexpr const char* REPORT_FILE = "report.txt";

// What a key types into the list, capital; 0: nothing.
char CharOf(int code)
{
  if (code & (QMOD_CTRL | QMOD_ALT))
    return 0;
  const int key = QKeyOf(code);
  if ((key >= 'A' && key <= 'Z') || (key >= '0' && key <= '9'))
    return static_cast<char>(key);
  if (key >= QKEY_KP_0 && key <= QKEY_KP_9)
    return static_cast<char>('0' + key - QKEY_KP_0);
  if (key == QKEY_MINUS)
    return code & QMOD_SHIFT ? '_' : '-';
  return 0;
}

std::string Upper(std::string_view text)
{
  qstring upper(text);
  upper.ToUpper();
  return upper.Str();
}

} // namespace

ModelsMode::ModelsMode(EditState& owner, EditHost& asks, EditView& theView) :
    state(owner), host(asks), view(theView), colorize(!owner.settings || owner.settings->GetBool(COLORIZE_KEY, true))
{}

ModelsMode::~ModelsMode() = default;

void ModelsMode::ModeSetup()
{
  std::array<const char*, commands.size()> labels{};
  std::transform(commands.begin(), commands.end(), labels.begin(), [](const Command& c) { return c.label; });
  host.SetOpButtons(labels);
  // What was changed since lasts only as long as the mode.
  ShowColors(!state.settings || state.settings->GetBool(COLORIZE_KEY, true));
}

void ModelsMode::StoreSettings(QInfo& settings) const
{
  settings.SetInt(COLORIZE_KEY, colorize);
}

void ModelsMode::ShowColors(bool on)
{
  colorize = on;
  host.ShowModeCheck(CHECK_LABEL, on);
  host.ColorByFlags(on);
}

bool ModelsMode::ModeKey(int code)
{
  if (list) {
    ListKey(code);
    return true;
  }
  for (const Command& c : commands)
    if (c.key != 0 && c.key == code)
      c.run(*this);
  for (const Key& k : keys)
    if (k.code == code)
      k.run(*this);
  return false; // the global keys run too
}

void ModelsMode::ModeOp(int n)
{
  if (n >= 0 && n < static_cast<int>(commands.size()))
    commands[static_cast<size_t>(n)].run(*this);
}

bool ModelsMode::ModeEvent(const QEvent& event)
{
  if (list) {
    const EditList::Answer answer = list->AnswerTo(event);
    if (answer != EditList::Answer::NONE) {
      CloseList(answer == EditList::Answer::OK);
      return true;
    }
  }
  if (event.type == QEvent::CLICK && host.ModeCheck() != colorize)
    ShowColors(!colorize);
  return false;
}

void ModelsMode::ModePaint(DOverlay& overlay) const
{
  PaintSelectedNodes(state, overlay);
}

void ModelsMode::ModeHud() const
{
  const auto& selected = state.SelectedNodes;
  const std::string count = std::to_string(NodeCount());
  if (selected.size() == 1)
    host.HudPrint("Object: " + selected[0].node->file + " (" + std::to_string(selected[0].index + 1) + " out of " +
                  count + ")");
  else
    host.HudPrint("Object: " + std::to_string(selected.size()) + " nodes selected (out of " + count + ")");
  if (selected.empty()) {
    host.HudPrint("Flags: ---");
    return;
  }
  const SharedFlags flags = CompareFlags(selected);
  host.HudPrint((selected.size() == 1 ? "Flags: " : "Shared flags: ") +
                (flags.shared ? FlagNames(flags.shared) : std::string("<no flags set>")));
  if (flags.unshared)
    host.HudPrint("Unshared flags: " + FlagNames(flags.unshared));
}

int ModelsMode::NodeCount() const
{
  return state.curTrack ? state.curTrack->nodes.Count() : 0;
}

void ModelsMode::Select(int index)
{
  if (index < 0 || index >= NodeCount())
    return;
  view.ClearSelectedNodes();
  view.AddSelectedNode(index);
}

void ModelsMode::SelectBeside(int step)
{
  if (!state.SelectedNodes.empty())
    Select(state.SelectedNodes.front().index + step);
}

void ModelsMode::ToggleFlag(RTrackNode::Flag bit)
{
  const bool differ = (CompareFlags(state.SelectedNodes).unshared & bit) != 0;
  for (const SelectedNode& selected : state.SelectedNodes) {
    RTrackNode& node = *selected.node;
    node.flags = differ ? node.flags | bit : node.flags ^ bit;
    if (bit == RTrackNode::RECEIVE_SHADOW || bit == RTrackNode::RECEIVE_LIGHT)
      node.CopyFlagToBursts(bit);
    node.CopyFlagsToGeobs();
  }
}

void ModelsMode::CopyFlagsToGroup()
{
  const auto& selected = state.SelectedNodes;
  qlog(QFileNameOf(__FILE__), "CopyFlagsToGroup", __LINE__, "CopyFlagsToGroup; sel size %d\n",
       static_cast<int>(selected.size()));
  if (selected.size() != 1) {
    host.Message("Error", "Copy flags to group only works with 1 object selected.");
    return;
  }
  const RTrackNode& source = *selected[0].node;
  std::string pattern;
  if (!InputText(host, "Copy flags to group", "Enter pattern of objs to copy flags to:", source.file.c_str(), pattern))
    return;
  int matched = 0;
  for (const auto& node : state.curTrack->nodes) {
    if (!QMatch(pattern.c_str(), node->file.c_str()))
      continue;
    qlog(QFileNameOf(__FILE__), "CopyFlagsToGroup", __LINE__, "match '%s'\n", node->file.c_str());
    node->flags = source.flags; // the copies in the model stay as they are
    ++matched;
  }
  host.Message("Notice", (std::to_string(matched) + " objects matched.").c_str());
}

void ModelsMode::WriteReport()
{
  if (state.SelectedNodes.empty() || !state.SelectedNodes[0].node->sceneNode)
    return;
  const bool texCoords = state.settings && state.settings->GetBool("report.report_tc", false);
  if (!QWriteFile(REPORT_FILE, NodeReport(*state.SelectedNodes[0].node, texCoords))) {
    host.Message("Error", "Can't open report file");
    return;
  }
  QNotePad(REPORT_FILE);
}

void ModelsMode::OpenList()
{
  names.clear();
  for (int i = 0; i < NodeCount(); ++i)
    names.push_back((*state.curTrack->nodes.At(i))->name);
  if (names.empty())
    return;
  std::sort(names.begin(), names.end());
  list = host.OpenList("Select an track node", names);
  const auto current = state.SelectedNodes.empty()
                           ? names.begin()
                           : std::find(names.begin(), names.end(), state.SelectedNodes[0].node->name);
  if (current != names.end())
    list->SetCursor(static_cast<int>(current - names.begin()));
}

void ModelsMode::CloseList(bool chosen)
{
  const int item = list->Cursor();
  list.reset();
  if (!chosen)
    return;
  if (item >= 0 && item < static_cast<int>(names.size())) {
    const auto& nodes = state.curTrack->nodes;
    const auto found = std::find_if(nodes.begin(), nodes.end(),
                                    [&](const auto& node) { return node->name == names[static_cast<size_t>(item)]; });
    Select(static_cast<int>(found - nodes.begin()));
  }
  host.PostKey('E');
}

void ModelsMode::ListKey(int code)
{
  switch (QKeyOf(code)) {
  case QKEY_ENTER:
    CloseList(true);
    break;
  case QKEY_ESC:
    CloseList(false);
    break;
  case QKEY_UP:
    list->SetCursor(list->Cursor() - 1);
    break;
  case QKEY_DOWN:
    list->SetCursor(list->Cursor() + 1);
    break;
  default: {
    const char typed = CharOf(code);
    const auto found = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
      return !name.empty() && typed != 0 && Upper(name.substr(0, 1))[0] == typed;
    });
    if (found != names.end())
      list->SetCursor(static_cast<int>(found - names.begin()));
  }
  }
}
