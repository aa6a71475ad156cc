#include "editor/edittoolui.h"

#include "foundation/qfilename.h"
#include "ui/qmessagebox.h"
#include "ui/qprogressdialog.h"

namespace {

constexpr QRect PROGRESS_AREA{100, 100, 400, 150};
constexpr QRect QUESTION_AREA{100, 100, 400, 160};
constexpr QRect TEXT_AREA{100, 100, 400, 200};
constexpr int TEXT_LENGTH = 256;

class DialogProgress : public QToolProgress
{
public:
  DialogProgress(QWindow* shell, const char* title, const char* text, const std::function<void()>& paint) :
      dialog(shell, PROGRESS_AREA, title, text)
  {
    dialog.SetCallback(paint);
    paint();
    Poll();
  }
  void SetText(std::string_view text) override { dialog.SetText(text); }
  void SetProgress(int done, int total) override { dialog.SetProgress(done, total); }
  bool Poll() override { return dialog.Poll(); }
  void Flush() override { dialog.Poll(); }

private:
  QProgressDialog dialog;
};

} // namespace

std::unique_ptr<QToolProgress> EditToolUi::OpenProgress(const char* title, const char* text)
{
  keepFrame();
  return std::make_unique<DialogProgress>(shell, title, text, paintKept);
}

bool EditToolUi::Confirm(const char* title, const char* text)
{
  return QMessageBox(title, text, 0, &QUESTION_AREA) == 1;
}

void EditToolUi::Tell(const char* title, std::string_view text)
{
  QMessageBox(title, text, 1, &QUESTION_AREA);
}

bool EditToolUi::AskText(const char* title, const char* prompt, std::string& text)
{
  return QDlgString(title, prompt, text, TEXT_LENGTH, 1, &TEXT_AREA) == 1;
}

void EditToolUi::ShowFile(const std::string& path)
{
  static_cast<void>(QNotePad(path));
}
