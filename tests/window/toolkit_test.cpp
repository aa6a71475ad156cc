// The toolkit in a real window, worked by the X server's key and mouse events. Run under a server of its own with a
// window manager; PAVEX_PICTURES names the directory for the screenshots.

#include "platform/qsdldisplay.h"
#include "ui/qapp.h"
#include "ui/qbutton.h"
#include "ui/qcombo.h"
#include "ui/qedit.h"
#include "ui/qlistbox.h"
#include "ui/qmessagebox.h"
#include "ui/qtextdialog.h"
#include "window/xdriver.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

class ToolkitWindow : public testing::Test
{
protected:
  void SetUp() override
  {
    if (!std::getenv("PAVEX_PICTURES"))
      GTEST_SKIP() << "no X server of its own";
    application = std::make_unique<QApp>("toolkit", "Toolkit", std::make_unique<QSDLDisplay>());
    application->rShell = {40, 60, 800, 600};
    application->createFlags = QApp::NO_BC | QApp::FRAME | QApp::NO_RESIZE;
    application->SetLeave([this](int status) { exits.push_back(status); });
    ASSERT_TRUE(application->Create());
    application->SetEventProc([this](QEvent* event) {
      events.push_back(*event);
      return false;
    });
    person = std::make_unique<XDriver>(*application, std::getenv("PAVEX_PICTURES"));
    ASSERT_TRUE(person->WaitForWindow());
  }
  int Clicks(const QWindow& from) const
  {
    int n = 0;
    for (const QEvent& event : events)
      n += event.type == QEvent::CLICK && event.win == &from;
    return n;
  }
  QWindow* Focus() const { return application->GetWindowManager()->GetFocus(); }
  QShell* Shell() const { return application->GetShell(); }

  std::unique_ptr<QApp> application;
  std::unique_ptr<XDriver> person;
  std::vector<QEvent> events;
  std::vector<int> exits;
};

TEST_F(ToolkitWindow, AFieldIsTypedInSelectedCutAndPasted)
{
  QEdit edit(Shell(), {50, 60, 300, 30}, 100);
  QEdit other(Shell(), {50, 120, 300, 30}, 100);
  person->Click(edit);
  person->Type("Lake side: 42+1 = (a_b)!");
  EXPECT_EQ("Lake side: 42+1 = (a_b)!", edit.GetText());
  person->Key("Home");
  person->Key("shift+ctrl+Right");
  person->Picture("edit-selection");
  EXPECT_EQ("Lake ", edit.GetSelectedText());
  person->Key("ctrl+x");
  EXPECT_EQ("side: 42+1 = (a_b)!", edit.GetText());
  person->Key("Tab");
  EXPECT_EQ(&other, Focus());
  person->Key("ctrl+v");
  person->Key("ctrl+v");
  EXPECT_EQ("Lake Lake ", other.GetText());
  const QRect r = other.RootRect();
  person->Drag(r.x + 4, r.y + 15, r.x + 290, r.y + 15);
  EXPECT_EQ("Lake Lake ", other.GetSelectedText());
  person->Type("x");
  EXPECT_EQ("x", other.GetText());
}

TEST_F(ToolkitWindow, ADialogIsTabbedThroughAnsweredAndLeft)
{
  std::string text = "lakeside";
  person->Then([&] {
    person->Picture("dialog-string");
    EXPECT_STREQ("QEdit", Focus()->GetClassName());
    person->Key("Tab");
    EXPECT_EQ("OK", Focus()->GetText());
    person->Key("Tab");
    EXPECT_EQ("Cancel", Focus()->GetText());
    person->Key("Tab");
    EXPECT_STREQ("QEdit", Focus()->GetClassName());
    person->Key("shift+Tab");
    EXPECT_EQ("Cancel", Focus()->GetText());
    person->Key("Tab");
    person->Type("new");
    person->Key("Return");
  });
  EXPECT_EQ(1, QDlgString("Select track", "Enter the track name", text, 80));
  EXPECT_EQ("new", text);
  person->Then([&] { person->Key("Escape"); });
  EXPECT_EQ(2, QDlgString("Select track", "Enter the track name", text, 80));
  person->Then([&] { person->Key("Escape"); });
  EXPECT_EQ(1, QMessageBox("Note", "Escape is OK where there is nothing else", 1));
  EXPECT_TRUE(person->AllStepsDone());
}

