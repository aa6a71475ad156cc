#include "ui/listener.h"
#include "ui/qbutton.h"
#include "ui/qdialog.h"
#include "ui/uifixture.h"

namespace {

using T = QEvent::Type;

TEST_F(UiTest, DoubleClicksAreToldBesideThePress)
{
  struct Step
  {
    int wait, button, x;
  };
  const struct
  {
    const char* what;
    std::vector<Step> steps;
    int doubles;
  } cases[] = {
      {"twice", {{0, 1, 10}, {100, 1, 10}}, 1},
      {"a third press counts again", {{0, 1, 10}, {300, 1, 10}, {300, 1, 10}}, 2},
      {"too slow", {{0, 1, 10}, {301, 1, 10}}, 0},
      {"another button", {{0, 1, 10}, {50, 3, 10}, {50, 1, 10}}, 0},
      {"moved by a pixel", {{0, 1, 10}, {50, 1, 11}}, 0},
      {"moved away and back", {{0, 1, 10}, {50, 0, 11}, {50, 1, 10}}, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    display->now += 10000;
    Listener window(Shell(), {0, 0, 100, 100});
    for (const Step& step : c.steps) {
      display->now += step.wait;
      step.button ? display->Click(step.x, 10, step.button) : display->Move(step.x, 10);
      Run();
    }
    EXPECT_EQ(c.doubles, window.Count(T::DOUBLECLICK));
    for (size_t i = 0; i < window.seen.size(); ++i)
      if (window.seen[i].type == T::DOUBLECLICK) {
        EXPECT_EQ(T::BUTTONPRESS, window.seen[i - 1].type);
        EXPECT_EQ(T::BUTTONRELEASE, window.seen[i + 1].type);
      }
  }
}

TEST_F(UiTest, CrossingAWindowTellsEnterBeforeLeave)
{
  Listener left(Shell(), {0, 0, 100, 100}), right(Shell(), {100, 0, 100, 100});
  std::vector<std::pair<const QWindow*, int>> order;
  for (Listener* w : {&left, &right})
    w->onEvent = [&order, w](const QEvent& e) { order.emplace_back(w, e.type); };
  display->Move(50, 20);
  display->Move(130, 25);
  Run();
  using Seen = std::pair<const QWindow*, int>;
  EXPECT_EQ((std::vector<Seen>{{&left, T::ENTER},
                               {&left, T::MOTIONNOTIFY},
                               {&right, T::ENTER},
                               {&left, T::LEAVE},
                               {&right, T::MOTIONNOTIFY}}),
            order);
  EXPECT_EQ(30, right.seen.back().x); // relative to the window
  EXPECT_EQ(130, right.seen.back().xRoot);
  EXPECT_EQ(130, application->GetMouseX());
}

TEST_F(UiTest, MotionsPileUpAsOneForAWindowThatAsks)
{
  for (const bool asks : {false, true}) {
    SCOPED_TRACE(asks);
    Listener window(Shell(), {0, 0, 200, 200});
    window.mergeMotion = asks;
    for (int x = 1; x <= 50; ++x)
      display->Move(x, 5);
    display->ButtonDown(1); // a position must not leak across it
    display->Move(60, 5);
    display->Move(70, 5);
    Run();
    EXPECT_EQ(asks ? 2 : 52, window.Count(T::MOTIONNOTIFY));
    for (const QEvent& e : window.seen)
      if (e.type == T::BUTTONPRESS) {
        EXPECT_EQ(50, e.x);
      }
    EXPECT_EQ(70, window.seen.back().x);
    display->ButtonUp(1);
    display->Move(300, 300);
    Run();
  }
}

TEST_F(UiTest, AFullQueueDropsAndReports)
{
  ReportCapture reports;
  QEvent event;
  event.type = T::WHEEL;
  int taken = 0;
  while (QEventPush(event))
    ++taken;
  EXPECT_EQ(3072, taken);
  EXPECT_EQ(1, reports.Count("QEventPush(); out of space"));
  event.type = T::EXPOSE; // never takes a place
  EXPECT_TRUE(QEventPush(event));
}

TEST_F(UiTest, ModifiersFollowTheKeyEvents)
{
  const auto codeOf = [&](const std::function<void()>& act) {
    events.clear();
    act();
    Run();
    int code = 0;
    for (const QEvent& e : events)
      if (e.type == T::KEYPRESS && !QIsModifierKey(QKeyOf(e.n)))
        code = e.n;
    return code;
  };
  EXPECT_EQ(0x50053, codeOf([&] { display->Key(QMOD_CTRL | QMOD_SHIFT | 'S'); }));
  EXPECT_EQ('S', codeOf([&] { display->Key('S'); }));
  // Alt is held while another program takes over, and released there.
  display->KeyDown(QKEY_ALT_KEY);
  Run();
  EXPECT_EQ(QMOD_ALT, application->GetModifiers());
  display->Focus(false);
  EXPECT_EQ('G', codeOf([&] { display->Key('G'); }));
}

TEST_F(UiTest, KeysGoToTheFocusOrTheWindowUnderThePointer)
{
  Listener focused(Shell(), {0, 0, 50, 50}), pointed(Shell(), {100, 100, 50, 50});
  display->Move(110, 110);
  display->Key('A');
  Run();
  EXPECT_EQ(1, pointed.Count(T::KEYPRESS));
  Manager().SetKeyboardFocus(&focused);
  display->Key('A');
  Run();
  EXPECT_EQ(1, pointed.Count(T::KEYPRESS));
  EXPECT_EQ(1, focused.Count(T::KEYPRESS));
  EXPECT_EQ(1, focused.Count(T::FOCUSIN));
}

TEST_F(UiTest, UnusedEventsBubbleToTheApplicationOnce)
{
  Listener outer(Shell(), {100, 100, 200, 200});
  Listener inner(&outer, {10, 10, 50, 50});
  inner.uses = outer.uses = false;
  Manager().SetKeyboardFocus(&inner);
  Run();
  events.clear();
  display->Key('Q');
  display->Move(120, 120);
  display->Wheel(120);
  Run();
  // Not twice, though it has the focus and the event too.
  EXPECT_EQ(1, inner.Count(T::KEYPRESS));
  EXPECT_EQ(1, outer.Count(T::KEYPRESS));
  EXPECT_EQ(1, Count(T::KEYPRESS, &inner));
  // A wheel step isn't among what parents hear of.
  EXPECT_EQ(1, inner.Count(T::WHEEL));
  EXPECT_EQ(0, outer.Count(T::WHEEL));
  EXPECT_EQ(1, Count(T::WHEEL));

  outer.Disable(); // and with it what lies on it
  display->Key('Q');
  Run();
  EXPECT_EQ(1, inner.Count(T::KEYPRESS));
}

TEST_F(UiTest, AHandlerMayDeleteItsWindow)
{
  Listener outer(Shell(), {0, 0, 200, 200});
  auto doomed = std::make_unique<Listener>(&outer, QRect{0, 0, 50, 50});
  doomed->uses = false;
  doomed->onEvent = [&](const QEvent& e) {
    if (e.type == T::BUTTONPRESS)
      Manager().RemoveWindow(doomed.get());
  };
  display->Click(10, 10);
  QEvent later;
  later.type = T::CLICK;
  later.win = doomed.get();
  Run();
  EXPECT_EQ(0, outer.Count(T::BUTTONPRESS));
  // What waits in the queue for a window that goes reaches nobody.
  auto gone = std::make_unique<Listener>(&outer, QRect{0, 0, 50, 50});
  gone->SendEvent(T::CLICK);
  gone.reset();
  events.clear();
  Run();
  EXPECT_EQ(0, outer.Count(T::CLICK));
  EXPECT_EQ(0, Count(T::CLICK));
  ReportCapture reports;
  EXPECT_FALSE(Manager().RemoveWindow(doomed.get()));
  EXPECT_TRUE(reports.Contains("was NOT found (QWindow)"));
}

TEST_F(UiTest, TabWalksTheStopsInOrderAndAround)
{
  QButton a(Shell(), {0, 0, 50, 20}, "a"), b(Shell(), {0, 30, 50, 20}, "b"), c(Shell(), {0, 60, 50, 20}, "c"),
      d(Shell(), {0, 90, 50, 20}, "d"), e(Shell(), {0, 120, 50, 20}, "e");
  b.SetTabStop(-1);
  c.Disable();
  d.Hide();
  const QWindow* forward[] = {&a, &e, &a};
  for (const QWindow* expected : forward) {
    display->Key(QKEY_TAB);
    Run();
    EXPECT_EQ(expected, Manager().GetFocus());
  }
  display->Key(QMOD_SHIFT | QKEY_TAB);
  Run();
  EXPECT_EQ(&e, Manager().GetFocus());
}

TEST_F(UiTest, AnActiveGroupKeepsAllOthersOut)
{
  Listener behind(Shell(), {0, 0, 100, 100});
  Manager().SetKeyboardFocus(&behind);
  Run();
  static int seenByHandler;
  seenByHandler = 0;
  const auto handler = [](QEvent* e) {
    seenByHandler += e->type == T::KEYPRESS;
    return false;
  };
  EXPECT_TRUE(application->AddKeyboardHandler(handler));
  {
    QDialog dialog(Shell(), {300, 300, 200, 100}, "Title");
    behind.seen.clear();
    events.clear();
    display->Key('A');
    display->Click(10, 10);
    Run();
    EXPECT_EQ(0, behind.Count(T::KEYPRESS));
    EXPECT_EQ(0, behind.Count(T::BUTTONPRESS));
    EXPECT_EQ(0, Count(T::KEYPRESS)); // nor does the application act on it
    EXPECT_EQ(1, seenByHandler);
    ReportCapture reports;
    Listener outsider(Shell(), {0, 0, 10, 10});
    EXPECT_FALSE(outsider.IsCreated());
    EXPECT_TRUE(reports.Contains("not part of activegroup, refusing to add window"));
  }
  display->Key('A');
  Run();
  EXPECT_EQ(1, behind.Count(T::KEYPRESS)); // the focus came back with the end of the dialog
}

TEST_F(UiTest, WindowsLieInTheOrderOfTheirCreation)
{
  Listener below(Shell(), {0, 0, 100, 100}), above(Shell(), {50, 0, 100, 100});
  EXPECT_EQ(&above, Manager().FindWindowAt(nullptr, 75, 10));
  above.Hide();
  EXPECT_EQ(&below, Manager().FindWindowAt(nullptr, 75, 10));
  EXPECT_EQ(Shell(), Manager().FindWindowAt(nullptr, 400, 10));
  EXPECT_EQ(nullptr, Manager().FindWindowAt(nullptr, 900, 10));
  Listener child(&below, {10, 20, 5, 5});
  below.Move(200, 200);
  EXPECT_EQ((QRect{210, 220, 5, 5}), child.RootRect());
}

TEST_F(UiTest, PreferencesComeBeforeTheCreation)
{
  Listener window(Shell(), {0, 0, 10, 10});
  ReportCapture reports;
  window.PrefFullScreen();
  window.PrefNoResize();
  window.MakeRealX();
  EXPECT_TRUE(reports.Contains("QWindow:PrefFullScreen() called after window was created"));
  EXPECT_EQ(3, reports.Problems());
  EXPECT_EQ(0u, window.flags & (QWindow::FULLSCREEN | QWindow::NO_RESIZE | QWindow::X));
  Shell()->Hide();
  EXPECT_TRUE(reports.Contains("Can't hide X QWindow"));
}

} // namespace
