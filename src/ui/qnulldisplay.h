#pragma once

#include "ui/qdisplay.h"
#include "ui/qkeys.h"

#include <deque>
#include <functional>

class QWindow;

// A display that isn't there: no window appears and no context exists. Events are pushed by the caller, who also owns
// the clock, and reads here what a person would see.
class QNullDisplay : public QDisplay
{
public:
  bool Open() override { return canOpen; }
  void Close() override {}
  std::string Name() const override { return "none"; }
  bool CreateWindow(const QDisplayWindow& wanted) override;
  void DestroyWindow() override { exists = false; }
  void SetTitle(std::string_view newTitle) override { title = newTitle; }
  void SetIcon(int, int, std::span<const uint32_t>) override {}
  QRect WindowRect() const override { return window.rect; }
  QRect WorkArea() const override { return workArea; }
  float Scale() const override { return scale; }
  void MoveWindow(int x, int y) override;
  void SizeWindow(int wid, int hgt) override;
  void RaiseWindow() override {}
  void MinimizeWindow() override {}
  bool CreateContext() override { return false; }
  void SelectContext() override {}
  void Swap() override { ++swaps; }
  // Runs the next step when nothing is waiting. A loop that goes on for idleLimit calls with nothing left to do is
  // told to close, so that a forgotten dialog fails a test instead of hanging it.
  bool NextEvent(QEvent& event) override;
  void Pump() override {}
  bool WantsEnd() const override { return wantsEnd; }
  void Sleep(int milliseconds) override { now += milliseconds; }
  int64_t Clock() const override { return now; }
  void ShowPointer(bool) override {}
  void PlacePointer(int x, int y) override;
  void PointerPosition(int& x, int& y) const override;
  void SetPointerShape(QPointerShape newShape) override { shape = newShape; }
  std::string Clipboard() const override { return clipboard; }
  void SetClipboard(std::string_view text) override { clipboard = text; }

  // What a person does. Coordinates are the top-level window's.
  void Push(const QEvent& raw) { raws.push_back(raw); }
  void KeyDown(int key, char32_t text = 0);
  void KeyUp(int key);
  // Down and up, the modifier keys around it. A letter or digit without control and alt also types itself.
  void Key(int code);
  void Type(std::string_view text); // a key press for each character, UTF-8
  void Move(int x, int y);
  void ButtonDown(int button);
  void ButtonUp(int button);
  void Click(int x, int y, int button = 1); // moves there, presses, releases
  void ClickOn(const QWindow& control);     // in its middle
  void Wheel(int delta);
  void CloseWindow();
  void Focus(bool gained); // APPFOCUS
  // Something to do once all that was pushed before is done: the way to work a dialog whose caller waits for it.
  void Then(std::function<void()> step) { ThenWhen(nullptr, std::move(step)); }
  // The same, but not before it is ready, and nothing that was said later either.
  void ThenWhen(std::function<bool()> ready, std::function<void()> step)
  {
    steps.push_back({std::move(ready), std::move(step)});
  }

  // What a person sees.
  std::string title;
  QDisplayWindow window;
  bool exists = false;
  std::string clipboard;
  QPointerShape shape = QPointerShape::ARROW;
  int swaps = 0;

  bool canOpen = true;
  QRect workArea{0, 0, 1280, 1024};
  float scale = 1;
  bool wantsEnd = false;
  int64_t now = 1000;
  int idleLimit = 100000;
  bool ranDry = false; // the idle limit was reached

private:
  std::deque<QEvent> raws;
  struct Step
  {
    std::function<bool()> ready; // empty: always
    std::function<void()> run;
  };
  std::deque<Step> steps;
  int pointerX = 0, pointerY = 0;
  int idle = 0;
};