TEST_F(ToolkitWindow, ADialogIsDraggedByItsTitleBar)
{
  person->Then([&] {
    const QRect before = application->GetWindowManager()->OpenDialog()->RootRect();
    person->Drag(before.x + 60, before.y + 10, before.x + 160, before.y + 70);
    const QRect after = application->GetWindowManager()->OpenDialog()->RootRect();
    EXPECT_EQ(before.x + 100, after.x);
    EXPECT_EQ(before.y + 60, after.y);
    person->Picture("dialog-dragged");
    person->Key("Return");
  });
  EXPECT_EQ(1, QMessageBox("Drag me", "By the title bar"));
  EXPECT_TRUE(person->AllStepsDone());
}

TEST_F(ToolkitWindow, AListIsScrolledSearchedAndChosenFrom)
{
  QListBox list(Shell(), {50, 60, 220, 200});
  for (int i = 0; i < 500; ++i)
    list.AddString("Entry " + std::to_string(i));
  list.AddString("Zebra");
  person->MoveTo(list);
  person->Wheel(-3);
  EXPECT_EQ(3, list.GetFirst());
  person->Picture("list");
  person->Click(60, 70);
  EXPECT_EQ(3, list.GetFirstSelected());
  EXPECT_GE(Clicks(list), 1);
  person->Key("Down");
  EXPECT_EQ(4, list.GetFirstSelected());
  person->Key("z");
  EXPECT_EQ(500, list.GetFirstSelected());
  person->Picture("list-found");
  person->Key("Home");
  EXPECT_EQ(0, list.GetFirstSelected());
}

TEST_F(ToolkitWindow, AComboIsOpenedLeftAndChosenFrom)
{
  QCombo combo(Shell(), {50, 60, 220, 28});
  for (const char* name : {"Asphalt", "Grass", "Gravel"})
    combo.AddString(name);
  combo.SetSelected(0);
  const QRect r = combo.RootRect();
  person->Click(r.x + r.wid - 10, r.y + 14);
  EXPECT_TRUE(combo.IsOpen());
  person->Picture("combo-open");
  person->Key("Escape");
  EXPECT_EQ(0, combo.GetSelected());
  EXPECT_EQ(0, Clicks(combo));
  person->Click(r.x + r.wid - 10, r.y + 14);
  person->Key("Down");
  person->Key("Return");
  EXPECT_EQ(1, combo.GetSelected());
  EXPECT_EQ("Grass", combo.GetText());
  EXPECT_GE(Clicks(combo), 1);
}

TEST_F(ToolkitWindow, AShortcutReachesItsButtonWhileAFieldHasTheFocus)
{
  QButton save(Shell(), {50, 60, 120, 35}, "Save (Ctrl-S)");
  save.SetShortcut(QMOD_CTRL | 'S');
  QEdit edit(Shell(), {50, 120, 300, 30}, 100);
  person->Click(edit);
  person->Type("abc");
  person->Key("ctrl+s");
  EXPECT_EQ(1, Clicks(save));
  EXPECT_EQ("abc", edit.GetText());
}

TEST_F(ToolkitWindow, TheCloseButtonDuringADialogOnlyEndsTheDialog)
{
  person->Then([&] { person->Key("alt+F4"); });
  EXPECT_EQ(2, QMessageBox("Reload track", "Are you sure you want to reload the track?"));
  EXPECT_TRUE(exits.empty());
  person->Settle();
  EXPECT_FALSE(application->hasExited);
  person->Key("alt+F4");
  EXPECT_TRUE(person->RunUntil([&] { return application->hasExited; }));
  EXPECT_EQ(1u, exits.size());
}

TEST_F(ToolkitWindow, TheWindowKeepsItsSize)
{
  EXPECT_TRUE(person->Shell("xdotool windowsize $WINDOW 500 300"));
  person->Settle();
  person->Settle();
  const QRect r = application->GetDisplay().WindowRect();
  EXPECT_EQ(800, r.wid);
  EXPECT_EQ(600, r.hgt);
  EXPECT_EQ(800, Shell()->rect.wid);
}

TEST_F(ToolkitWindow, AltHeldWhileTheFocusGoesIsForgotten)
{
  QEdit edit(Shell(), {50, 60, 300, 30}, 100);
  person->Click(edit);
  person->Do("keydown alt");
  EXPECT_EQ(QMOD_ALT, application->GetModifiers());
  person->Shell("xdotool windowminimize $WINDOW");
  EXPECT_TRUE(person->RunUntil([&] { return application->GetModifiers() == 0; }));
  person->Do("keyup alt");
  person->Shell("xdotool windowmap $WINDOW windowactivate --sync $WINDOW");
  person->Settle();
  person->Type("a");
  EXPECT_EQ("a", edit.GetText());
}

} // namespace
