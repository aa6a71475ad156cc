#pragma once

#include "tools/qtoolui.h"

// Runs a tool unattended: all is agreed to, what it tells goes to stderr, and long work shows a bar there.
class ToolUi : public QToolUi
{
public:
  std::unique_ptr<QToolProgress> OpenProgress(const char* title, const char* text) override;
  bool Confirm(const char* title, const char* text) override;
  void Tell(const char* title, std::string_view text) override;
  bool AskText(const char* title, const char* prompt, std::string& text) override;
  void ShowFile(const std::string& path) override;
  // As many at once as there are cores, each in a process of its own; what they say comes in the order of the files.
  int WorkOnFiles(std::span<const std::string> files, QToolProgress& progress,
                  const std::function<bool(const std::string& file)>& work) override;
};
