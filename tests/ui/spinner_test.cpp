#include "ui/qspinner.h"
#include "ui/uifixture.h"

#include <cmath>

namespace {

class SpinnerTest : public UiTest
{};

TEST_F(SpinnerTest, StepsThePartUnderTheCursor)
{
  QSpinner spinner(Shell(), {100, 100, 150, 24}, 3);
  for (int i = 0; i < 3; ++i)
    spinner.SetRange(i, 0, 59);
  spinner.SetDecimals(2, 2);
  spinner.SetStep(2, 0.25);
  EXPECT_EQ("0:0:0.00", spinner.GetText());
  spinner.GetEdit().Goto(2);
  EXPECT_EQ(1, spinner.GetCurrentPart());
  display->Click(245, 104);
  display->Click(245, 104);
  Run();
  EXPECT_EQ("0:2:0.00", spinner.GetText());
  EXPECT_EQ(2, Count(QEvent::CLICK, &spinner));
  display->Click(245, 120);
  Run();
  EXPECT_EQ("0:1:0.00", spinner.GetText());
  Manager().SetKeyboardFocus(&spinner.GetEdit());
  spinner.GetEdit().Goto(spinner.GetText().size());
  display->Key(QKEY_UP);
  display->Key(QKEY_UP);
  display->Key(QKEY_DOWN);
  Run();
  EXPECT_EQ("0:1:0.25", spinner.GetText());
  spinner.SetValue(0, 100);
  EXPECT_EQ(59, spinner.GetValue(0));
}

TEST_F(SpinnerTest, TakesWhatIsTypedAndNothingElse)
{
  QSpinner spinner(Shell(), {100, 100, 150, 24});
  spinner.SetRange(0, -10, 10);
  spinner.SetDecimals(0, 3);
  spinner.SetValue(0, 2.5);
  const struct
  {
    const char* typed;
    double value;
    const char* shown;
  } cases[] = {{"7.25", 7.25, "7.250"},       {"3,5", 3.5, "3.500"},     {"1e9", 10, "10.000"},
               {"-0.0001", -0.0001, "0.000"}, {"abc", -0.0001, "0.000"}, {"", -0.0001, "0.000"},
               {"nan", -0.0001, "0.000"},     {"4 4", 4, "4.000"}};
  for (const auto& c : cases) {
    Manager().SetKeyboardFocus(&spinner.GetEdit());
    spinner.GetEdit().SelectAll();
    display->Key(QKEY_DELETE);
    display->Type(c.typed);
    display->Key(QKEY_ENTER);
    Run();
    EXPECT_DOUBLE_EQ(c.value, spinner.GetValue(0)) << c.typed;
    EXPECT_EQ(c.shown, spinner.GetText());
  }
  spinner.SetValue(0, NAN);
  EXPECT_DOUBLE_EQ(4, spinner.GetValue(0));
}

TEST_F(SpinnerTest, EnterMovesTheFocusOn)
{
  QSpinner first(Shell(), {100, 100, 150, 24}), second(Shell(), {100, 140, 150, 24});
  Manager().SetKeyboardFocus(&first.GetEdit());
  display->Type("5");
  display->Key(QKEY_ENTER);
  Run();
  EXPECT_EQ(&second.GetEdit(), Manager().GetFocus());
  EXPECT_EQ(1, Count(QEvent::CLICK, &first));
}

TEST_F(SpinnerTest, ReportsPartsThatItDoesNotHave)
{
  ReportCapture reports;
  QSpinner spinner(Shell(), {100, 100, 150, 24});
  EXPECT_EQ(0, spinner.GetValue(1));
  spinner.SetStep(-1, 1);
  EXPECT_TRUE(reports.Contains("QSpinner:GetValue(1) out of range - returning 0"));
  EXPECT_TRUE(reports.Contains("QSpinner:SetStep(-1) out of range"));
}

} // namespace
