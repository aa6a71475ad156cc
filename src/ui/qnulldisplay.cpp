#include "ui/qnulldisplay.h"

#include "ui/qtext.h"
#include "ui/qwindow.h"

#include <array>

bool QNullDisplay::CreateWindow(const QDisplayWindow& wanted)
{
  window = wanted;
  QRect& r = window.rect;
  if (wanted.fullScreen)
    r = workArea;
  if (r.x == -1)
    r.x = workArea.x + (workArea.wid - r.wid) / 2;
  if (r.y == -1)
    r.y = workArea.y + (workArea.hgt - r.hgt) / 2;
  title = wanted.title;
  exists = true;
  return true;
}

void QNullDisplay::MoveWindow(int x, int y)
{
  window.rect.x = x;
  window.rect.y = y;
}

void QNullDisplay::SizeWindow(int wid, int hgt)
{
  window.rect.wid = wid;
  window.rect.hgt = hgt;
}

bool QNullDisplay::NextEvent(QEvent& event)
{
  const auto isReady = [this] { return !steps.empty() && (!steps.front().ready || steps.front().ready()); };
  if (raws.empty() && isReady()) {
    const Step step = std::move(steps.front());
    steps.pop_front();
    step.run();
  }
  if (raws.empty() && !isReady() && ++idle > idleLimit) {
    ranDry = true;
    idle = 0;
    CloseWindow();
  }
  if (raws.empty())
    return false;
  if (!steps.empty())
    idle = 0;
  event = raws.front();
  raws.pop_front();
  return true;
}

void QNullDisplay::PlacePointer(int x, int y)
{
  pointerX = x;
  pointerY = y;
}

void QNullDisplay::PointerPosition(int& x, int& y) const
{
  x = window.rect.x + pointerX;
  y = window.rect.y + pointerY;
}

void QNullDisplay::KeyDown(int key, char32_t text)
{
  QEvent event;
  event.type = QEvent::KEYPRESS;
  event.n = key;
  event.text = text;
  Push(event);
}

void QNullDisplay::KeyUp(int key)
{
  QEvent event;
  event.type = QEvent::KEYRELEASE;
  event.n = key;
  Push(event);
}

void QNullDisplay::Key(int code)
{
  constexpr std::array<std::array<int, 2>, 3> MODIFIERS = {
      {{QMOD_SHIFT, QKEY_SHIFT_KEY}, {QMOD_CTRL, QKEY_CTRL_KEY}, {QMOD_ALT, QKEY_ALT_KEY}}};
  for (const auto& [bit, key] : MODIFIERS)
    if (code & bit)
      KeyDown(key);
  const int key = QKeyOf(code);
  char32_t text = 0;
  if (!(code & (QMOD_CTRL | QMOD_ALT))) {
    if (key >= 'A' && key <= 'Z')
      text = static_cast<char32_t>(code & QMOD_SHIFT ? key : key - 'A' + 'a');
    else if ((key >= '0' && key <= '9') || key == QKEY_SPACE)
      text = static_cast<char32_t>(key);
  }
  KeyDown(key, text);
  KeyUp(key);
  for (const auto& [bit, modifier] : MODIFIERS)
    if (code & bit)
      KeyUp(modifier);
}

void QNullDisplay::Type(std::string_view text)
{
  for (size_t at = 0; at < text.size();) {
    const char32_t c = QNextChar(text, at);
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const int key = letter                               ? static_cast<int>(c & ~0x20u)
                    : c == ' ' || (c >= '0' && c <= '9') ? static_cast<int>(c)
                                                         : QKEY_TEXT;
    KeyDown(key, c);
    KeyUp(key);
  }
}

void QNullDisplay::Move(int x, int y)
{
  pointerX = x;
  pointerY = y;
  QEvent event;
  event.type = QEvent::MOTIONNOTIFY;
  event.xRoot = x;
  event.yRoot = y;
  Push(event);
}

void QNullDisplay::ButtonDown(int button)
{
  QEvent event;
  event.type = QEvent::BUTTONPRESS;
  event.n = button;
  event.xRoot = pointerX;
  event.yRoot = pointerY;
  Push(event);
}

void QNullDisplay::ButtonUp(int button)
{
  QEvent event;
  event.type = QEvent::BUTTONRELEASE;
  event.n = button;
  event.xRoot = pointerX;
  event.yRoot = pointerY;
  Push(event);
}

void QNullDisplay::Click(int x, int y, int button)
{
  Move(x, y);
  ButtonDown(button);
  ButtonUp(button);
}

void QNullDisplay::ClickOn(const QWindow& control)
{
  const QRect r = control.RootRect();
  Click(r.x + r.wid / 2, r.y + r.hgt / 2);
}

void QNullDisplay::Wheel(int delta)
{
  QEvent event;
  event.type = QEvent::WHEEL;
  event.n = delta;
  event.xRoot = pointerX;
  event.yRoot = pointerY;
  Push(event);
}

void QNullDisplay::CloseWindow()
{
  QEvent event;
  event.type = QEvent::CLOSE;
  Push(event);
}

void QNullDisplay::Focus(bool gained)
{
  QEvent event;
  event.type = QEvent::APPFOCUS;
  event.n = gained;
  Push(event);
}
