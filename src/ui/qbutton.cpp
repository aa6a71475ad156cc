#include "ui/qbutton.h"

#include "ui/qapp.h"
#include "ui/qarrow.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

QButton::QButton(QWindow* owner, const QRect& area, std::string_view caption) : QControl(owner, area, caption)
{
  Start(true);
}

void QButton::SetShortcut(int key)
{
  shortcut = key;
  catchKeys = key != 0 ? catchKeys | CATCH_KEYS : catchKeys & ~CATCH_KEYS;
}

void QButton::SetTextures(DTexture* upTexture, const QRect& upSource, DTexture* downTexture, const QRect& downSource)
{
  up = {upTexture, upSource};
  down = {downTexture, downSource};
  Invalidate();
}

bool QButton::Event(QEvent* event)
{
  // What a button sent itself must not press it again.
  if (event->IsKey() && event->xRoot == QEvent::MAGIC)
    return false;
  return QControl::Event(event);
}

bool QButton::EvButtonPress(int button, int, int)
{
  if (button != 1 || !(buttonFlags & MOUSE))
    return false;
  TakeFocus();
  heldKey = 0;
  state = PRESSED;
  Invalidate();
  GrabPointer();
  return true;
}

bool QButton::EvMotionNotify(int x, int y)
{
  if (state == UP || heldKey != 0)
    return false;
  const State now = IsInside(x, y) ? PRESSED : PRESSED_OUTSIDE;
  if (now != state) {
    state = now;
    Invalidate();
  }
  return true;
}

bool QButton::EvButtonRelease(int button, int x, int y)
{
  if (button != 1 || state == UP || heldKey != 0)
    return false;
  state = UP;
  Invalidate();
  ReleasePointer();
  if (IsInside(x, y))
    SendClick();
  return true;
}

void QButton::SendClick()
{
  if (eventType != QEvent::KEYPRESS || shortcut == 0) {
    SendEvent(eventType == QEvent::KEYPRESS ? static_cast<int>(QEvent::CLICK) : eventType);
    return;
  }
  QEvent event;
  event.type = QEvent::KEYPRESS;
  event.n = shortcut;
  event.win = this;
  event.xRoot = event.yRoot = QEvent::MAGIC;
  QEventPush(event);
}

void QButton::Press()
{
  const uint32_t before = buttonFlags;
  buttonFlags |= MOUSE;
  EvButtonPress(1, rect.wid / 2, rect.hgt / 2);
  app->GetDisplay().Sleep(1);
  EvButtonRelease(1, rect.wid / 2, rect.hgt / 2);
  buttonFlags = before;
}

bool QButton::EvKeyPress(int key, int x, int y)
{
  if (shortcut != 0 && key == shortcut) {
    Press();
    return !(buttonFlags & SHORTCUT_PASSES);
  }
  if ((key != QKEY_SPACE && key != QKEY_ENTER) || !TakesKeys() || (state != UP && heldKey == 0))
    return QControl::EvKeyPress(key, x, y);
  heldKey = key; // a held key repeats, and is one press all the same
  state = PRESSED;
  Invalidate();
  return true;
}

bool QButton::EvKeyRelease(int key, int x, int y)
{
  if (heldKey == 0 || QKeyOf(key) != heldKey)
    return QControl::EvKeyRelease(key, x, y);
  heldKey = 0;
  state = UP;
  Invalidate();
  SendClick();
  return true;
}

bool QButton::EvFocusOut(QEvent* event)
{
  if (heldKey != 0) {
    heldKey = 0;
    state = UP;
  }
  return QControl::EvFocusOut(event);
}

void QButton::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  const bool pressed = state == PRESSED;
  cv.Begin();
  if (!PaintPicture(pressed ? down : up)) {
    QRect face{0, 0, rect.wid, rect.hgt};
    if (buttonFlags & DEFAULT) {
      cv.SetColor(PX_FOCUS, 160);
      cv.SetBlending(true);
      cv.Rectangle(face);
      face = {4, 4, rect.wid - 8, rect.hgt - 8};
    }
    PaintFace(face, pressed);
    PaintCaption(face, pressed ? 1 : 0);
  }
  cv.End();
}

bool QButton::PaintPicture(const Picture& picture)
{
  if (!picture.texture)
    return false;
  cv.SetColor(PX_WHITE);
  cv.SetBlending(true);
  PaintTextureStretched(picture.texture, picture.source, {0, 0, rect.wid, rect.hgt});
  return true;
}

void QButton::PaintFace(const QRect& face, bool pressed)
{
  const QRect inner{face.x + 1, face.y + 1, face.wid - 2, face.hgt - 2};
  cv.SetBlending(true);
  if (!(buttonFlags & NO_FACE)) {
    if (pressed)
      cv.SetColor(PX_PRESSED);
    else
      cv.SetColor(PX_FACE, !IsEnabled() ? 96 : IsHot() ? 255 : 200);
    cv.Rectfill(inner);
  }
  cv.SetColor(PX_FACE, 128);
  cv.Rectangle(face);
  if (!(buttonFlags & (NO_FACE | SQUARE))) {
    cv.Edges(inner, pressed ? colors.shadow : colors.shine, pressed ? colors.shine : colors.shadow);
  }
  if (HasFocus() || buttonFlags & HIGHLIGHT || IsHot()) {
    cv.SetColor(PX_FOCUS, HasFocus() || buttonFlags & HIGHLIGHT ? 255 : 110);
    cv.Rectangle(face);
  }
}

void QButton::PaintCaption(const QRect& face, int offset)
{
  const QRect room{face.x + 5 + offset, face.y + offset, face.wid - 10, face.hgt};
  const int alpha = IsEnabled() ? 255 : 110;
  cv.SetBlending(true);
  cv.SetColor(colors.text.GetR(), colors.text.GetG(), colors.text.GetB(), alpha);
  if (text.starts_with('$') && QPaintArrow(cv, text, room))
    return;
  const QFittedText fitted = QFitText(*GetFont(), text, room.wid, room.hgt);
  cv.SetFont(fitted.font);
  const QColor color = cv.GetColor();
  if (color.GetR() + color.GetG() + color.GetB() > 384) { // under light letters only
    cv.SetColor(0, 0, 0, alpha / 2);
    cv.TextML(fitted.lines, {room.x + 1, room.y + 1, room.wid, room.hgt});
  }
  cv.SetColor(color);
  cv.TextML(fitted.lines, room);
}
