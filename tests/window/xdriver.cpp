#include "window/xdriver.h"

#include "ui/qapp.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

} // namespace

XDriver::XDriver(QApp& running, std::string pictures) : application(running), directory(std::move(pictures))
{
  std::filesystem::create_directories(directory);
  application.SetIdleProc([this] { Idle(); });
}

void XDriver::Idle()
{
  application.PaintIfWanted();
  if (inStep || steps.empty()) {
    application.GetDisplay().Sleep(5);
    return;
  }
  const auto step = std::move(steps.front());
  steps.pop_front();
  inStep = true;
  step();
  inStep = false;
}

bool XDriver::Shell(const std::string& command) const
{
  return std::system(("WINDOW=" + window + "; " + command).c_str()) == 0;
}

bool XDriver::WaitForWindow()
{
  const std::string file = directory + "/window";
  const std::string name = "xdotool search --onlyvisible --name '^" + application.GetTitle() + "$' > " + file;
  for (int i = 0; i < 100 && window.empty(); ++i) {
    Settle();
    if (!Shell(name + " 2>/dev/null"))
      continue;
    if (std::FILE* f = std::fopen(file.c_str(), "r")) {
      char number[32] = {};
      if (std::fscanf(f, "%31[0-9]", number) == 1)
        window = number;
      std::fclose(f);
    }
  }
  std::filesystem::remove(file);
  if (window.empty())
    return false;
  // One that became active meanwhile would be waited for in vain.
  Shell("timeout 5 xdotool windowactivate --sync " + window);
  Settle();
  return true;
}

bool XDriver::Do(const std::string& commands)
{
  const bool done = Shell("xdotool " + commands);
  Settle();
  return done;
}

void XDriver::Type(const std::string& text)
{
  Do("type --delay 5 '" + text + "'");
}

void XDriver::MoveTo(int x, int y)
{
  const auto device = [&](int at) {
    return std::to_string(std::lround(static_cast<float>(at) * application.GetDisplay().Scale()));
  };
  Do("mousemove --window " + window + " " + device(x) + " " + device(y));
}

void XDriver::MoveTo(const QWindow& control)
{
  const QRect r = control.RootRect();
  MoveTo(r.x + r.wid / 2, r.y + r.hgt / 2);
}

void XDriver::Click(int x, int y, int times)
{
  MoveTo(x, y);
  Do("click --repeat " + std::to_string(times) + " --delay 40 1");
}

void XDriver::Click(const QWindow& control, int times)
{
  const QRect r = control.RootRect();
  Click(r.x + r.wid / 2, r.y + r.hgt / 2, times);
}

void XDriver::Drag(int x1, int y1, int x2, int y2)
{
  MoveTo(x1, y1);
  Do("mousedown 1");
  MoveTo((x1 + x2) / 2, (y1 + y2) / 2);
  MoveTo(x2, y2);
  Do("mouseup 1");
}

void XDriver::Wheel(int notches)
{
  Do("click --repeat " + std::to_string(std::abs(notches)) + " --delay 10 " + (notches > 0 ? "4" : "5"));
}

void XDriver::Settle()
{
  for (auto quietSince = Clock::now(); Clock::now() - quietSince < 60ms && !application.hasExited;)
    if (application.Run1() != 2)
      quietSince = Clock::now();
}

bool XDriver::RunUntil(const std::function<bool()>& condition)
{
  for (const auto start = Clock::now(); !condition();) {
    if (Clock::now() - start > 5s)
      return false;
    application.Run1();
  }
  return true;
}

void XDriver::Picture(const std::string& name)
{
  application.GetWindowManager()->RequestPaint();
  Settle();
  application.GetWindowManager()->RequestPaint();
  Settle();
  std::this_thread::sleep_for(100ms);
  Shell("import -window root '" + directory + "/" + name + ".png'");
}
