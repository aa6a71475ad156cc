#include "support/tempdir.h"
#include "ui/qfont.h"
#include "ui/qmessagebox.h"
#include "ui/qprogressdialog.h"
#include "ui/qstringdialog.h"
#include "ui/qtextdialog.h"
#include "ui/qtextfit.h"
#include "ui/uifixture.h"

#include <sstream>

namespace {

TEST_F(UiTest, AMessageIsAnsweredByKeyAndMouse)
{
  const struct
  {
    const char* what;
    int style;
    std::function<void(QNullDisplay&, QWindowManager&)> act;
    int result;
  } cases[] = {
      {"Enter", 0, [](auto& d, auto&) { d.Key(QKEY_ENTER); }, 1},
      {"Escape", 0, [](auto& d, auto&) { d.Key(QKEY_ESC); }, 2},
      {"Escape, OK alone", 1, [](auto& d, auto&) { d.Key(QKEY_ESC); }, 1},
      {"OK", 0, [](auto& d, auto& wm) { d.ClickOn(*wm.FindVisible("QButton", "OK")); }, 1},
      {"Cancel", 0, [](auto& d, auto& wm) { d.ClickOn(*wm.FindVisible("QButton", "Cancel")); }, 2},
      {"its close button", 1, [](auto& d, auto& wm) { d.ClickOn(*wm.FindVisible("QButton", "x")); }, 2},
      {"closing the main window", 0, [](auto& d, auto&) { d.CloseWindow(); }, 2},
      {"a key that means nothing first", 0,
       [](auto& d, auto&) {
         d.Key('G');
         d.Key(QKEY_ENTER);
       },
       1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    events.clear();
    display->Then([&] {
      ASSERT_NE(nullptr, Manager().OpenDialog());
      EXPECT_EQ("Are you sure?", Manager().OpenDialog()->GetText());
      c.act(*display, Manager());
    });
    EXPECT_EQ(c.result, QMessageBox("Reload track", "Are you sure?", c.style));
    EXPECT_EQ(nullptr, Manager().OpenDialog());
    EXPECT_EQ(nullptr, Manager().GetActiveGroup());
    Run();
    EXPECT_TRUE(exits.empty());
    EXPECT_FALSE(display->ranDry);
    EXPECT_EQ(0, Count(QEvent::KEYPRESS)); // the application heard of nothing
  }
}

TEST_F(UiTest, DialogsHaveTheirGeometry)
{
  struct Control
  {
    const char* name;
    QRect rect;
  };
  const auto expect = [&](std::initializer_list<Control> controls) {
    for (const Control& c : controls) {
      SCOPED_TRACE(c.name);
      const QWindow* button = Manager().FindVisible("QButton", c.name);
      ASSERT_NE(nullptr, button);
      EXPECT_EQ(c.rect, button->RootRect());
    }
    display->Key(QKEY_ESC);
  };
  display->Then([&] {
    EXPECT_EQ((QRect{100, 150, 300, 160}), Manager().OpenDialog()->RootRect());
    expect({{"Yes", {112, 270, 100, 35}}, {"No", {290, 270, 100, 35}}});
  });
  QMessageBox("t", "m", 0, nullptr, "Yes", "No");
  display->Then([&] { expect({{"OK", {200, 270, 100, 35}}}); });
  QMessageBox("t", "m", 1);
  display->Then([&] { expect({{"OK", {60, 150, 100, 40}}, {"Cancel", {290, 150, 100, 40}}}); });
  std::string text;
  const QRect at{50, 50, 350, 150};
  QDlgString("t", "p", text, 10, 1, &at);
  display->Then([&] {
    const QRect r = Manager().OpenDialog()->RootRect();
    EXPECT_EQ((QRect{400, 250, 300, r.hgt}), r);
    const QWindow* edit = Manager().FindVisible("QEdit", "");
    ASSERT_NE(nullptr, edit);
    EXPECT_LT(edit->RootRect().y + edit->rect.hgt, r.y + r.hgt - 50); // clear of the buttons
    display->Key(QKEY_ESC);
  });
  QDlgString("t", "p", text, 10, 5);
}

TEST_F(UiTest, ALongMessageStandsClearOfTheButtons)
{
  if (!application->GetSystemFont()->IsCreated())
    GTEST_SKIP() << "no font on this machine";
  std::string text = "Shader templates written in /" + std::string(200, 'x') + "/track_template.shd";
  for (int i = 0; i < 20; ++i)
    text += " and on";
  display->Then([&] {
    const QWindow* label = Manager().FindVisible("QLabel", text);
    const QWindow* ok = Manager().FindVisible("QButton", "OK");
    ASSERT_TRUE(label && ok);
    const std::string lines = QWrapText(*application->GetSystemFont(), text, label->rect.wid, true);
    EXPECT_LE(static_cast<float>(label->rect.y) + application->GetSystemFont()->GetHeight(lines.c_str()), ok->rect.y);
    std::istringstream each(lines);
    for (std::string line; std::getline(each, line);)
      EXPECT_LE(application->GetSystemFont()->GetWidth(line), label->rect.wid) << line;
    display->Key(QKEY_ENTER);
  });
  EXPECT_EQ(1, QMessageBox("Info", text, 1));
}

TEST_F(UiTest, APromptOfTwoLinesStandsClearOfTheField)
{
  const char* prompt = "Select grid position index (0..19) (empty=new), or leave it as it is";
  std::string text = "7";
  display->Then([&] {
    const QWindow* label = Manager().FindVisible("QLabel", prompt);
    const QWindow* edit = Manager().FindVisible("QEdit", "7");
    const QWindow* ok = Manager().FindVisible("QButton", "OK");
    ASSERT_TRUE(label && edit && ok);
    const QFont& font = *application->GetSystemFont();
    const std::string lines = QWrapText(font, prompt, label->rect.wid);
    EXPECT_LE(static_cast<float>(label->rect.y) + font.GetHeight(lines.c_str()), edit->rect.y);
    EXPECT_LE(edit->rect.y + edit->rect.hgt, ok->rect.y);
    display->Key(QKEY_ESC);
  });
  QDlgString("Enter an index", prompt, text, 128);
}

TEST_F(UiTest, AStringIsTypedOverTheOneBefore)
{
  const struct
  {
    const char* what;
    int lines;
    std::function<void(QNullDisplay&)> act;
    int result;
    const char* text;
  } cases[] = {
      {"as it is", 1, [](auto& d) { d.Key(QKEY_ENTER); }, 1, "lake"},
      {"typed over", 1,
       [](auto& d) {
         d.Type("Spa");
         d.Key(QKEY_ENTER);
       },
       1, "Spa"},
      {"typed on, up to the maximum", 1,
       [](auto& d) {
         d.Key(QKEY_END);
         d.Type("side");
         d.Key(QKEY_ENTER);
       },
       1, "lakesi"},
      {"cancelled", 1,
       [](auto& d) {
         d.Type("Spa");
         d.Key(QKEY_ESC);
       },
       2, "lake"},
      {"lines", 2,
       [](auto& d) {
         d.Type("a");
         d.Key(QKEY_ENTER);
         d.Type("b");
         d.Key(QMOD_ALT | 'O');
       },
       1, "a\nb"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::string text = "lake";
    display->Then([&] { c.act(*display); });
    EXPECT_EQ(c.result, QDlgString("Select track", "Enter the track name", text, 6, c.lines));
    EXPECT_EQ(c.text, text);
    EXPECT_FALSE(display->ranDry);
  }
}

TEST_F(UiTest, ADialogInADialogGivesBackWhatStoodBefore)
{
  int inner = 0;
  std::string text;
  QEdit behind(Shell(), {0, 0, 100, 20}, 20);
  Manager().SetKeyboardFocus(&behind);
  display->Then([&] {
    QWindow* outer = Manager().OpenDialog();
    QWindow* field = Manager().GetFocus();
    display->Then([&] { display->Key(QKEY_ENTER); });
    inner = QMessageBox("Error", "Value out of range.");
    EXPECT_EQ(outer, Manager().GetActiveGroup());
    EXPECT_EQ(field, Manager().GetFocus());
    display->Type("7");
    display->Key(QKEY_ENTER);
  });
  EXPECT_EQ(1, QDlgString("Enter an index", "Select", text, 128));
  EXPECT_EQ(1, inner);
  EXPECT_EQ("7", text);
  EXPECT_EQ(&behind, Manager().GetFocus());
  events.clear();
  display->Wheel(120); // the application's event procedure is back
  Run();
  EXPECT_EQ(1, Count(QEvent::WHEEL));
}

TEST_F(UiTest, KeysTypedAheadReachTheDialogThatTheyOpen)
{
  std::string text;
  int result = 0;
  application->SetEventProc([&](QEvent* event) {
    if (event->type == QEvent::KEYPRESS && event->n == (QMOD_CTRL | 'G'))
      result = QDlgString("Enter an index", "Select grid position index", text, 128);
    return false;
  });
  display->Key(QMOD_CTRL | 'G');
  display->Type("7");
  display->Key(QKEY_ENTER);
  Run();
  EXPECT_EQ(1, result);
  EXPECT_EQ("7", text);
}

TEST_F(UiTest, ADialogIsDraggedByItsTitle)
{
  QTextDialog dialog(Shell(), {100, 100, 300, 160}, "Title", "text", 0);
  const QRect ok = dialog.GetOk().RootRect();
  std::vector<std::pair<int, int>> told;
  dialog.moveCallback = [&](int dx, int dy, void*) { told.emplace_back(dx, dy); };
  display->Move(150, 110);
  display->ButtonDown(1);
  display->Move(170, 105);
  display->Move(160, 140); // still in hand
  Run();
  display->ButtonUp(1);
  display->Move(0, 0);
  Run();
  EXPECT_EQ((QRect{110, 130, 300, 160}), dialog.RootRect());
  EXPECT_EQ((QRect{ok.x + 10, ok.y + 30, ok.wid, ok.hgt}), dialog.GetOk().RootRect());
  EXPECT_EQ((std::vector<std::pair<int, int>>{{20, -5}, {-10, 35}, {0, 0}}), told);
  EXPECT_EQ(nullptr, Manager().GetGrabbed());
}

TEST_F(UiTest, ProgressIsPolledUntilCancelled)
{
  const struct
  {
    const char* what;
    uint32_t flags;
    std::function<void(QNullDisplay&, QProgressDialog&)> act;
    bool goesOn;
  } cases[] = {
      {"nothing happens", 0, [](auto&, auto&) {}, true},
      {"Escape", 0, [](auto& d, auto&) { d.Key(QKEY_ESC); }, false},
      {"Cancel", 0, [](auto& d, auto& p) { d.ClickOn(*p.GetCancel()); }, false},
      {"closing the window", 0, [](auto& d, auto&) { d.CloseWindow(); }, false},
      {"no cancelling", QProgressDialog::NO_CANCEL,
       [](auto& d, auto&) {
         d.Key(QKEY_ESC);
         d.CloseWindow();
       },
       true},
      {"another key", 0, [](auto& d, auto&) { d.Key(QMOD_SHIFT | 'L'); }, true},
      {"the system's end", 0, [](auto& d, auto&) { d.wantsEnd = true; }, false},
      {"its end without cancelling", QProgressDialog::NO_CANCEL, [](auto& d, auto&) { d.wantsEnd = true; }, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    events.clear();
    QProgressDialog dialog(Shell(), {100, 100, 400, 150}, "Loading", "Loading track shaders & models.", c.flags);
    int calls = 0;
    dialog.SetCallback([&] { ++calls; });
    dialog.SetProgress(1, 3);
    EXPECT_EQ("33%", dialog.GetBar().GetText());
    EXPECT_TRUE(dialog.Poll());
    EXPECT_EQ(0, calls); // not before the interval
    display->now += 100;
    EXPECT_TRUE(dialog.Poll());
    EXPECT_TRUE(dialog.Poll());
    EXPECT_EQ(1, calls);
    c.act(*display, dialog);
    EXPECT_EQ(c.goesOn, dialog.Poll());
    display->wantsEnd = false;
    EXPECT_EQ(!c.goesOn, dialog.IsCancelled());
    EXPECT_EQ(0, Count(QEvent::KEYPRESS)); // no key starts a second load
    EXPECT_TRUE(exits.empty());
  }
}

TEST_F(UiTest, ADraggedDialogCanBeCaughtAgain)
{
  QTextDialog dialog(Shell(), {700, 580, 300, 160}, "Title", "text", 0);
  EXPECT_EQ((QRect{500, 440, 300, 160}), dialog.RootRect()); // the shell is 800 x 600
  for (const auto& [x, y] : {std::pair{-500, -500}, {2000, 2000}, {-500, 2000}}) {
    SCOPED_TRACE(x);
    const QRect r = dialog.RootRect();
    const int hold = std::clamp(r.x + 30, 5, 795);
    display->Move(hold, r.y + 10);
    display->ButtonDown(1);
    display->Move(x, y);
    display->ButtonUp(1);
    Run();
    const QRect now = dialog.RootRect();
    EXPECT_GE(now.y, 0);
    EXPECT_LE(now.y + QTitleBar::HEIGHT, 600);
    EXPECT_GE(std::min(now.x + now.wid, 800) - std::max(now.x, 0), 60);
  }
}

TEST_F(UiTest, AHandlerMayDeleteItsDialog)
{
  const struct
  {
    const char* what;
    std::function<void(std::unique_ptr<QTextDialog>&)> act;
  } cases[] = {
      {"by an event", [&](auto& dialog) { dialog.reset(); }},
      {"while it is dragged",
       [&](auto& dialog) {
         dialog->moveCallback = [&dialog](int, int, void*) { dialog.reset(); };
         display->Move(150, 110);
         display->ButtonDown(1);
         display->Move(170, 105);
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    auto dialog = std::make_unique<QTextDialog>(Shell(), QRect{100, 100, 300, 160}, "Title", "text", 0);
    display->Then([&] { c.act(dialog); });
    EXPECT_EQ(2, dialog->Execute());
    EXPECT_EQ(nullptr, dialog);
    EXPECT_EQ(nullptr, Manager().GetActiveGroup());
    display->ButtonUp(1);
    events.clear();
    display->Wheel(120);
    Run();
    EXPECT_EQ(1, Count(QEvent::WHEEL));
  }
}

TEST_F(UiTest, AnExposedDialogIsTheGroupAgain)
{
  QTextDialog outer(Shell(), {100, 100, 300, 160}, "Outer", "text", 0);
  {
    QTextDialog inner(Shell(), {150, 150, 300, 160}, "Inner", "text", 0);
    QEvent expose;
    expose.type = QEvent::EXPOSE;
    outer.Event(&expose);
    EXPECT_EQ(&outer, Manager().GetActiveGroup());
    inner.Event(&expose);
    EXPECT_EQ(&inner, Manager().GetActiveGroup());
  }
  EXPECT_EQ(&outer, Manager().GetActiveGroup());
}

TEST_F(UiTest, TheApplicationHearsOfReleasesBehindADialog)
{
  const auto release = [&] {
    display->KeyUp('W');
    display->ButtonUp(3);
  };
  display->KeyDown('W');
  display->ButtonDown(3);
  Run();
  display->Then(release);
  display->Then([&] { display->Key(QKEY_ESC); });
  QMessageBox("t", "m");
  EXPECT_LE(1, Count(QEvent::KEYRELEASE));
  EXPECT_EQ(1, Count(QEvent::BUTTONRELEASE));
  Run(); // the release of Escape
  events.clear();
  QProgressDialog dialog(Shell(), {100, 100, 400, 150}, "Loading", "text");
  release();
  dialog.Poll();
  EXPECT_EQ(1, Count(QEvent::KEYRELEASE));
  EXPECT_EQ(1, Count(QEvent::BUTTONRELEASE));
}

TEST_F(UiTest, AnEndlessMessageKeepsItsButtonsInTheWindow)
{
  std::string text;
  for (int i = 0; i < 200; ++i)
    text += "Line " + std::to_string(i) + "\n";
  ReportCapture reports;
  display->Then([&] {
    const QRect r = Manager().OpenDialog()->RootRect();
    const QRect ok = Manager().FindVisible("QButton", "OK")->RootRect();
    EXPECT_LE(r.y + r.hgt, 600);
    EXPECT_LT(ok.y, r.y + r.hgt);
    int bottom = 0;
    for (const QWindow* w : Manager().Windows())
      if (std::string_view(w->GetClassName()) == "QLabel")
        bottom = std::max(bottom, w->RootRect().y + w->rect.hgt);
    EXPECT_LE(bottom, ok.y);
    Manager().PaintAll();
    display->Key(QKEY_ENTER);
  });
  EXPECT_EQ(1, QMessageBox("Info", text, 1));
  EXPECT_EQ(0, reports.Problems()) << reports.All();
}

TEST_F(UiTest, CaptionsComeFromTheLanguage)
{
  TempDir dir;
  application->SetLanguage(dir.Write("german.txt", "misc\n{\n  ok=Gut\n  cancel=Abbrechen\n}\n"));
  display->Then([&] {
    EXPECT_EQ((std::vector<std::string>{"x", "Gut", "Abbrechen"}), Manager().VisibleTexts("QButton"));
    display->Key(QKEY_ESC);
  });
  QMessageBox("t", "m");
}

TEST_F(UiTest, AForgottenDialogIsClosedInsteadOfHanging)
{
  display->idleLimit = 100;
  EXPECT_EQ(2, QMessageBox("t", "m"));
  EXPECT_TRUE(display->ranDry);
}

} // namespace
