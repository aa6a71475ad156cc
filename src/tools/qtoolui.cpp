#include "tools/qtoolui.h"

QToolProgress::~QToolProgress() = default;
QToolUi::~QToolUi() = default;

int QToolUi::WorkOnFiles(std::span<const std::string> files, QToolProgress& progress,
                         const std::function<bool(const std::string& file)>& work)
{
  int done = 0;
  int failed = 0;
  for (const std::string& file : files) {
    progress.SetText(file);
    progress.SetProgress(done++, static_cast<int>(files.size()));
    failed += work(file) ? 0 : 1;
    if (!progress.Poll())
      break;
  }
  return failed;
}
