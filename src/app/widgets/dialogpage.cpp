#include "app/widgets/widgets.h"
#include "ui/qdlgfile.h"
#include "ui/qgroup.h"
#include "ui/qmessagebox.h"
#include "ui/qprogressdialog.h"

namespace {

std::string Answer(int result)
{
  return result == 1 ? "OK" : "Cancel";
}

void ShowProgress(Widgets& widgets, bool cancellable)
{
  QProgressDialog dialog(app->GetShell(), {100, 100, 400, cancellable ? 150 : 100}, cancellable ? "Loading" : "Saving",
                         cancellable ? "Loading track shaders & models." : "Saving track definition.",
                         cancellable ? 0u : static_cast<uint32_t>(QProgressDialog::NO_CANCEL));
  const int64_t start = app->GetDisplay().Clock();
  constexpr int64_t LENGTH = 5000; // milliseconds
  bool goesOn = true;
  while (goesOn && app->GetDisplay().Clock() - start < LENGTH) {
    dialog.SetProgress(static_cast<int>(app->GetDisplay().Clock() - start), LENGTH);
    goesOn = dialog.Poll();
    app->PaintIfWanted();
    app->GetDisplay().Sleep(10);
  }
  widgets.Tell(goesOn ? "The progress dialog came to its end" : "The progress dialog was cancelled");
}

void AskForText(Widgets& widgets, const char* title, const char* prompt, int maxLen, int lines)
{
  std::string text = "lakeside";
  const int result = QDlgString(title, prompt, text, maxLen, lines);
  widgets.Tell("The string dialog answered " + Answer(result) + ", '" + text + "'");
}

void AskForFile(Widgets& widgets, const char* title, bool several)
{
  std::string name;
  QSplit list;
  const bool chosen = QDlgFile(title, nullptr, "widgets", "data", &name, nullptr, several ? &list : nullptr);
  widgets.Tell(chosen ? "The file dialog answered '" + name + "'" : "The file dialog was cancelled");
}

} // namespace

void FillDialogPage(Widgets& widgets, QTabPage& page)
{
  const auto add = [&](int column, int row, const char* caption, std::function<void()> action) {
    widgets.OnClick(page.Add<QButton>(QRect{40 + column * 180, 50 + row * 45, 165, 35}, caption), std::move(action));
  };
  page.Add<QGroup>(QRect{20, 20, 920, 190}, "Dialogs");
  add(0, 0, "Message...", [&] {
    QMessageBox("Save track", "Track saved succesfully.", 1);
    widgets.Tell("The message was read");
  });
  add(0, 1, "Question...", [&] {
    const int result = QMessageBox("Reload track", "Are you sure you want to reload the track?");
    widgets.Tell("The question was answered by " + Answer(result));
  });
  add(0, 2, "Long message...", [&] {
    QMessageBox(
        "Import",
        "The model '/home/somebody/tracks/lakeside/a_directory_with_a_long_name/stands_of_the_main_straight.dof' "
        "uses 3 materials that no shader file of the track defines. They are drawn without a shader.",
        1);
    widgets.Tell("The message was read");
  });
  add(1, 0, "Text...", [&] { AskForText(widgets, "Select track", "Enter the track name", 80, 1); });
  add(1, 1, "Lines of text...", [&] { AskForText(widgets, "Notes", "What is to be done here?", 400, 5); });
  add(1, 2, "Open files...", [&] { AskForFile(widgets, "Import models", true); });
  add(2, 2, "Save file...", [&] { AskForFile(widgets, "Save model", false); });
  add(2, 0, "Progress with Cancel...", [&] { ShowProgress(widgets, true); });
  add(2, 1, "Progress...", [&] { ShowProgress(widgets, false); });
  add(3, 0, "Choose a file...", [&] { AskForFile(widgets, "Import a model", false); });
  add(3, 1, "Choose several files...", [&] { AskForFile(widgets, "Convert models", true); });
  add(3, 2, "Save a file...", [&] { AskForFile(widgets, "Export the model", false); });
}
