#include "app/widgets/widgets.h"
#include "ui/qcheck.h"
#include "ui/qgroup.h"
#include "ui/qprogress.h"

namespace {

void AddBars(Widgets& widgets, QTabPage& page)
{
  page.Add<QGroup>(QRect{20, 20, 450, 250}, "Progress bars");
  const struct
  {
    const char* text;
    QAlign align;
    int value, total;
  } bars[] = {
      {"0 of 100, in the middle", QAlign::CENTER, 0, 100},
      {"40 of 100, at the left", QAlign::LEFT, 40, 100},
      {"70 of 100, at the right", QAlign::RIGHT, 70, 100},
      {"250 of 100", QAlign::CENTER, 250, 100},
      {"of nothing", QAlign::CENTER, 0, 0},
  };
  int y = 50;
  for (const auto& b : bars) {
    QProgress& bar = page.Add<QProgress>(QRect{40, y, 410, 24});
    bar.SetProgress(b.value, b.total);
    bar.SetAlign(b.align);
    bar.SetText(b.text);
    y += 34;
  }
  QProgress& moving = page.Add<QProgress>(QRect{40, y, 410, 24});
  widgets.OnIdle([&moving] {
    constexpr int TENTHS = 100; // of a second, from empty to full
    const int now = static_cast<int>(app->GetDisplay().Clock() / 100 % (TENTHS + 1));
    if (now == moving.GetValue())
      return;
    moving.SetProgress(now, TENTHS);
    moving.SetText(std::to_string(now) + "%");
  });
}

void AddTabs(QTabPage& page)
{
  page.Add<QGroup>(QRect{490, 20, 450, 380}, "Tab control");
  auto& tabs = page.Add<QTabControl>(QRect{510, 50, 340, 310});
  const char* titles[] = {"Groups", "Creation", "Physics", "Joint", "Bone Anim."};
  for (const char* title : titles) {
    QTabPage& inner = tabs.AddPage(title);
    inner.Add<QLabel>(QRect{12, 14, 300, 20}, std::string("Page ") + title);
    inner.Add<QButton>(QRect{12, 40, 126, 35}, std::string("Button of ") + title);
    inner.Add<QCheck>(QRect{12, 90, 200, 20}, "Freeze initially");
  }
}

} // namespace

void FillProgressPage(Widgets& widgets, QTabPage& page)
{
  AddBars(widgets, page);
  AddTabs(page);
}
