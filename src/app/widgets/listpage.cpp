#include "app/widgets/widgets.h"
#include "ui/qcombo.h"
#include "ui/qgroup.h"
#include "ui/qlistbox.h"
#include "ui/qspinner.h"

namespace {

constexpr const char* KINDS[] = {"tree", "stand", "kerb", "barrier", "flag", "light", "post"};

void AddLists(QTabPage& page)
{
  page.Add<QGroup>(QRect{20, 20, 290, 560}, "10,000 entries");
  QListBox& many = page.Add<QListBox>(QRect{40, 50, 250, 510});
  for (int i = 0; i < 10000; ++i)
    many.AddString(std::string(KINDS[i % std::size(KINDS)]) + " " + std::to_string(i));
  page.Add<QGroup>(QRect{330, 20, 290, 250}, "Several can be chosen");
  QListBox& several = page.Add<QListBox>(QRect{350, 50, 250, 200}, QListBox::MULTI_SELECT + 0u);
  page.Add<QGroup>(QRect{330, 290, 290, 130}, "Disabled");
  QListBox& disabled = page.Add<QListBox>(QRect{350, 320, 250, 80});
  for (const char* kind : KINDS) {
    several.AddString(kind);
    disabled.AddString(kind);
  }
  disabled.Disable();
  page.Add<QGroup>(QRect{330, 440, 290, 140}, "Nothing in it");
  page.Add<QListBox>(QRect{350, 470, 250, 90});
}

void AddCombos(QTabPage& page)
{
  page.Add<QGroup>(QRect{640, 20, 300, 150}, "Combos");
  const struct
  {
    const char* caption;
    uint32_t flags;
  } combos[] = {{"With a field", 0}, {"List only", QCombo::LIST_ONLY}, {"Disabled", 0}};
  int y = 50;
  for (const auto& c : combos) {
    page.Add<QLabel>(QRect{660, y + 2, 90, 20}, c.caption);
    QCombo& combo = page.Add<QCombo>(QRect{760, y, 160, 24}, c.flags);
    for (int i = 0; i < 40; ++i)
      combo.AddString(std::string(KINDS[static_cast<size_t>(i) % std::size(KINDS)]) + " " + std::to_string(i));
    combo.SetSelected(3);
    if (y > 100)
      combo.Disable();
    y += 34;
  }
}

void AddSpinners(QTabPage& page)
{
  page.Add<QGroup>(QRect{640, 190, 300, 150}, "Spinners");
  page.Add<QLabel>(QRect{660, 222, 90, 20}, "0 to 10");
  page.Add<QSpinner>(QRect{760, 220, 90, 24}).SetRange(0, 0, 10);
  page.Add<QLabel>(QRect{660, 256, 90, 20}, "In hundredths");
  QSpinner& fine = page.Add<QSpinner>(QRect{760, 254, 90, 24});
  fine.SetDecimals(0, 2);
  fine.SetStep(0, 0.01);
  fine.SetValue(0, 1.5);
  page.Add<QLabel>(QRect{660, 290, 90, 20}, "Three parts");
  QSpinner& time = page.Add<QSpinner>(QRect{760, 288, 160, 24}, 3);
  for (int i = 0; i < 3; ++i)
    time.SetRange(i, 0, i == 2 ? 999 : 59);
}

void AddBars(Widgets& widgets, QTabPage& page)
{
  page.Add<QGroup>(QRect{640, 360, 300, 220}, "Scroll bars");
  QLabel& position = page.Add<QLabel>(QRect{660, 390, 200, 20}, "At 0 and 0");
  QScrollBar& across = page.Add<QScrollBar>(QRect{660, 540, 226, QScrollBar::THICKNESS}, false);
  QScrollBar& down = page.Add<QScrollBar>(QRect{903, 390, QScrollBar::THICKNESS, 150});
  across.SetLines(1000, 100);
  down.SetLines(50, 20);
  widgets.OnIdle([&position, &across, &down] {
    position.SetText("At " + std::to_string(across.GetPosition()) + " and " + std::to_string(down.GetPosition()));
  });
}

} // namespace

void FillListPage(Widgets& widgets, QTabPage& page)
{
  AddLists(page);
  AddCombos(page);
  AddSpinners(page);
  AddBars(widgets, page);
}
