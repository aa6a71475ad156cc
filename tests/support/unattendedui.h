#pragma once

#include "tools/qtoolui.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Nobody answers: questions get OK, texts stay. Keeps what it is shown and told. Cancels at a poll, counted from 0;
// never for -1.
class UnattendedUi : public QToolUi
{
public:
  explicit UnattendedUi(int cancelledPoll = -1) : cancelAt(cancelledPoll) {}
  std::unique_ptr<QToolProgress> OpenProgress(const char*, const char*) override
  {
    return std::make_unique<Progress>(*this);
  }
  bool Confirm(const char*, const char*) override { return true; }
  void Tell(const char* title, std::string_view text) override
  {
    told += std::string(title) + ": " + std::string(text);
  }
  bool AskText(const char*, const char*, std::string&) override { return true; }
  void ShowFile(const std::string&) override {}

  std::vector<std::string> texts;
  std::string told;
  int polls = 0;

private:
  struct Progress : QToolProgress
  {
    explicit Progress(UnattendedUi& o) : owner(o) {}
    void SetText(std::string_view text) override { owner.texts.emplace_back(text); }
    void SetProgress(int, int) override {}
    bool Poll() override { return owner.polls++ != owner.cancelAt; }
    void Flush() override {}
    UnattendedUi& owner;
  };
  int cancelAt;
};
