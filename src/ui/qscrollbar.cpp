#include "ui/qscrollbar.h"

#include <algorithm>

namespace {

QRect Along(const QRect& area, bool vertical, int from, int length)
{
  return vertical ? QRect{0, from, area.wid, length} : QRect{from, 0, length, area.hgt};
}

int LengthOf(const QRect& area, bool vertical)
{
  return vertical ? area.hgt : area.wid;
}

// Square, unless the bar is too short for that.
int ArrowLength(const QRect& area, bool vertical)
{
  return std::min(vertical ? area.wid : area.hgt, LengthOf(area, vertical) / 3);
}

} // namespace

QScrollBar::QScrollBar(QWindow* owner, const QRect& area, bool vertical) : QControl(owner, area, {})
{
  Start(false);
  const int length = LengthOf(area, vertical), arrow = ArrowLength(area, vertical);
  back = std::make_unique<QStepButton>(this, Along(area, vertical, 0, arrow), vertical ? "$UP" : "$LEFT");
  forward =
      std::make_unique<QStepButton>(this, Along(area, vertical, length - arrow, arrow), vertical ? "$DOWN" : "$RIGHT");
  prop = std::make_unique<QProp>(this, Along(area, vertical, arrow, length - 2 * arrow), vertical);
}

void QScrollBar::SetLines(int total, int displayed)
{
  prop->SetTotal(total);
  prop->SetDisplayed(displayed);
  prop->SetRange(0, std::max(total - displayed, 0));
}

bool QScrollBar::Event(QEvent* event)
{
  if (event->win == back.get() || event->win == forward.get()) {
    // Behind a double click comes the click of its second release.
    if (event->type == QEvent::CLICK) {
      prop->SetPosition(prop->GetPosition() + (event->win == back.get() ? -1 : 1));
      SendEvent(QEvent::CLICK);
    }
    if (event->type == QEvent::CLICK || event->type == QEvent::DOUBLECLICK)
      return true;
  }
  if (event->win == prop.get() && (event->type == QEvent::CLICK || event->type == QEvent::SLIDE)) {
    SendEvent(event->type);
    return true;
  }
  if (event->win == this && event->type == QEvent::SLIDE)
    return parent && parent->Event(event);
  return QControl::Event(event);
}
