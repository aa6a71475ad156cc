#include "ui/qbutton.h"
#include "ui/qcontrol.h"
#include "ui/uifixture.h"

namespace {

// Writes down what reaches it.
class Listener : public QWindow
{
public:
  Listener(QWindow* owner, const QRect& area) : QWindow(owner, area) { Create(); }
  bool Event(QEvent* event) override
  {
    seen.push_back(*event);
    if (onEvent)
      onEvent(*event);
    return uses;
  }
  std::vector<int> Types() const
  {
    std::vector<int> types;
    for (const QEvent& event : seen)
      types.push_back(event.type);
    return types;
  }
  std::vector<QEvent> seen;
  std::function<void(const QEvent&)> onEvent;
  bool uses = true;
};

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
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    display->now += 10000;
    Listener window(Shell(), {0, 0, 100, 100});
    for (const Step& step : c.steps) {
      display->now += step.wait;
      display->Click(step.x, 10, step.button);
      Run();
    }
    int doubles = 0;
    for (size_t i = 0; i < window.seen.size(); ++i)
      if (window.seen[i].type == T::DOUBLECLICK) {
        ++doubles;
        EXPECT_EQ(T::BUTTONPRESS, window.seen[i - 1].type);
        EXPECT_EQ(T::BUTTONRELEASE, window.seen[i + 1].type);
      }
    EXPECT_EQ(c.doubles, doubles);
  }
}

} // namespace
