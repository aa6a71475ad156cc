#include "ui/qcombo.h"
#include "ui/qlistbox.h"
#include "ui/qscrollbar.h"
#include "ui/uifixture.h"

namespace {

class ScrollBarTest : public UiTest
{};

TEST_F(ScrollBarTest, StepsPagesAndIsDragged)
{
  QScrollBar bar(Shell(), {100, 100, 17, 200});
  bar.SetLines(100, 10);
  const struct
  {
    int x, y;
    int position;
  } presses[] = {{108, 292, 1}, {108, 270, 11}, {108, 105, 10}, {108, 121, 0}, {108, 105, 0}};
  for (const auto& p : presses) {
    display->Click(p.x, p.y);
    Run();
    EXPECT_EQ(p.position, bar.GetPosition()) << p.y;
  }
  EXPECT_GT(Count(QEvent::CLICK, &bar), 3);
  // A fast double click is two steps, not three.
  display->Click(108, 292);
  display->Click(108, 292);
  Run();
  EXPECT_EQ(2, bar.GetPosition());
  bar.SetPosition(0);
  events.clear();
  display->Move(108, 125);
  display->ButtonDown(1);
  display->Move(108, 130);
  display->Move(300, 500); // to the end, however far the pointer strays
  display->ButtonUp(1);
  Run();
  EXPECT_EQ(90, bar.GetPosition());
  EXPECT_GE(Count(QEvent::SLIDE, &bar), 1);
  bar.SetPosition(1000);
  EXPECT_EQ(90, bar.GetPosition());
  bar.SetLines(5, 10);
  EXPECT_EQ(0, bar.GetPosition());
}

class ListBoxTest : public UiTest
{
protected:
  ListBoxTest() : list(Shell(), {10, 10, 200, 100}) {}
  void Fill(int count)
  {
    for (int i = 0; i < count; ++i)
      list.AddString("Item " + std::to_string(i));
  }
  void PressItem(int i)
  {
    display->Click(20, 12 + (i - list.GetFirst()) * list.GetItemHeight() + 5);
    Run();
  }
  QListBox list;
};

TEST_F(ListBoxTest, SelectsWithAClickEachTime)
{
  Fill(20);
  PressItem(2);
  EXPECT_EQ(2, list.GetFirstSelected());
  PressItem(2);
  EXPECT_EQ(2, Count(QEvent::CLICK, &list));
  PressItem(3);
  EXPECT_EQ(3, list.GetFirstSelected());
  EXPECT_EQ(-1, list.GetNextSelected(3));
  list.Select(3); // it is already
  Run();
  EXPECT_EQ(3, Count(QEvent::CLICK, &list));
  list.listFlags = QListBox::MULTI_SELECT;
  PressItem(1);
  EXPECT_EQ(1, list.GetFirstSelected());
  EXPECT_EQ(3, list.GetNextSelected(1));
  list.listFlags = QListBox::NO_SELECT;
  PressItem(0);
  EXPECT_EQ(1, list.GetFirstSelected());
  EXPECT_EQ("Item 1", list.GetText());
}

TEST_F(ListBoxTest, ReportsWhatLiesOutside)
{
  ReportCapture reports;
  Fill(3);
  EXPECT_FALSE(list.InsertItem(4, "x"));
  list.Select(3);
  list.SetItemVisible(-1);
  EXPECT_TRUE(reports.Contains("QListBox:InsertItem(pos 4) pos out of range 0..3"));
  EXPECT_TRUE(reports.Contains("QListBox:Select(3) out of range 0..2"));
  EXPECT_TRUE(reports.Contains("QListBox:SetItemVisibile(-1) out of range 0..2"));
  EXPECT_FALSE(list.RemoveItem(3));
  EXPECT_EQ(nullptr, list.GetItem(3));
}

TEST_F(ListBoxTest, ScrollsByWheelKeysAndBar)
{
  Fill(100);
  const int lines = list.GetVisibleLines();
  display->Move(50, 50);
  display->Wheel(-240); // one step, however far
  Run();
  EXPECT_EQ(1, list.GetFirst());
  PressItem(1);
  const struct
  {
    int key;
    int selected;
  } keys[] = {{QKEY_DOWN, 2},           {QKEY_UP, 1},   {QKEY_END, 99}, {QKEY_DOWN, 99},
              {QKEY_PGUP, 100 - lines}, {QKEY_HOME, 0}, {QKEY_UP, 0}};
  for (const auto& k : keys) {
    display->Key(k.key);
    Run();
    EXPECT_EQ(k.selected, list.GetFirstSelected()) << k.key;
    EXPECT_LE(list.GetFirst(), k.selected);
    EXPECT_GT(list.GetFirst() + lines, k.selected);
  }
  list.SetFirst(1000);
  EXPECT_EQ(100 - lines, list.GetFirst());
  while (list.GetItemCount() > 2)
    list.RemoveItem(0);
  EXPECT_EQ(0, list.GetFirst());
  EXPECT_EQ("Item 98", list.GetItem(0)->text);
}

TEST_F(ListBoxTest, FindsWhatIsTyped)
{
  for (const char* name : {"Ahorn", "Birke", "Buche", "Äpfel", "10 Eichen"})
    list.AddString(name);
  Manager().SetKeyboardFocus(&list);
  const struct
  {
    const char* typed;
    int pause; // before it, milliseconds
    const char* found;
  } cases[] = {{"b", 0, "Birke"},    {"b", 0, "Buche"},        {"b", 0, "Birke"},        {"bu", 2000, "Buche"},
               {"ä", 2000, "Äpfel"}, {"1", 2000, "10 Eichen"}, {"x", 2000, "10 Eichen"}, {"a", 2000, "Ahorn"}};
  for (const auto& c : cases) {
    display->now += c.pause;
    display->Type(c.typed);
    Run();
    EXPECT_EQ(c.found, list.GetText()) << c.typed;
  }
}

TEST_F(ListBoxTest, ShowsWhatThePointerIsOver)
{
  Fill(5);
  const auto hovered = [&](int i) { return (list.GetItem(i)->flags & QListBox::HOVER) != 0; };
  display->Move(20, 12 + list.GetItemHeight() + 3);
  Run();
  EXPECT_TRUE(hovered(1));
  list.RemoveItem(0);
  display->Move(20, 14);
  Run();
  EXPECT_TRUE(hovered(0));
  display->Move(500, 500);
  Run();
  EXPECT_FALSE(hovered(0));
}

TEST_F(ListBoxTest, IsEmptiedByTheOneWhoHearsTheClick)
{
  Fill(30);
  application->SetEventProc([&](QEvent* event) {
    if (event->win == &list && event->type == QEvent::CLICK)
      list.Empty();
    return false;
  });
  PressItem(3);
  EXPECT_EQ(0, list.GetItemCount());
  display->Key(QKEY_DOWN);
  display->Move(30, 30);
  Run();
  EXPECT_EQ(-1, list.GetFirstSelected());
}

class ComboTest : public UiTest
{
protected:
  void Fill(QCombo& combo)
  {
    for (const char* name : {"Asphalt", "Grass", "Gravel"})
      combo.AddString(name);
    combo.SetSelected(0);
  }
  void Open(const QCombo& combo)
  {
    display->Click(combo.rect.x + combo.rect.wid - 5, combo.rect.y + 5);
    Run();
    EXPECT_TRUE(combo.IsOpen());
  }
};

TEST_F(ComboTest, ChoosesByPressAndByKeys)
{
  for (const uint32_t flags : {0u, static_cast<uint32_t>(QCombo::LIST_ONLY)}) {
    QCombo combo(Shell(), {100, 100, 150, 24}, flags);
    Fill(combo);
    Open(combo);
    display->Click(110, 124 + 2 + 20 + 5); // the second line below
    Run();
    EXPECT_FALSE(combo.IsOpen());
    EXPECT_EQ("Grass", combo.GetText());
    EXPECT_EQ(1, Count(QEvent::CLICK, &combo));
    Open(combo);
    display->Key(QKEY_DOWN);
    Run();
    EXPECT_TRUE(combo.IsOpen()); // only on the way
    EXPECT_EQ("Grass", combo.GetText());
    display->Key(QKEY_ENTER);
    Run();
    EXPECT_EQ(2, combo.GetSelected());
    EXPECT_EQ(2, Count(QEvent::CLICK, &combo));
    events.clear();
  }
}

TEST_F(ComboTest, IsLeftWithoutAChoice)
{
  QCombo combo(Shell(), {100, 560, 150, 24}); // too low to open downwards
  Fill(combo);
  Open(combo);
  EXPECT_LT(Manager().OpenDialog()->RootRect().y, 560);
  combo.Open();
  display->Key(QKEY_ESC);
  Run();
  EXPECT_FALSE(combo.IsOpen());
  Open(combo);
  display->Click(700, 20);
  Run();
  EXPECT_FALSE(combo.IsOpen());
  Open(combo);
  display->CloseWindow();
  Run();
  EXPECT_FALSE(combo.IsOpen());
  EXPECT_TRUE(exits.empty());
  EXPECT_EQ(0, combo.GetSelected());
  EXPECT_EQ(0, Count(QEvent::CLICK, &combo));
  EXPECT_EQ(nullptr, Manager().GetActiveGroup());
}

TEST_F(ComboTest, GoesAwayWhileItIsOpen)
{
  auto combo = std::make_unique<QCombo>(Shell(), QRect{100, 100, 150, 24});
  Fill(*combo);
  Open(*combo);
  combo.reset();
  display->Click(110, 140);
  Run();
  EXPECT_EQ(nullptr, Manager().GetActiveGroup());
}

} // namespace
