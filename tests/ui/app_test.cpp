#include "ui/qbutton.h"
#include "ui/uifixture.h"

#include "geometry/dglobal.h"

namespace {

std::vector<int> calls;

template <int N, bool USES>
bool Handler(QEvent*)
{
  calls.push_back(N);
  return USES;
}

TEST_F(UiTest, RunsAnEventPastEachStationUntilOneUsesIt)
{
  QButton button(Shell(), {0, 0, 50, 20}, "b");
  button.SetShortcut('B');
  int idles = 0;
  application->SetIdleProc([&] { ++idles; });
  EXPECT_EQ(2, application->Run1());
  EXPECT_EQ(1, idles);

  calls.clear();
  const QApp::KeyboardHandler first = Handler<1, false>, second = Handler<2, true>, third = Handler<3, false>;
  application->AddKeyboardHandler(first);
  application->AddKeyboardHandler(second);
  application->AddKeyboardHandler(third);
  events.clear();
  display->KeyDown('B');
  EXPECT_EQ(1, application->Run1());
  EXPECT_EQ((std::vector{1, 2}), calls); // the second used it
  EXPECT_EQ(0, Count(QEvent::CLICK));
  EXPECT_TRUE(application->RemoveKeyboardHandler(second));
  display->KeyDown('B');
  Run();
  EXPECT_EQ((std::vector{1, 2, 1, 3}), calls);
  EXPECT_EQ(1, Count(QEvent::CLICK, &button));
  EXPECT_EQ(0, Count(QEvent::KEYPRESS)); // the button used the key
  EXPECT_EQ(1, idles);                   // RunPoll never idles
}

TEST_F(UiTest, RefusesASixthKeyboardHandlerAndAnUnknownOne)
{
  const QApp::KeyboardHandler handlers[] = {Handler<1, false>, Handler<2, false>, Handler<3, false>,
                                            Handler<4, false>, Handler<5, false>, Handler<6, false>};
  ReportCapture reports;
  int taken = 0;
  for (const auto handler : handlers)
    taken += application->AddKeyboardHandler(handler);
  EXPECT_EQ(5, taken);
  EXPECT_EQ(1, reports.Count("QApp::AddKeyboardHandler(); out of handlers"));
  EXPECT_FALSE(application->RemoveKeyboardHandler(handlers[5]));
  EXPECT_EQ(1, reports.Count("QApp::RemoveKeyboardHandler(); can't find handler"));
}

TEST_F(UiTest, ClosingTheWindowExitsOnceFromInsideAHandlerToo)
{
  std::vector<std::string> order;
  ReportCapture reports;
  application->SetExitProc([&](int status) { order.push_back("exit " + std::to_string(status)); });
  application->AddCleanupProc([&] {
    order.push_back("cleanup");
    application->Exit(9); // must not start over
  });
  application->SetEventProc([&](QEvent* event) {
    if (event->type == QEvent::KEYPRESS)
      application->Exit(3);
    return false;
  });
  display->Key('Q');
  display->CloseWindow();
  application->Run(); // ends
  EXPECT_EQ((std::vector<std::string>{"exit 3", "cleanup"}), order);
  EXPECT_EQ((std::vector{3}), exits);
}

TEST_F(UiTest, ACloseThatNobodyUsesLeavesWithStatusZero)
{
  display->CloseWindow();
  application->Run();
  EXPECT_EQ((std::vector{0}), exits);
}

TEST_F(UiTest, AMissingDisplayEndsTheProgram)
{
  application.reset();
  EXPECT_EXIT(
      {
        auto none = std::make_unique<QNullDisplay>();
        none->canOpen = false;
        QApp other("test", "", std::move(none));
      },
      testing::ExitedWithCode(0), "Can't open X11 display \\(none\\)");
}

TEST_F(UiTest, WithoutADisplayNothingIsDrawnAndAllIsThere)
{
  EXPECT_FALSE(DGlobals().hasContext);
  EXPECT_EQ("Test", display->title);
  application->SetTitle("Torvik Pavex");
  EXPECT_EQ("Torvik Pavex", display->title);
  QButton shown(Shell(), {0, 0, 50, 20}, "Save"), hidden(Shell(), {0, 30, 50, 20}, "Load");
  hidden.Hide();
  EXPECT_EQ(&shown, Manager().FindVisible("QButton", "Save"));
  EXPECT_EQ(nullptr, Manager().FindVisible("QButton", "Load"));
  EXPECT_EQ((std::vector<std::string>{"Save"}), Manager().VisibleTexts("QButton"));
  Manager().PaintAll(); // would crash on the first call of OpenGL
}

TEST_F(UiTest, TheScreenshotKeyTellsWhatIsMissing)
{
  ReportCapture reports;
  display->Key(QKEY_F11);
  Run();
  EXPECT_TRUE(reports.Contains("> No BC present.\n"));
}

TEST(QAppWindow, StandsInTheMiddleOfTheWorkArea)
{
  auto owned = std::make_unique<QNullDisplay>();
  QNullDisplay& display = *owned;
  display.workArea = {0, 24, 1280, 1000};
  QApp application("test", "", std::move(owned));
  application.rShell = {-1, -1, 640, 480};
  application.createFlags |= QApp::NO_BC;
  ASSERT_TRUE(application.Create());
  EXPECT_EQ((QRect{320, 284, 640, 480}), display.window.rect);
  EXPECT_EQ("Tessel", display.title);
  EXPECT_FALSE(display.window.resizable);
}

} // namespace
