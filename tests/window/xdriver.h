#pragma once

#include "foundation/qrect.h"

#include <deque>
#include <functional>
#include <string>

class QApp;
class QWindow;

// A person at the X server's keyboard and mouse, for an application that runs in this process in a real window.
// Coordinates are the toolkit's, on the application's window.
class XDriver
{
public:
  // pictures: a directory for screenshots, made when it isn't there.
  XDriver(QApp& running, std::string pictures);
  // Waits until the window has appeared and takes keys; false when it doesn't within some seconds.
  [[nodiscard]] bool WaitForWindow();
  // xdotool's own commands, such as "key ctrl+c". False when it fails.
  bool Do(const std::string& commands);
  void Key(const std::string& name) { Do("key " + name); }
  void Type(const std::string& text); // without quotes in it
  void MoveTo(int x, int y);
  void MoveTo(const QWindow& control); // its middle
  void Click(int x, int y, int times = 1);
  void Click(const QWindow& control, int times = 1);
  void Drag(int x1, int y1, int x2, int y2);
  void Wheel(int notches); // up when positive
  // Runs a command of the shell with WINDOW set to the window's number. False when it fails.
  bool Shell(const std::string& command) const;
  // The application's loop until nothing has happened for a while.
  void Settle();
  // The loop until the condition holds; false when it doesn't within some seconds.
  bool RunUntil(const std::function<bool()>& condition);
  // A step for a dialog whose caller waits for it: done by the loop that the dialog runs, once all is quiet.
  void Then(std::function<void()> step) { steps.push_back(std::move(step)); }
  bool AllStepsDone() const { return steps.empty(); }
  // A screenshot of the whole screen, with all painted.
  void Picture(const std::string& name);

private:
  void Idle();
  QApp& application;
  std::string directory;
  std::string window;
  std::deque<std::function<void()>> steps;
  bool inStep = false;
};
