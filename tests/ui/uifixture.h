#pragma once

#include "support/reportcapture.h"
#include "ui/qapp.h"
#include "ui/qnulldisplay.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

// An application without a display. Tests push what a person does and let it run.
class UiTest : public testing::Test
{
protected:
  UiTest()
  {
    auto owned = std::make_unique<QNullDisplay>();
    display = owned.get();
    application = std::make_unique<QApp>("test", "Test", std::move(owned));
    application->createFlags |= QApp::NO_BC;
    application->rShell = {0, 0, 800, 600};
    application->SetLeave([this](int status) { exits.push_back(status); });
    EXPECT_TRUE(application->Create());
    application->SetEventProc([this](QEvent* event) {
      events.push_back(*event);
      return false;
    });
    application->RunPoll();
  }
  void Run() { application->RunPoll(); }
  QWindowManager& Manager() { return *application->GetWindowManager(); }
  QShell* Shell() { return application->GetShell(); }
  // Of what no window used.
  int Count(int type, const QWindow* from = nullptr) const
  {
    int n = 0;
    for (const QEvent& event : events)
      n += event.type == type && (!from || event.win == from);
    return n;
  }

  QNullDisplay* display;
  std::unique_ptr<QApp> application;
  std::vector<QEvent> events;
  std::vector<int> exits;
};
