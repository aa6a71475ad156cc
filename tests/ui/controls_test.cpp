#include "ui/qbutton.h"
#include "ui/qcheck.h"
#include "ui/qfont.h"
#include "ui/qlabel.h"
#include "ui/qprogress.h"
#include "ui/qradio.h"
#include "ui/qscalerect.h"
#include "ui/qtextfit.h"
#include "ui/uifixture.h"

namespace {

TEST_F(UiTest, AButtonClicksWhenReleasedOverItself)
{
  struct Stop
  {
    int x;
    QButton::State state;
  };
  const struct
  {
    const char* what;
    std::vector<Stop> drag;
    int clicks;
  } cases[] = {
      {"on it", {}, 1},
      {"dragged off", {{300, QButton::PRESSED_OUTSIDE}}, 0},
      {"off and back", {{300, QButton::PRESSED_OUTSIDE}, {60, QButton::PRESSED}}, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    QButton button(Shell(), {50, 50, 100, 30}, "b");
    events.clear();
    display->Move(60, 60);
    display->ButtonDown(1);
    Run();
    EXPECT_EQ(QButton::PRESSED, button.GetState());
    EXPECT_TRUE(button.HasFocus());
    for (const Stop& stop : c.drag) {
      display->Move(stop.x, 60);
      Run();
      EXPECT_EQ(stop.state, button.GetState());
    }
    display->ButtonUp(1);
    Run();
    EXPECT_EQ(QButton::UP, button.GetState());
    EXPECT_EQ(c.clicks, Count(QEvent::CLICK, &button));
    EXPECT_EQ(nullptr, Manager().GetGrabbed());
  }
}

TEST_F(UiTest, AButtonThatCannotBeUsedStaysSilent)
{
  QButton disabled(Shell(), {0, 0, 50, 20}, "a"), dead(Shell(), {0, 30, 50, 20}, "b"),
      right(Shell(), {0, 60, 50, 20}, "c");
  disabled.Disable();
  disabled.SetShortcut(QKEY_ENTER);
  dead.buttonFlags &= ~static_cast<uint32_t>(QButton::MOUSE);
  display->ClickOn(disabled);
  display->ClickOn(dead);
  display->Click(10, 70, 3);
  display->Key(QKEY_ENTER);
  Run();
  EXPECT_EQ(0, Count(QEvent::CLICK));
}

TEST_F(UiTest, AShortcutWorksFromAnywhereWithItsModifiersAlone)
{
  QButton plain(Shell(), {0, 0, 50, 20}, "a"), passing(Shell(), {0, 30, 50, 20}, "b");
  plain.SetShortcut(QMOD_ALT | 'O');
  passing.SetShortcut('P');
  passing.buttonFlags |= QButton::SHORTCUT_PASSES;
  display->Key('O');
  display->Key(QMOD_ALT | 'O');
  display->Key('P');
  Run();
  EXPECT_EQ(1, Count(QEvent::CLICK, &plain));
  EXPECT_EQ(1, Count(QEvent::CLICK, &passing));
  int letters = 0;
  for (const QEvent& e : events)
    letters += e.type == QEvent::KEYPRESS && !QIsModifierKey(QKeyOf(e.n));
  EXPECT_EQ(2, letters); // the plain O, and the P that passed
}

TEST_F(UiTest, AFocusedButtonIsPressedBySpaceAndEnter)
{
  QButton first(Shell(), {0, 0, 50, 20}, "a"), second(Shell(), {0, 30, 50, 20}, "b");
  const auto clicksOf = [this](const QButton& button) { return Count(QEvent::CLICK, &button); };
  display->ClickOn(first);
  display->Key(QKEY_SPACE); // who clicked means the application
  Run();
  EXPECT_EQ(1, clicksOf(first));
  display->Key(QKEY_TAB);
  display->Key(QKEY_SPACE);
  display->Key(QKEY_ENTER);
  display->Key(QMOD_CTRL | QKEY_ENTER); // another key
  Run();
  EXPECT_EQ(2, clicksOf(second));
  for (int i = 0; i < 3; ++i)
    display->KeyDown(QKEY_SPACE); // held, it repeats
  Run();
  EXPECT_EQ(QButton::PRESSED, second.GetState());
  display->KeyUp(QKEY_SPACE);
  Run();
  EXPECT_EQ(3, clicksOf(second));
  display->KeyDown(QKEY_SPACE);
  Run();
  Manager().SetKeyboardFocus(&first);
  display->KeyUp(QKEY_SPACE);
  Run();
  EXPECT_EQ(3, clicksOf(second));
  EXPECT_EQ(QButton::UP, second.GetState());
  // The shortcut's press stands on its own.
  second.SetShortcut('S');
  Manager().SetKeyboardFocus(&second);
  display->KeyDown(QKEY_SPACE);
  display->Key('S');
  display->KeyUp(QKEY_SPACE);
  Run();
  EXPECT_EQ(4, clicksOf(second));
  EXPECT_EQ(nullptr, Manager().GetGrabbed());
}

TEST_F(UiTest, AControlMayEndInItsOwnHandler)
{
  using Make = std::unique_ptr<QWindow> (*)(QWindow * shell);
  static constexpr QRect RECT{0, 0, 100, 20};
  const Make makers[] = {
      [](QWindow* w) -> std::unique_ptr<QWindow> { return std::make_unique<QButton>(w, RECT, "x"); },
      [](QWindow* w) -> std::unique_ptr<QWindow> { return std::make_unique<QCheck>(w, RECT, "x"); },
      [](QWindow* w) -> std::unique_ptr<QWindow> { return std::make_unique<QRadio>(w, RECT, "x", 1); },
      [](QWindow* w) -> std::unique_ptr<QWindow> { return std::make_unique<QLabel>(w, RECT, "x"); },
  };
  for (const Make make : makers)
    for (const int key : {0, static_cast<int>(QKEY_SPACE)}) {
      std::unique_ptr<QWindow> control = make(Shell());
      SCOPED_TRACE(control->GetClassName());
      if (key != 0 && control->tabStop < 0)
        continue;
      if (auto* button = dynamic_cast<QButton*>(control.get()))
        button->SetShortcut('Q');
      application->SetEventProc([&control](QEvent* event) {
        if (event->type == QEvent::CLICK)
          control.reset();
        return false;
      });
      if (key == 0) {
        display->ClickOn(*control);
        display->Click(5, 5);
      } else {
        display->Key(QKEY_TAB);
        display->Key(key);
        display->Key('Q');
      }
      Run();
      EXPECT_EQ(nullptr, control);
      EXPECT_EQ(nullptr, Manager().GetFocus());
    }
}

TEST_F(UiTest, AButtonMaySendItsShortcutAsAKey)
{
  QButton button(Shell(), {0, 0, 50, 20}, "a");
  button.eventType = QEvent::KEYPRESS;
  display->ClickOn(button);
  Run();
  EXPECT_EQ(1, Count(QEvent::CLICK, &button)); // it has none yet
  button.SetShortcut(QMOD_CTRL | 'G');
  display->ClickOn(button);
  Run();
  EXPECT_EQ(1, Count(QEvent::CLICK, &button)); // and doesn't press itself
  ASSERT_EQ(1, Count(QEvent::KEYPRESS, &button));
  for (const QEvent& e : events)
    if (e.type == QEvent::KEYPRESS) {
      EXPECT_EQ(QMOD_CTRL | 'G', e.n);
    }
}

TEST_F(UiTest, ACheckFlipsWhereverItIsReleased)
{
  QCheck check(Shell(), {50, 50, 100, 20}, "c");
  for (const int x : {60, 500}) {
    const bool before = check.GetState();
    events.clear();
    display->Move(60, 60);
    display->ButtonDown(1);
    display->Move(x, 60);
    display->ButtonUp(1);
    Run();
    EXPECT_EQ(!before, check.GetState());
    EXPECT_EQ(1, Count(QEvent::CLICK, &check));
  }
}

TEST_F(UiTest, ARadioClearsItsOwnGroupOnly)
{
  QRadio a(Shell(), {0, 0, 100, 20}, "a", 1), b(Shell(), {0, 30, 100, 20}, "b", 1);
  QRadio other(Shell(), {0, 60, 100, 20}, "c", 2);
  a.SetState(true);
  other.SetState(true);
  display->ClickOn(b);
  Run();
  EXPECT_FALSE(a.GetState());
  EXPECT_TRUE(b.GetState());
  EXPECT_TRUE(other.GetState());
  EXPECT_EQ(1, Count(QEvent::CLICK));
  EXPECT_EQ(1, Count(QEvent::CLICK, &b));
}

TEST_F(UiTest, AProgressBarStaysInsideItsTrough)
{
  QProgress bar(Shell(), {0, 0, 108, 20});
  const struct
  {
    int value, total, width;
  } cases[] = {{0, 100, 0},     {50, 100, 50},   {1, 3, 33},
               {100, 100, 100}, {250, 100, 100}, {-5, 100, 0},
               {7, 0, 100},     {5, -10, 0},     {INT32_MAX, INT32_MAX, 100}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.value << " of " << c.total);
    bar.SetProgress(c.value, c.total);
    EXPECT_EQ(c.width, bar.FilledWidth());
  }
}

TEST(ScaleRect, TruncatesEachNumber)
{
  const QRect reference{1919, -1, 2000000, 540};
  const struct
  {
    int wid, hgt;
    QRect scaled;
  } cases[] = {
      {1920, 1080, reference},
      {1280, 1024, {1279, 0, 1333333, 512}},
      {3840, 2160, {3838, -2, 4000000, 1080}},
      {0, 0, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.wid);
    EXPECT_EQ(c.scaled, QScaleRect(reference, c.wid, c.hgt));
  }
}

TEST_F(UiTest, ALabelTellsOfAClick)
{
  QLabel label(Shell(), {0, 0, 100, 20}, "l");
  display->ClickOn(label);
  Run();
  EXPECT_EQ(1, Count(QEvent::CLICK, &label));
}

TEST_F(UiTest, CanvasReportsWhatItCannotDraw)
{
  QCanvas& cv = Shell()->GetCanvas();
  ReportCapture reports;
  cv.SetColor(12);
  EXPECT_TRUE(reports.Contains("QCanvas::SetColor(12) unknown PX_xxx"));
  EXPECT_EQ(QColor(0, 255, 0).GetRGBA(), cv.GetColor().GetRGBA());
  cv.SetFont(nullptr);
  cv.Text("a", 0, 0);
  EXPECT_TRUE(reports.Contains("QCanvas:Text(); no font selected"));
  cv.SetFont(application->GetSystemFont());
  reports.Clear();
  cv.TextML("1\n2\n3\n4\n5\n6\n7\n8\n9\n10", {0, 0, 100, 100});
  EXPECT_EQ(0, reports.Problems());
  cv.TextML("1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11", {0, 0, 100, 100});
  EXPECT_TRUE(reports.Contains("QCanvas::TextML() max #lines reached (10)"));
  cv.TextML(std::string(1024, 'x'), {0, 0, 100, 100});
  EXPECT_TRUE(reports.Contains("QCanvas::TextML(); text>temp buffer"));
  Shell()->PaintTexture(nullptr, {0, 0, 8, 8}, 0, 0);
  EXPECT_TRUE(reports.Contains("QWindow:PaintTexture(); no texture"));
  cv.SetColor(PX_FACE);
  EXPECT_EQ(QColor(68, 126, 142, 128).GetRGBA(), cv.GetColor().GetRGBA());
  cv.SetColor(PX_FACE, 7);
  EXPECT_EQ(7, cv.GetColor().GetA());
}

TEST_F(UiTest, CaptionsFitIntoTheirControls)
{
  QFont& font = *application->GetSystemFont();
  if (!font.IsCreated())
    GTEST_SKIP() << "no font on this machine";
  for (const char* caption : {"Save track (Shift-S)", "Make track_template.shd", "Object mode (camera)",
                              "Splitter (Ctrl-Shift-S)", "Declare pit out speedlimit"}) {
    SCOPED_TRACE(caption);
    const QFittedText fitted = QFitText(font, caption, 116, 35);
    EXPECT_GE(fitted.font->GetSize(), 8); // readable
    EXPECT_LE(fitted.font->GetHeight(fitted.lines.c_str()), 35);
    const size_t end = fitted.lines.find('\n');
    EXPECT_LE(fitted.font->GetWidth(std::string_view(fitted.lines).substr(0, end)), 116);
    if (end != std::string::npos) {
      EXPECT_LE(fitted.font->GetWidth(std::string_view(fitted.lines).substr(end + 1)), 116);
    }
  }
}

TEST_F(UiTest, FontsReportWhatTheyAreNot)
{
  ReportCapture reports;
  QFont unknown("courier", 8, QFont::ROMAN, QFont::NORMAL, 7);
  EXPECT_FALSE(unknown.Create());
  EXPECT_TRUE(reports.Contains("QFont:Create(): unknown fontType (7)"));
  QFont missing("/nowhere/font", 10, QFont::ROMAN, QFont::NORMAL, QFont::TEXTURE_FONT);
  EXPECT_FALSE(missing.Create());
  EXPECT_TRUE(reports.Contains("Couldn't load texture of tex font '/nowhere/font'"));
  EXPECT_EQ(0, missing.GetWidth("text"));
  application->GetSystemFont()->SetScale(2, 2);
  EXPECT_TRUE(reports.Contains("QFont:SetScale(); only useful for texture fonts"));
}

} // namespace
