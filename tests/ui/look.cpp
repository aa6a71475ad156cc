// Shows all controls and dialogs, to be looked at: ui_look [WHAT] [FONT]. WHAT is message, question, long, string,
// narrow, lines, open, save, progress or saving for that dialog, or time for how long painting takes; FONT is the base
// path of a texture font.

#include "platform/qsdldisplay.h"
#include "ui/qapp.h"
#include "ui/qbutton.h"
#include "ui/qcheck.h"
#include "ui/qdlgfile.h"
#include "ui/qedit.h"
#include "ui/qfont.h"
#include "ui/qlabel.h"
#include "ui/qmessagebox.h"
#include "ui/qprogress.h"
#include "ui/qprogressdialog.h"
#include "ui/qradio.h"
#include "ui/qtitlebar.h"

#include <chrono>
#include <cstdio>
#include <epoxy/gl.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Windows = std::vector<std::unique_ptr<QWindow>>;

template <typename T, typename... Args>
T& Add(Windows& windows, Args&&... args)
{
  auto owned = std::make_unique<T>(app->GetShell(), std::forward<Args>(args)...);
  T& control = *owned;
  windows.push_back(std::move(owned));
  return control;
}

// As the editor lays them out, with a view of 880 x 640.
void AddEditorPanels(Windows& windows)
{
  const char* commands[] = {"Select track (Shift-T)", "Reload track (Shift-L)",  "Save track (Shift-S)",
                            "Convert SCGT wrl's",     "(I)mport DOF models",     "Add lighting",
                            "ASE->DOF batch",         "Splitter (Ctrl-Shift-S)", "Cut ASE apart",
                            "Cut Multisub ASE",       "Make track_template.shd", "Auto - Ase To Dof",
                            "Optimize DOFs"};
  int x = 13, y = 682;
  for (int i = 0; i < 13; ++i) {
    Add<QButton>(windows, QRect{x, y, 126, 35}, commands[i]);
    x += 136;
    if (i == 6) {
      x = 13;
      y += 40;
    }
  }
  Add<QCheck>(windows, QRect{x, y, 126, 35}, "Object mode (camera)", true);
  const char* modes[] = {"Positions (F1)",        "Track cameras (F2)", "Track keyframe cameras (F3)",
                         "Model properties (F4)", "Road splines (F5)",  "Ambient sounds (F6)",
                         "Animated objects (F7)", "Traffic (F8)",       "Lidar (F9)",
                         "Marshal posts (F10)"};
  y = 34;
  for (const char* mode : modes) {
    Add<QRadio>(windows, QRect{905, y, 170, 20}, mode, 1000).SetState(y == 34);
    y += 20;
  }
  Add<QLabel>(windows, QRect{905, y + 5, 170, 20}, "Operations");
  const char* operations[] = {"Goto line start (Home)",    "Goto (G)rid pos",
                              "Declare grid pos (Ctrl-G)", "Declare pits pos (Ctrl-P)",
                              "Declare timeline (Ctrl-T)", "Declare pit in",
                              "Declare pit in speedlimit", "Declare pit out speedlimit",
                              "Declare pit out",           "Declare triggerline (Ctrl-R)"};
  for (int i = 0; i < 10; ++i)
    Add<QButton>(windows, QRect{905 + i / 6 * 170, y + 25 + i % 6 * 36, 165, 30}, operations[i]);
}

