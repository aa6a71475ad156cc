#include "ui/qcheck.h"
#include "ui/qtabcontrol.h"
#include "ui/uifixture.h"

namespace {

class TabTest : public UiTest
{
protected:
  TabTest() : tabs(std::make_unique<QTabControl>(Shell(), QRect{100, 100, 340, 310}))
  {
    for (const char* title : {"Groups", "Creation", "Physics"}) {
      QTabPage& page = tabs->AddPage(title);
      boxes.push_back(&page.Add<QCheck>(QRect{10, 10, 100, 20}, title));
    }
  }
  // Only this page's controls show, wherever the event came from.
  void ExpectPage(int shown)
  {
    EXPECT_EQ(shown, tabs->GetActivePage());
    for (int i = 0; i < tabs->GetPageCount(); ++i) {
      EXPECT_EQ(i == shown, boxes[static_cast<size_t>(i)]->IsVisible());
      EXPECT_EQ(i == shown, tabs->GetHead(i)->tabStop >= 0);
    }
  }
  int Clicks(int page) const
  {
    int n = 0;
    for (const QEvent& event : events)
      n += event.type == QEvent::CLICK && event.win == tabs.get() && event.n == page;
    return n;
  }

  std::unique_ptr<QTabControl> tabs;
  std::vector<QCheck*> boxes; // the pages'
};

TEST_F(TabTest, AHeadShowsItsPageAndTheControlTells)
{
  ExpectPage(0);
  display->ClickOn(*tabs->GetHead(2));
  Run();
  ExpectPage(2);
  EXPECT_EQ(1, Clicks(2));
  EXPECT_EQ(1, Count(QEvent::CLICK)); // the head's own goes no further
  display->ClickOn(*boxes[0]);        // the same place on every page
  Run();
  EXPECT_TRUE(boxes[2]->GetState());
  EXPECT_FALSE(boxes[0]->GetState());
  tabs->SetActivePage(1);
  tabs->SetActivePage(3);
  tabs->SetActivePage(-1);
  Run();
  ExpectPage(1);
  EXPECT_EQ(0, Clicks(1));
}

TEST_F(TabTest, KeysTurnThePages)
{
  struct Step
  {
    int key, page;
    const QWindow* focus;
  };
  const Step steps[] = {
      {QKEY_TAB, 0, tabs->GetHead(0)},   {QKEY_LEFT, 2, tabs->GetHead(2)}, // round the end
      {QKEY_RIGHT, 0, tabs->GetHead(0)}, {QKEY_RIGHT, 1, tabs->GetHead(1)}, {QMOD_CTRL | QKEY_TAB, 2, tabs->GetHead(1)},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.key);
    display->Key(step.key);
    Run();
    ExpectPage(step.page);
    EXPECT_EQ(step.focus, Manager().GetFocus());
  }
  Manager().SetKeyboardFocus(boxes[2]);
  display->Key(QMOD_CTRL | QMOD_SHIFT | QKEY_TAB);
  Run();
  ExpectPage(1);
  EXPECT_EQ(tabs->GetHead(1), Manager().GetFocus()); // not on a box that nobody sees
}

TEST_F(TabTest, AHiddenPageLetsGoOfThePointer)
{
  display->Move(120, 140);
  display->ButtonDown(1);
  Run();
  ASSERT_EQ(boxes[0], Manager().GetGrabbed());
  tabs->SetActivePage(1);
  display->ButtonUp(1);
  Run();
  EXPECT_EQ(nullptr, Manager().GetGrabbed());
  EXPECT_FALSE(boxes[0]->GetState());
}

TEST_F(TabTest, HeadsStayInsideTheControl)
{
  for (int count = tabs->GetPageCount(); count < 12; ++count) {
    int right = 0;
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(right, tabs->GetHead(i)->relPos.x);
      right += tabs->GetHead(i)->rect.wid;
    }
    EXPECT_LE(right, 340);
    tabs->AddPage("A page with a long name");
  }
}

TEST_F(TabTest, EachTabHasItsData)
{
  int mine = 0;
  tabs->SetTabUserData(1, &mine);
  EXPECT_EQ(&mine, tabs->GetTabUserData(1));
  EXPECT_EQ(nullptr, tabs->GetTabUserData(0));
  ReportCapture reports;
  EXPECT_EQ(nullptr, tabs->GetTabUserData(3));
  EXPECT_TRUE(reports.Contains("QTabControl:GetTabUserData(3) out of range - null"));
  tabs->SetTabUserData(-1, &mine);
  EXPECT_TRUE(reports.Contains("QTabControl:SetTabUserData(-1) out of range - ignored"));
  EXPECT_EQ(nullptr, tabs->GetPage(3));
}

TEST_F(TabTest, ItMayEndInItsOwnHandler)
{
  application->SetEventProc([this](QEvent* event) {
    if (event->type == QEvent::CLICK)
      tabs.reset();
    return false;
  });
  display->ClickOn(*tabs->GetHead(1));
  display->Key(QKEY_RIGHT);
  Run();
  EXPECT_EQ(nullptr, tabs);
  EXPECT_EQ(nullptr, Manager().GetFocus());
}

} // namespace
