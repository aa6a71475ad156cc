#pragma once

#include "editor/edithost.h"
#include "ui/qevent.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <string>
#include <vector>

// Stands in for the shell: keeps what it was told and gives prepared answers; out of answers it cancels.
class FakeHost : public EditHost
{
public:
  static constexpr const char* CANCEL = "\x1b";
  std::deque<std::string> answers; // of AskText and AskFile; CANCEL cancels
  std::deque<int> choices;         // of Message
  std::vector<std::string> prompts;
  std::vector<std::string> filled; // what the fields held before
  QRect area;                      // of the last prompt; empty: the dialog's own
  std::vector<std::string> messages;
  std::vector<std::string> hud;
  std::vector<std::string> buttons;
  std::vector<std::string> listItems; // of the list that is open
  int listCursor = -1;
  std::string checkLabel;
  bool check = false;
  bool colored = false;
  std::vector<int> posted;

  void SetOpButtons(std::span<const char* const> labels) override { buttons.assign(labels.begin(), labels.end()); }
  void HudPrint(std::string_view text) override { hud.emplace_back(text); }
  int Message(const char* title, const char* text, bool okOnly, const QRect*, const char*, const char*) override
  {
    messages.push_back(std::string(title) + ": " + text + (okOnly ? " [OK]" : ""));
    const int choice = choices.empty() ? 0 : choices.front();
    if (!choices.empty())
      choices.pop_front();
    return choice;
  }
  bool AskText(const char* title, const char* prompt, std::string& text, int, const QRect* rect) override
  {
    area = rect ? *rect : QRect();
    prompts.push_back(std::string(title) + ": " + prompt);
    filled.push_back(text);
    return Answer(text);
  }
  bool AskFile(const char* title, const char* key, std::string& path) override
  {
    prompts.push_back(std::string(title) + ": " + key);
    return Answer(path);
  }
  int64_t Clock() const override { return now; }
  void ShowFrame() override
  {
    now += frameTime;
    if (onFrame)
      onFrame();
  }
  void Pause(int milliseconds) override { now += milliseconds; }
  void DropPresses() override { ++presses; }
  int64_t now = 1000;
  int frameTime = 100;           // milliseconds that a picture takes
  std::function<void()> onFrame; // looks at each picture
  int presses = 0;               // how often they were dropped

  std::unique_ptr<EditList> OpenList(const char* title, std::span<const std::string> items) override
  {
    prompts.push_back(title);
    return std::make_unique<FakeList>(*this, items);
  }
  void ShowModeCheck(const char* label, bool on) override
  {
    checkLabel = label;
    check = on;
  }
  bool ModeCheck() const override { return check; }
  void PostKey(int code) override { posted.push_back(code); }
  void ColorByFlags(bool on) override { colored = on; }

private:
  // Its button "n" is clicked by an event with that number, 1 for OK and 2 for Cancel.
  class FakeList : public EditList
  {
  public:
    FakeList(FakeHost& owner, std::span<const std::string> items) : host(owner)
    {
      host.listItems.assign(items.begin(), items.end());
      host.listCursor = -1;
    }
    ~FakeList() override { host.listItems.clear(); }
    int Cursor() const override { return host.listCursor; }
    void SetCursor(int i) override { host.listCursor = std::clamp(i, 0, static_cast<int>(host.listItems.size()) - 1); }
    EditList::Answer AnswerTo(const QEvent& event) override { return static_cast<EditList::Answer>(event.n); }

  private:
    FakeHost& host;
  };
  bool Answer(std::string& text)
  {
    if (answers.empty())
      return false;
    const std::string answer = answers.front();
    answers.pop_front();
    if (answer == CANCEL)
      return false;
    text = answer;
    return true;
  }
};
