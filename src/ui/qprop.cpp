#include "ui/qprop.h"

#include "ui/qapp.h"

#include <algorithm>

namespace {

constexpr int SHORTEST_KNOB = 14;

} // namespace

QProp::QProp(QWindow* owner, const QRect& area, bool upright) : QControl(owner, area, {}), vertical(upright)
{
  mergeMotion = true;
  Start(false);
}

void QProp::SetPosition(int v, bool repaint)
{
  position = std::clamp(v, min, max);
  if (repaint)
    Invalidate();
}

void QProp::SetRange(int lowest, int highest)
{
  min = lowest;
  max = std::max(lowest, highest);
  SetPosition(position);
}

void QProp::SetDisplayed(int n)
{
  displayed = std::max(n, 1);
  Invalidate();
}

void QProp::SetTotal(int n)
{
  total = std::max(n, 1);
  Invalidate();
}

QRect QProp::Knob() const
{
  const int room = Length() - 2;
  const auto wanted = static_cast<int>(int64_t{room} * displayed / std::max(displayed, total));
  const int length = std::clamp(wanted, std::min(SHORTEST_KNOB, room), std::max(room, 0));
  const int64_t span = std::max(int64_t{max} - min, int64_t{1});
  const int start = 1 + static_cast<int>((room - length) * (int64_t{position} - min) / span);
  return vertical ? QRect{1, start, rect.wid - 2, length} : QRect{start, 1, length, rect.hgt - 2};
}

int QProp::PositionAt(int knobStart) const
{
  const QRect knob = Knob();
  const int64_t room = Length() - 2 - (vertical ? knob.hgt : knob.wid);
  if (room <= 0)
    return min;
  const int64_t at = std::clamp<int64_t>(knobStart - 1, 0, room);
  return static_cast<int>(min + (at * (int64_t{max} - min) + room / 2) / room);
}

bool QProp::GoTo(int v, int type)
{
  const int before = position;
  SetPosition(v);
  if (position == before)
    return false;
  SendEvent(type);
  return true;
}

// Sliding isn't for everybody: it is shown to the parent alone.
bool QProp::Event(QEvent* event)
{
  if (event->type == QEvent::WHEEL) {
    GoTo(position + (event->n > 0 ? -1 : 1), QEvent::SLIDE);
    return true;
  }
  if (event->type == QEvent::SLIDE && event->win == this)
    return parent && parent->Event(event);
  return QControl::Event(event);
}

bool QProp::EvButtonPress(int button, int x, int y)
{
  if (button != 1)
    return false;
  const QRect knob = Knob();
  const int at = vertical ? y : x;
  const int start = vertical ? knob.y : knob.x;
  const int end = start + (vertical ? knob.hgt : knob.wid);
  if (at >= start && at < end) {
    dragging = true;
    dragOffset = at - start;
    GrabPointer();
    Invalidate();
  } else {
    GoTo(position + (at < start ? -displayed : displayed), QEvent::CLICK);
  }
  return true;
}

bool QProp::EvMotionNotify(int x, int y)
{
  if (!dragging)
    return false;
  GoTo(PositionAt((vertical ? y : x) - dragOffset), QEvent::SLIDE);
  return true;
}

bool QProp::EvButtonRelease(int button, int, int)
{
  if (button != 1 || !dragging)
    return false;
  dragging = false;
  ReleasePointer();
  Invalidate();
  SendEvent(QEvent::CLICK);
  return true;
}

bool QProp::EvKeyPress(int key, int x, int y)
{
  switch (key) {
  case QKEY_LEFT:
  case QKEY_UP:
    GoTo(position - 1, QEvent::CLICK);
    return true;
  case QKEY_RIGHT:
  case QKEY_DOWN:
    GoTo(position + 1, QEvent::CLICK);
    return true;
  case QKEY_HOME:
    GoTo(min, QEvent::CLICK);
    return true;
  case QKEY_END:
    GoTo(max, QEvent::CLICK);
    return true;
  default:
    return QControl::EvKeyPress(key, x, y);
  }
}

void QProp::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  cv.Begin();
  cv.SetBlending(true);
  cv.SetColor(0, 0, 0, 90);
  cv.Rectfill(0, 0, rect.wid, rect.hgt);
  if (max > min && IsEnabled()) {
    const QRect knob = Knob();
    cv.SetColor(dragging ? PX_PRESSED : PX_FACE, 255);
    cv.Rectfill(knob);
    cv.Edges(knob, QColor(255, 255, 255, 70), QColor(0, 0, 0, 110));
  }
  if (HasFocus()) {
    cv.SetColor(PX_FOCUS);
    cv.Rectangle(0, 0, rect.wid, rect.hgt);
  }
  cv.End();
}
