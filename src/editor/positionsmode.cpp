#include "editor/positionsmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "editor/editview.h"
#include "foundation/qreport.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <cstdio>
#include <string>

// One row is an operation button, its key and what both do. Key 0: button only.
struct PositionsMode::Command
{
  const char* label;
  int key;
  void (*run)(PositionsMode& mode);
};

const std::array<PositionsMode::Command, 10> PositionsMode::commands = {{
    {"Goto line start (Home)", QKEY_HOME, [](PositionsMode& m) { m.view.GotoPickStart(); }},
    {"Goto (G)rid pos", 'G', [](PositionsMode& m) { m.GotoGridPos(); }},
    {"Declare grid pos (Ctrl-G)", QMOD_CTRL | 'G', [](PositionsMode& m) { m.DeclareGridPos(); }},
    {"Declare pits pos (Ctrl-P)", QMOD_CTRL | 'P', [](PositionsMode& m) { m.DeclarePitPos(); }},
    {"Declare timeline (Ctrl-T)", QMOD_CTRL | 'T', [](PositionsMode& m) { m.DeclareTimeline(); }},
    {"Declare pit in", 0, [](PositionsMode& m) { m.DeclarePitline(0); }},
    {"Declare pit in speedlimit", 0, [](PositionsMode& m) { m.DeclarePitline(1); }},
    {"Declare pit out speedlimit", 0, [](PositionsMode& m) { m.DeclarePitline(2); }},
    {"Declare pit out", 0, [](PositionsMode& m) { m.DeclarePitline(3); }},
    {"Declare triggerline (Ctrl-R)", QMOD_CTRL | 'R', [](PositionsMode& m) { m.DeclareTriggerline(); }},
}};

namespace {

// The prompt offers no more than the array's last but one: the last is reached by the empty answer alone, so that an
// answer can't pass the end.
constexpr int MAX_INDEX = 49;
constexpr int MAX_TRIGGERS = 99;

// Puts the pick line at n; the empty answer, n equal to the count, makes a new record.
void StorePosition(RCarPos* positions, int& count, int n, const EditState& state)
{
  positions[n] = {state.pickStart, state.pickEnd};
  if (n == count)
    ++count;
}

// Replaces line n, or adds it as a new one.
template <typename Lines, typename Line>
void StoreLine(Lines& lines, int n, std::unique_ptr<Line> line)
{
  if (auto* place = lines.At(n))
    *place = std::move(line);
  else if (!lines.Add(std::move(line)))
    QERR("no room for line %d", n);
}

} // namespace

PositionsMode::PositionsMode(EditState& owner, EditHost& asks, EditView& theView) :
    state(owner), host(asks), view(theView)
{}

void PositionsMode::ModeSetup()
{
  std::array<const char*, commands.size()> labels{};
  std::transform(commands.begin(), commands.end(), labels.begin(), [](const Command& c) { return c.label; });
  host.SetOpButtons(labels);
}

bool PositionsMode::ModeKey(int code)
{
  for (const Command& c : commands)
    if (c.key != 0 && c.key == code)
      c.run(*this);
  return false; // never consumed: the global keys run too
}

void PositionsMode::ModeOp(int n)
{
  if (n >= 0 && n < static_cast<int>(commands.size()))
    commands[static_cast<size_t>(n)].run(*this);
}

void PositionsMode::ModePaint(DOverlay& overlay) const
{
  state.curTrack->PaintLines(overlay);
}

void PositionsMode::ModeHud() const
{
  const RTrackVRML& track = *state.curTrack;
  const struct
  {
    const char* text;
    int count;
  } lines[] = {
      {"Grid positions: ", track.gridCount},
      {"Pit positions : ", track.pitCount},
      {"Timelines     : ", track.timeLines.Count()},
      {"Triggerlines  : ", track.triggerLines.Count()},
  };
  for (const auto& line : lines)
    host.HudPrint(line.text + std::to_string(line.count));
}

void PositionsMode::GotoGridPos()
{
  const int n = InputIndex(host, "Select grid position index", std::min(state.curTrack->gridCount, MAX_INDEX), -1);
  if (n < 0)
    return;
  state.camera.SetCameraPos(state.curTrack->GetGridPos(n)->from + DVector3(0, 1, 0));
}

void PositionsMode::DeclareGridPos()
{
  RTrackVRML& track = *state.curTrack;
  const int n = InputIndex(host, "Select grid position index", std::min(track.gridCount, MAX_INDEX), -1);
  if (n >= 0)
    StorePosition(track.gridPos.data(), track.gridCount, n, state);
}

void PositionsMode::DeclarePitPos()
{
  RTrackVRML& track = *state.curTrack;
  const int n = InputIndex(host, "Select pit position index", std::min(track.pitCount, MAX_INDEX), -1);
  if (n >= 0)
    StorePosition(track.pitPos.data(), track.pitCount, n, state);
}

void PositionsMode::DeclareTimeline()
{
  RTrackVRML& track = *state.curTrack;
  const int n = InputIndex(host, "Select timeline index", std::min(track.timeLines.Count(), MAX_INDEX), -1);
  if (n >= 0)
    StoreLine(track.timeLines, n, std::make_unique<RTimeLine>(state.pickStart, state.pickEnd));
}

void PositionsMode::DeclareTriggerline()
{
  auto& lines = state.curTrack->triggerLines;
  if (lines.Count() >= MAX_TRIGGERS) {
    host.Message("Error", "Too many triggers available", true);
    return;
  }
  const int n = InputIndex(host, "Select triggerline index", lines.Count(), -1);
  qlog(QFileNameOf(__FILE__), "DeclareTriggerline", __LINE__, "Result n=%d\n", n);
  if (n < 0)
    return;
  const bool replaces = n < lines.Count();
  std::string command = replaces ? (*lines.At(n))->command : std::string();
  if (!InputText(host, "Triggerline", "Set command", command.c_str(), command))
    return;
  if (command.empty()) {
    host.Message("Error", "Empty trigger not allowed", true);
    return;
  }
  auto line = std::make_unique<RTriggerLine>();
  line->SetPoints(state.pickStart, state.pickEnd);
  line->index = replaces ? lines.Count() : lines.Count() + 1; // the count, of a replaced line too
  line->command = command;
  StoreLine(lines, n, std::move(line));
}

void PositionsMode::DeclarePitline(int k)
{
  // Plane and length stay: the next load works them out from the saved points.
  RTimeLine& line = state.curTrack->pitInOutLines[static_cast<size_t>(k)];
  line.from = state.pickStart;
  line.to = state.pickEnd;
}
