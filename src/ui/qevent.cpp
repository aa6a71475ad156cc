#include "ui/qevent.h"

#include "foundation/qreport.h"
#include "ui/qapp.h"
#include "ui/qwindow.h"

QEventQueue::QEventQueue() : ring(std::make_unique<QEvent[]>(CAPACITY))
{}

bool QEventQueue::Push(const QEvent& event)
{
  if (event.type == QEvent::EXPOSE)
    return true;
  // Only into the newest: a motion must not overtake the press or release that it was on its way to.
  if (event.type == QEvent::MOTIONNOTIFY && event.win && event.win->mergeMotion && count > 0) {
    QEvent& newest = At(count - 1);
    if (newest.type == QEvent::MOTIONNOTIFY && newest.win == event.win) {
      newest = event;
      return true;
    }
  }
  if (count == CAPACITY) {
    QWARN("QEventPush(); out of space");
    return false;
  }
  At(count++) = event;
  return true;
}

bool QEventQueue::Get(QEvent& event)
{
  if (count == 0)
    return false;
  event = ring[static_cast<size_t>(read)];
  read = (read + 1) % CAPACITY;
  --count;
  return true;
}

void QEventQueue::Forget(const QWindow* window)
{
  for (int i = 0; i < count; ++i)
    if (QEvent& event = At(i); event.win == window) {
      event.type = QEvent::NONE;
      event.win = nullptr;
    }
}

bool QEventPush(const QEvent& event)
{
  return app && app->GetEventQueue() && app->GetEventQueue()->Push(event);
}

bool QEventPending()
{
  return app && app->PumpEvents();
}

void QEventGet(QEvent& event)
{
  while (app && app->GetEventQueue() && !(QEventPending() && app->GetEventQueue()->Get(event)))
    app->GetDisplay().Sleep(1);
}
