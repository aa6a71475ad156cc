#include "app/tool/toolui.h"

#include "app/tool/tool.h"

#include <cstdio>

namespace {

class Bar : public QToolProgress
{
public:
  explicit Bar(const char* title) : what(title) {}
  ~Bar() override { ToolProgress(what.c_str(), 1); }
  void SetText(std::string_view) override {}
  void SetProgress(int newDone, int newTotal) override
  {
    done = newDone;
    total = newTotal;
  }
  bool Poll() override
  {
    Flush();
    return true;
  }
  void Flush() override
  {
    if (done < total)
      ToolProgress(what.c_str(), static_cast<float>(done) / static_cast<float>(total));
  }

private:
  std::string what;
  int done = 0;
  int total = 0;
};

} // namespace

std::unique_ptr<QToolProgress> ToolUi::OpenProgress(const char* title, const char*)
{
  return std::make_unique<Bar>(title);
}

bool ToolUi::Confirm(const char*, const char*)
{
  return true;
}

void ToolUi::Tell(const char* title, std::string_view text)
{
  std::fprintf(stderr, "%s: %.*s\n", title, static_cast<int>(text.size()), text.data());
}

bool ToolUi::AskText(const char*, const char*, std::string&)
{
  return true;
}

void ToolUi::ShowFile(const std::string&)
{}
