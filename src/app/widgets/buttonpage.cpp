#include "app/widgets/widgets.h"
#include "foundation/qbitmap.h"
#include "geometry/dtexture.h"
#include "ui/qgroup.h"

namespace {

constexpr QRect PICTURE{0, 0, 128, 32};

// A stripe from a dark colour to a light one.
std::unique_ptr<DTexture> Stripe(const QColor& from, const QColor& to)
{
  auto bitmap = std::make_unique<QBitMap>(32, PICTURE.wid, PICTURE.hgt);
  for (int y = 0; y < PICTURE.hgt; ++y) {
    const auto mix = [y](int a, int b) { return a + (b - a) * y / (PICTURE.hgt - 1); };
    const QRect row{0, y, PICTURE.wid, 1};
    bitmap->Fill(&row, QColor(mix(from.GetR(), to.GetR()), mix(from.GetG(), to.GetG()), mix(from.GetB(), to.GetB())));
  }
  return std::make_unique<DBitMapTexture>(std::move(bitmap));
}

// The states that a flag or a word brings about, as buttons of one look. Caption is what the button's constructor
// takes, and with it chooses the look.
template <typename Caption>
void AddLook(QTabPage& page, int left, const char* title)
{
  page.Add<QGroup>(QRect{left, 20, 450, 170}, title);
  const auto add = [&page, left](int column, int row, const char* caption, uint32_t flag) -> QButton& {
    QButton& button = page.Add<QButton>(QRect{left + 20 + column * 140, 45 + row * 45, 130, 35}, Caption(caption));
    button.buttonFlags |= flag;
    return button;
  };
  add(0, 0, "Normal", 0);
  add(1, 0, "Disabled", 0).Disable();
  add(2, 0, "Without mouse", 0).buttonFlags &= ~static_cast<uint32_t>(QButton::MOUSE);
  add(0, 1, "Square", QButton::SQUARE);
  add(1, 1, "No face", QButton::NO_FACE);
  add(2, 1, "Highlight", QButton::HIGHLIGHT);
  add(0, 2, "Default", QButton::DEFAULT);
  add(1, 2, "Declare pit out speedlimit", 0);
  add(2, 2, "Two lines\nof text", 0);
}

void AddShortcuts(QTabPage& page)
{
  page.Add<QGroup>(QRect{490, 210, 450, 90}, "Shortcuts");
  page.Add<QButton>(QRect{510, 240, 130, 35}, "Save (Ctrl-S)").SetShortcut(QMOD_CTRL | 'S');
  QButton& passes = page.Add<QButton>(QRect{650, 240, 130, 35}, "Key goes on (F5)");
  passes.SetShortcut(QKEY_F1 + 4);
  passes.buttonFlags |= QButton::SHORTCUT_PASSES;
  QButton& sends = page.Add<QButton>(QRect{790, 240, 130, 35}, "Sends Ctrl-G");
  sends.SetShortcut(QMOD_CTRL | 'G');
  sends.eventType = QEvent::KEYPRESS;
}

} // namespace

void FillButtonPage(Widgets& widgets, QTabPage& page)
{
  AddLook<std::string>(page, 20, "The interface's look");
  AddLook<qstring>(page, 490, "Black and greys");

  page.Add<QGroup>(QRect{20, 210, 450, 90}, "Arrows");
  int x = 40;
  for (const char* arrow : {"$REWIND", "$REVERSE", "$PLAY", "$FORWARD", "$LEFT", "$RIGHT", "$UP", "$DOWN"}) {
    page.Add<QButton>(QRect{x, 240, 40, 35}, arrow);
    x += 50;
  }
  AddShortcuts(page);

  page.Add<QGroup>(QRect{20, 320, 450, 90}, "Pictures");
  DTexture* up = widgets.KeepPicture(Stripe({110, 208, 221}, {39, 73, 78}));
  DTexture* down = widgets.KeepPicture(Stripe({39, 73, 78}, {110, 208, 221}));
  page.Add<QButton>(QRect{40, 350, 128, 32}, "Up and down").SetTextures(up, PICTURE, down, PICTURE);
  page.Add<QButton>(QRect{180, 350, 128, 32}, "Down alone").SetTextures(nullptr, PICTURE, down, PICTURE);

  page.Add<QGroup>(QRect{490, 320, 450, 90}, "As the editor has them");
  page.Add<QButton>(QRect{510, 350, 126, 35}, "Make track_template.shd");
  page.Add<QButton>(QRect{646, 350, 165, 30}, "Declare grid pos (Ctrl-G)");
}
