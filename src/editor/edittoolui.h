#pragma once

#include "tools/qtoolui.h"

class QWindow;

// A tool's dialogs in the editor's window.
class EditToolUi : public QToolUi
{
public:
  // The shell owns the dialogs. keep notes what the window shows, before a tool starts; paint shows that again, with
  // the open dialog, while it is at work.
  EditToolUi(QWindow* newShell, std::function<void()> keep, std::function<void()> paint) :
      shell(newShell), keepFrame(std::move(keep)), paintKept(std::move(paint))
  {}
  std::unique_ptr<QToolProgress> OpenProgress(const char* title, const char* text) override;
  bool Confirm(const char* title, const char* text) override;
  void Tell(const char* title, std::string_view text) override;
  bool AskText(const char* title, const char* prompt, std::string& text) override;
  void ShowFile(const std::string& path) override;

private:
  QWindow* shell;
  std::function<void()> keepFrame, paintKept;
};