void AddSamples(Windows& windows)
{
  Add<QButton>(windows, QRect{40, 80, 100, 35}, "Pressed by hand");
  Add<QButton>(windows, QRect{150, 80, 100, 35}, "Disabled").Disable();
  Add<QButton>(windows, QRect{260, 80, 110, 43}, "Default").buttonFlags |= QButton::DEFAULT;
  Add<QButton>(windows, QRect{380, 80, 100, 35}, "Square").buttonFlags |= QButton::SQUARE;
  Add<QButton>(windows, QRect{490, 80, 100, 35}, "No face").buttonFlags |= QButton::NO_FACE;
  int x = 40;
  for (const char* arrow : {"$PLAY", "$REVERSE", "$REWIND", "$FORWARD", "$LEFT", "$RIGHT", "$DOWN"}) {
    Add<QButton>(windows, QRect{x, 130, 30, 30}, arrow);
    x += 36;
  }
  Add<QCheck>(windows, QRect{40, 180, 160, 20}, "A check, off");
  Add<QCheck>(windows, QRect{40, 205, 160, 20}, "A check, on", true);
  Add<QCheck>(windows, QRect{40, 230, 160, 20}, "Disabled", true).Disable();
  Add<QEdit>(windows, QRect{220, 180, 200, 20}, 80u, 0u, "lakeside").SelectAll();
  Add<QEdit>(windows, QRect{220, 215, 200, 20}, 80u, 0u, "A text that is much longer than the field is wide, ÄÖÜ é");
  Add<QEdit>(windows, QRect{220, 250, 200, 90}, 400u, QEdit::MULTILINE + 0u, "Several lines,\none below\nthe other.");
  Add<QLabel>(windows, QRect{440, 180, 150, 20}, "A label at the left");
  Add<QLabel>(windows, QRect{440, 200, 150, 20}, "in the middle", QAlign::CENTER);
  Add<QLabel>(windows, QRect{440, 220, 150, 20}, "at the right", QAlign::RIGHT);
  QProgress& progress = Add<QProgress>(windows, QRect{40, 270, 160, 24});
  progress.SetProgress(40, 100);
  progress.SetText("40%");
}

void ShowDialog(std::string_view which)
{
  std::string text = "lakeside";
  const QRect reload{180, 130, 500, 150}, save{100, 100, 400, 100}, load{100, 100, 400, 150};
  if (which == "message")
    QMessageBox("Save track", "Track saved succesfully.", 1);
  else if (which == "question")
    QMessageBox("Reload track", "Are you sure you want to reload the track?", 0, &reload);
  else if (which == "string")
    QDlgString("Select track", "Enter the track name", text, 80);
  else if (which == "lines")
    QDlgString("Notes", "What is to be done here", text, 400, 5);
  else if (which == "long") {
    std::string many;
    for (int i = 0; i < 60; ++i)
      many += "Line " + std::to_string(i) + " of a message that has more to say than anybody reads.\n";
    QMessageBox("Info", many, 1);
  } else if (which == "narrow") {
    const QRect narrow{10, 10, 200, 150};
    QDlgString("Input index (-1 to remove link)", "", text, 80, 1, &narrow);
  } else if (which == "open" || which == "save")
    QDlgFile(which == "save" ? "Save model" : "Import DOF model...", nullptr, "look", "", nullptr, nullptr);
  else if (which == "progress" || which == "saving") {
    const bool saving = which == "saving";
    QProgressDialog dialog(app->GetShell(), saving ? save : load, saving ? "Saving" : "Loading",
                           saving ? "Saving track definition." : "Loading track shaders & models.", saving);
    dialog.SetProgress(42, 100);
    while (dialog.Poll())
      app->GetDisplay().Sleep(10);
  }
}

// The interface's own work, without waiting for the pixels.
void TimePainting()
{
  constexpr int FRAMES = 200;
  double ms = 0;
  for (int i = 0; i < FRAMES; ++i) {
    const auto start = std::chrono::steady_clock::now();
    app->GetWindowManager()->PaintAll();
    ms += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    glFinish();
  }
  std::printf("%zu windows: %.3f ms a frame\n", app->GetWindowManager()->Windows().size(), ms / FRAMES);
  std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
  QApp application("look", "Pavex look", std::make_unique<QSDLDisplay>());
  application.rShell = {-1, -1, 1280, 800};
  application.createFlags |= QApp::NO_BC | QApp::FRAME;
  if (!application.Create())
    return 1;
  QFont font(argc > 2 ? argv[2] : "", 10, QFont::ROMAN, QFont::NORMAL, QFont::TEXTURE_FONT);
  if (argc > 2 && font.Create())
    app->SetSystemFont(&font);
  Windows windows;
  windows.push_back(std::make_unique<QTitleBar>(app->GetShell(), "Torvik Pavex v7.8.1 - 64 bits - lakeside"));
  AddEditorPanels(windows);
  AddSamples(windows);
  app->GetWindowManager()->SetKeyboardFocus(windows[1].get());
  app->RunPoll();
  if (argc > 1 && std::string_view(argv[1]) == "time")
    TimePainting();
  else if (argc > 1)
    ShowDialog(argv[1]);
  app->SetExitProc([&](int) { windows.clear(); });
  app->Run();
}
