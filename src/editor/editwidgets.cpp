#include "editor/editwidgets.h"

#include "ui/qbutton.h"
#include "ui/qcheck.h"
#include "ui/qlabel.h"
#include "ui/qradio.h"

#include <algorithm>

const std::array<const char*, EditWidgets::COMMANDS> EditWidgets::commandLabels = {
    "Select track (Shift-T)", "Reload track (Shift-L)", "Save track (Shift-S)",    "Convert SCGT wrl's",
    "(I)mport DOF models",    "Add lighting",           "ASE->DOF batch",          "Splitter (Ctrl-Shift-S)",
    "Cut ASE apart",          "Cut Multisub ASE",       "Make track_template.shd", "Auto - Ase To Dof",
    "Optimize DOFs",
};

const std::array<const char*, EditWidgets::MODES> EditWidgets::modeLabels = {
    "Positions (F1)",    "Track cameras (F2)",  "Track keyframe cameras (F3)", "Model properties (F4)",
    "Road splines (F5)", "Ambient sounds (F6)", "Animated objects (F7)",       "Traffic (F8)",
    "Lidar (F9)",        "Marshal posts (F10)",
};

namespace {

constexpr int COMMAND_WIDTH = 126;
constexpr int COMMAND_HEIGHT = 35;
constexpr int COMMAND_STEP = 136;
constexpr int COMMAND_ROW = 40;
constexpr int COMMANDS_A_ROW = 7;
constexpr int MODE_WIDTH = 170;
constexpr int MODE_HEIGHT = 20;
constexpr int MODE_GROUP = 1000;
constexpr int OPERATION_WIDTH = 165;
constexpr int OPERATION_HEIGHT = 30;
constexpr int OPERATION_STEP = 36;
constexpr int OPERATIONS_A_COLUMN = 6;
constexpr int MODE_CHECK_WIDTH = 100;
constexpr int MODE_CHECK_HEIGHT = 25;

// The place of a command button; the check box stands behind the last.
QRect CommandRect(const QRect& view, int i)
{
  return {view.x - 2 + i % COMMANDS_A_ROW * COMMAND_STEP, view.y + view.hgt + 10 + i / COMMANDS_A_ROW * COMMAND_ROW,
          COMMAND_WIDTH, COMMAND_HEIGHT};
}

template <typename Row>
int IndexIn(const Row& row, const QWindow* w)
{
  const auto found = std::find_if(row.begin(), row.end(), [&](const auto& control) { return control.get() == w; });
  return w && found != row.end() ? static_cast<int>(found - row.begin()) : -1;
}

} // namespace

EditWidgets::EditWidgets(QWindow& shell, const QRect& view)
{
  for (int i = 0; i < COMMANDS; ++i)
    commands[static_cast<size_t>(i)] =
        std::make_unique<QButton>(&shell, CommandRect(view, i), commandLabels[static_cast<size_t>(i)]);
  objectCheck = std::make_unique<QCheck>(&shell, CommandRect(view, COMMANDS), "Object mode (camera)");

  const int x = view.x + view.wid + 10;
  int y = view.y + 2;
  for (size_t i = 0; i < MODES; ++i, y += MODE_HEIGHT)
    modes[i] = std::make_unique<QRadio>(&shell, QRect{x, y, MODE_WIDTH, MODE_HEIGHT}, modeLabels[i], MODE_GROUP);
  modes[0]->SetState(true);
  y += 5;
  operationsLabel = std::make_unique<QLabel>(&shell, QRect{x, y, MODE_WIDTH, MODE_HEIGHT}, "Operations");
  y += MODE_HEIGHT;
  for (int i = 0; i < OPERATIONS; ++i) {
    const QRect rect{x + i / OPERATIONS_A_COLUMN * MODE_WIDTH, y + i % OPERATIONS_A_COLUMN * OPERATION_STEP,
                     OPERATION_WIDTH, OPERATION_HEIGHT};
    operations[static_cast<size_t>(i)] = std::make_unique<QButton>(&shell, rect, "--op--");
  }
  y += OPERATIONS_A_COLUMN * OPERATION_STEP;
  modeCheck = std::make_unique<QCheck>(&shell, QRect{x, y, MODE_CHECK_WIDTH, MODE_CHECK_HEIGHT}, "");
  HideModeCheck();
}

EditWidgets::~EditWidgets() = default;

int EditWidgets::CommandOf(const QWindow* w) const
{
  return IndexIn(commands, w);
}

int EditWidgets::ModeOf(const QWindow* w) const
{
  return IndexIn(modes, w);
}

int EditWidgets::OperationOf(const QWindow* w) const
{
  return IndexIn(operations, w);
}

bool EditWidgets::IsObjectCheck(const QWindow* w) const
{
  return w == objectCheck.get();
}

void EditWidgets::SetOpButtons(std::span<const char* const> labels)
{
  for (size_t i = 0; i < operations.size(); ++i) {
    if (i < labels.size()) {
      operations[i]->SetText(labels[i]);
      operations[i]->Show();
    } else {
      operations[i]->Hide();
    }
  }
}

void EditWidgets::MarkMode(int n)
{
  for (int i = 0; i < MODES; ++i)
    modes[static_cast<size_t>(i)]->SetState(i == n);
}

void EditWidgets::SetObjectCheck(bool on)
{
  objectCheck->SetState(on);
}

bool EditWidgets::ObjectCheck() const
{
  return objectCheck->GetState();
}

void EditWidgets::ShowModeCheck(const char* label, bool on)
{
  modeCheck->SetText(label);
  modeCheck->SetState(on);
  modeCheck->Show();
}

void EditWidgets::HideModeCheck()
{
  modeCheck->Hide();
}

bool EditWidgets::ModeCheck() const
{
  return modeCheck->GetState();
}

QRect EditWidgets::Command0() const
{
  return commands[0]->rect;
}

QRect EditWidgets::Mode0() const
{
  return modes[0]->rect;
}
