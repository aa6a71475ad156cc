#include "editor/trafficmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

// One row is an operation button, its key and what both do. Key 0: button only.
struct TrafficMode::Command
{
  const char* label;
  int key;
  void (*run)(TrafficMode& mode);
};

const std::array<TrafficMode::Command, 12> TrafficMode::commands = {{
    {"Velocity (^V)", QMOD_CTRL | 'V', [](TrafficMode& m) { m.SetVelocity(); }},
    {"Start new line w/ selection (^N)", QMOD_CTRL | 'N', [](TrafficMode& m) { m.AddUnlinked(); }},
    {"Add forward waypoint (^A)", QMOD_CTRL | 'A', [](TrafficMode& m) { m.AddLinked(RTrafficWayPoint::FORWARD); }},
    {"Add leftward waypoint", 0, [](TrafficMode& m) { m.AddLinked(RTrafficWayPoint::LEFT); }},
    {"Add rightward waypoint", 0, [](TrafficMode& m) { m.AddLinked(RTrafficWayPoint::RIGHT); }},
    {"Move selected waypoint (^M)", QMOD_CTRL | 'M', [](TrafficMode& m) { m.MoveSelected(); }},
    {"Remove selected waypoint (^R)", QMOD_CTRL | 'R', [](TrafficMode& m) { m.RemoveSelected(); }},
    {"Select waypoint (^S)", QMOD_CTRL | 'S', [](TrafficMode& m) { m.SelectByIndex(); }},
    {"Set forward waypoint", 0, [](TrafficMode& m) { m.SetLink(RTrafficWayPoint::FORWARD); }},
    {"Set leftward waypoint", 0, [](TrafficMode& m) { m.SetLink(RTrafficWayPoint::LEFT); }},
    {"Set rightward waypoint", 0, [](TrafficMode& m) { m.SetLink(RTrafficWayPoint::RIGHT); }},
    {"Set default velocity", 0, [](TrafficMode& m) { m.SetDefaultVelocity(); }},
}};

namespace {

constexpr int ANSWER_LENGTH = 256;
constexpr QRect INDEX_RECT{10, 10, 200, 150};
constexpr QRect VELOCITY_RECT{10, 10, 250, 150};
constexpr const char* NONE_SELECTED = "No waypoint selected";

void Fail(EditHost& host, const char* text)
{
  host.Message("Error", text, true);
}

// Digits alone, or "-1". An expression isn't a number here.
bool IsIndex(const std::string& answer, int& index)
{
  const bool digits = !answer.empty() && answer.find_first_not_of("0123456789") == std::string::npos;
  const char* end = answer.data() + answer.size();
  return (digits || answer == "-1") && std::from_chars(answer.data(), end, index).ec == std::errc();
}

// A finite number and nothing else, without a minus sign.
bool IsVelocity(const std::string& answer, float& velocity)
{
  double value = 0;
  const char* end = answer.data() + answer.size();
  const auto read = std::from_chars(answer.data(), end, value);
  if (answer.starts_with("-") || read.ec != std::errc() || read.ptr != end)
    return false;
  velocity = static_cast<float>(value);
  return std::isfinite(velocity);
}

} // namespace

TrafficMode::TrafficMode(EditState& owner, EditHost& asks) : state(owner), host(asks)
{}

void TrafficMode::ModeSetup()
{
  std::array<const char*, commands.size()> labels{};
  std::transform(commands.begin(), commands.end(), labels.begin(), [](const Command& c) { return c.label; });
  host.SetOpButtons(labels);
  selected = -1;
}

bool TrafficMode::ModeKey(int code)
{
  if (code == QKEY_PGUP)
    SelectPrevious();
  else if (code == QKEY_PGDN)
    SelectNext();
  else if (const auto c = std::find_if(commands.begin(), commands.end(),
                                       [=](const Command& row) { return row.key != 0 && row.key == code; });
           c != commands.end())
    c->run(*this);
  else
    return false;
  return true; // Ctrl-V would hide the text besides
}

void TrafficMode::ModeOp(int n)
{
  if (n >= 0 && n < static_cast<int>(commands.size()))
    commands[static_cast<size_t>(n)].run(*this);
}

void TrafficMode::ModePaint(DOverlay& overlay) const
{
  state.curTrack->trafficGrid.selected = selected;
  state.curTrack->trafficGrid.Paint(overlay);
}

