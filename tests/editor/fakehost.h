#pragma once

#include "editor/edithost.h"

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
  std::vector<std::string> messages;
  std::vector<std::string> hud;
  std::vector<std::string> buttons;

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
  bool AskText(const char* title, const char* prompt, std::string& text, int, const QRect*) override
  {
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

private:
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
