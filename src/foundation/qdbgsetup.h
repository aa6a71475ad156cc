#pragma once

#include <functional>
#include <string>

class QInfo;

// What the settings for developers ask of others; null: nobody is there for it.
struct QDbgServices
{
  std::function<void(const std::string& command)> runCommand; // by the system's shell
  std::function<void(int offset)> addPortOffset;
  std::function<void(int percent)> fakePacketDrops;
};

// Takes over the "dev" tree of the program's settings: where messages go, and what is looked at closely. An address
// that can't be used is reported.
void qdbg_setup(QInfo& info, const QDbgServices& services = {});

// With dev.strict or dev.log_last, and problems seen since the start, the run ends early: true, and the box's title and
// text.
bool QProblemsEndRun(std::string& title, std::string& text);
