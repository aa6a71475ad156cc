#include "app/widgets/widgets.h"
#include "ui/qcheck.h"
#include "ui/qgroup.h"
#include "ui/qradio.h"

namespace {

void AddChecks(QTabPage& page)
{
  page.Add<QGroup>(QRect{20, 20, 450, 230}, "Check boxes");
  page.Add<QCheck>(QRect{40, 50, 180, 20}, "Off");
  page.Add<QCheck>(QRect{40, 75, 180, 20}, "On", true);
  page.Add<QCheck>(QRect{40, 100, 180, 20}, "Off, disabled").Disable();
  page.Add<QCheck>(QRect{40, 125, 180, 20}, "On, disabled", true).Disable();
  page.Add<QCheck>(QRect{40, 160, 180, 20}, "On a face").checkFlags |= QCheck::FILLED;
  page.Add<QCheck>(QRect{40, 185, 180, 20}, "On a face, on", true).checkFlags |= QCheck::FILLED;
  page.Add<QCheck>(QRect{240, 50, 200, 25}, "25 pixels high", true);
  page.Add<QCheck>(QRect{240, 85, 126, 35}, "Object mode (camera)", true);
  page.Add<QCheck>(QRect{240, 130, 110, 20}, "A caption that is too long for its width");
}

void AddRadios(QTabPage& page)
{
  page.Add<QGroup>(QRect{490, 20, 450, 230}, "Radio buttons");
  const char* captions[] = {"Positions", "Track cameras", "Road splines", "Disabled"};
  for (int group = 0; group < 2; ++group) {
    const int x = 510 + group * 200;
    page.Add<QLabel>(QRect{x, 50, 180, 20}, group == 0 ? "Group 1" : "Group 2");
    for (int i = 0; i < 4; ++i) {
      QRadio& radio = page.Add<QRadio>(QRect{x, 75 + i * 25, 180, 20}, captions[i], group + 1);
      radio.SetState(i == group);
      if (i == 3)
        radio.Disable();
    }
  }
}

void AddLabels(QTabPage& page)
{
  page.Add<QGroup>(QRect{20, 270, 450, 200}, "Labels");
  page.Add<QLabel>(QRect{40, 300, 410, 20}, "At the left");
  page.Add<QLabel>(QRect{40, 322, 410, 20}, "In the middle", QAlign::CENTER);
  page.Add<QLabel>(QRect{40, 344, 410, 20}, "At the right", QAlign::RIGHT);
  page.Add<QLabel>(QRect{40, 366, 410, 20}, "In a colour of its own").SetColor({255, 220, 120});
  page.Add<QLabel>(QRect{40, 388, 410, 20}, "Disabled").Disable();
  page.Add<QLabel>(QRect{40, 410, 410, 40},
                   "A text that is wider than its rectangle goes on in the next line, as far as there is room for it; "
                   "its lines break at blanks.");
}

void AddGroups(QTabPage& page)
{
  page.Add<QGroup>(QRect{490, 270, 215, 90}, "With a background");
  page.Add<QGroup>(QRect{725, 270, 215, 90}, "Transparent").SetTransparent(true);
  page.Add<QGroup>(QRect{490, 380, 215, 90}, "A plate of its own").SetPlateColor({120, 60, 40});
  QGroup& disabled = page.Add<QGroup>(QRect{725, 380, 215, 90}, "Disabled");
  disabled.Disable();
}

} // namespace

void FillChoicePage(Widgets&, QTabPage& page)
{
  AddChecks(page);
  AddRadios(page);
  AddLabels(page);
  AddGroups(page);
}
