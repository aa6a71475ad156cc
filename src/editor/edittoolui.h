#pragma once

#include "tools/qtoolui.h"

class QWindow;

// A tool's dialogs in the editor's window.
class EditToolUi : public QToolUi
{
public:
  // The shell owns the dialogs.
  explicit EditToolUi(QWindow* newShell) : shell(newShell) {}
  std::unique_ptr<QToolProgress> OpenProgress(const char* title, const char* text) override;
  bool Confirm(const char* title, const char* text) override;
  void Tell(const char* title, std::string_view text) override;
  bool AskText(const char* title, const char* prompt, std::string& text) override;
  void ShowFile(const std::string& path) override;

private:
  QWindow* shell;
};