void TrafficMode::ModeHud() const
{
  host.HudPrint("Waypoints: " + std::to_string(state.curTrack->trafficGrid.wayPoints.Count()));
  host.HudPrint("Selected waypoint: " + (selected == -1 ? "none" : std::to_string(selected)));
}

RTrafficWayPoint* TrafficMode::SelectedWayPoint() const
{
  return state.curTrack->trafficGrid.wayPoints.At(selected);
}

bool TrafficMode::NewWayPoint(int& index)
{
  RTrafficGrid& grid = state.curTrack->trafficGrid;
  RTrafficWayPoint* w = grid.Add();
  if (!w) {
    Fail(host, "Too many waypoints");
    return false;
  }
  w->pos = state.pickStart;
  w->velocity = defaultVelocity;
  index = grid.wayPoints.Count() - 1;
  return true;
}

void TrafficMode::AddUnlinked()
{
  NewWayPoint(selected);
}

void TrafficMode::AddLinked(int direction)
{
  // Before the new one stands: a number just past the end must not come to mean it.
  const bool hasFrom = SelectedWayPoint() != nullptr;
  int index = -1;
  if (!NewWayPoint(index))
    return;
  if (hasFrom)
    SelectedWayPoint()->links[static_cast<size_t>(direction)] = index;
  selected = index;
}

void TrafficMode::MoveSelected()
{
  if (RTrafficWayPoint* w = SelectedWayPoint())
    w->pos = state.pickStart;
  else
    Fail(host, NONE_SELECTED);
}

void TrafficMode::RemoveSelected()
{
  if (selected == -1)
    Fail(host, NONE_SELECTED);
  else if (!state.curTrack->trafficGrid.Remove(selected))
    host.Message("Error", "Failed to remove waypoint.");
}

void TrafficMode::SelectNext()
{
  if (const RTrafficWayPoint* w = SelectedWayPoint())
    selected = w->links[RTrafficWayPoint::FORWARD];
  else
    selected = state.curTrack->trafficGrid.wayPoints.Count() > 0 ? 0 : -1;
}

void TrafficMode::SelectPrevious()
{
  const auto& wayPoints = state.curTrack->trafficGrid.wayPoints;
  const auto from = std::find_if(wayPoints.begin(), wayPoints.end(), [this](const RTrafficWayPoint& w) {
    return w.links[RTrafficWayPoint::FORWARD] == selected;
  });
  if (from != wayPoints.end())
    selected = static_cast<int>(from - wayPoints.begin());
  else if (--selected < 0)
    selected = wayPoints.Count() - 1;
}

void TrafficMode::SelectByIndex()
{
  int index = 0;
  if (AskIndex(false, index))
    selected = index;
}

bool TrafficMode::AskIndex(bool removes, int& index)
{
  std::string answer;
  const char* title = removes ? "Input index (-1 to remove link)" : "Input index";
  if (!host.AskText(title, "", answer, ANSWER_LENGTH, &INDEX_RECT))
    return false;
  if (IsIndex(answer, index) && index >= (removes ? -1 : 0) && index < state.curTrack->trafficGrid.wayPoints.Count())
    return true;
  Fail(host, "Invalid index");
  return false;
}

void TrafficMode::SetLink(int direction)
{
  int index = -1;
  if (!AskIndex(true, index))
    return;
  RTrafficWayPoint* w = SelectedWayPoint();
  if (!w) {
    AddUnlinked();
    return;
  }
  if (index >= 0 && std::find(w->links.begin(), w->links.end(), index) != w->links.end()) {
    Fail(host, "Already linked to this waypoint.");
    return;
  }
  w->links[static_cast<size_t>(direction)] = index;
  if (index >= 0)
    selected = index; // the next link starts where this one ends
}

bool TrafficMode::AskVelocity(const char* prompt, const char* text, float& velocity)
{
  std::string answer = text;
  if (!host.AskText("Input velocity", prompt, answer, ANSWER_LENGTH, &VELOCITY_RECT))
    return false;
  if (float value = 0; IsVelocity(answer, value)) {
    velocity = value;
    return true;
  }
  Fail(host, "Invalid value");
  return false;
}

void TrafficMode::SetVelocity()
{
  if (RTrafficWayPoint* w = SelectedWayPoint())
    AskVelocity("", "", w->velocity);
  else
    Fail(host, NONE_SELECTED);
}

void TrafficMode::SetDefaultVelocity()
{
  const std::string current = std::to_string(defaultVelocity);
  AskVelocity(("Current: " + current + "m/s").c_str(), current.c_str(), defaultVelocity);
}
