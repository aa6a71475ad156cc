// The window manager's way of an event: from what the platform told to the window that uses it.

#include "ui/qapp.h"
#include "ui/qwindow.h"
#include "ui/qwindowmanager.h"

#include <algorithm>

namespace {

constexpr uint32_t DOUBLE_CLICK_TIME = 300; // milliseconds

void MakeRelative(QEvent& event, const QWindow& w)
{
  int x = 0, y = 0;
  w.GetRootPos(x, y);
  event.x = event.xRoot - x;
  event.y = event.yRoot - y;
}

// What a person does with mouse or keyboard, or a control's answer to it. Releases aren't among them: whoever keeps
// track of what is held down must hear of them.
bool IsDemand(int type)
{
  return type == QEvent::KEYPRESS || type == QEvent::BUTTONPRESS || type == QEvent::MOTIONNOTIFY ||
         type == QEvent::WHEEL || type == QEvent::DOUBLECLICK || type == QEvent::CLICK || type == QEvent::SLIDE;
}

bool GoesToParents(int type)
{
  return (type >= QEvent::KEYPRESS && type <= QEvent::MOTIONNOTIFY) || type == QEvent::DOUBLECLICK ||
         type == QEvent::CLICK || type == QEvent::FOCUSIN || type == QEvent::FOCUSOUT;
}

} // namespace

void QWindowManager::Convert(const QEvent& raw)
{
  QEvent event = raw;
  event.p = static_cast<uint32_t>(app->GetDisplay().Clock());
  if (event.IsPointer()) {
    ConvertPointer(event);
    return;
  }
  if (event.IsKey()) {
    event.xRoot = pointerX;
    event.yRoot = pointerY;
    event.win = focus ? focus : FindWindowAt(nullptr, pointerX, pointerY);
    // A pointer outside the window mustn't make the keyboard dead.
    if (!event.win)
      event.win = app->GetShell();
    if (event.win)
      MakeRelative(event, *event.win);
  } else {
    event.win = app->GetShell();
    if (event.type == QEvent::EXPOSE)
      RequestPaint();
  }
  QEventPush(event);
}

void QWindowManager::ConvertPointer(QEvent event)
{
  pointerX = event.xRoot;
  pointerY = event.yRoot;
  QWindow* target = grabbed ? grabbed : FindWindowAt(nullptr, event.xRoot, event.yRoot);
  event.win = target;
  if (target)
    MakeRelative(event, *target);
  if (target != pointerWin) {
    QEvent crossing = event;
    crossing.type = QEvent::ENTER;
    if (target)
      QEventPush(crossing);
    crossing.type = QEvent::LEAVE;
    crossing.win = pointerWin;
    if (pointerWin) {
      MakeRelative(crossing, *pointerWin);
      QEventPush(crossing);
    }
    pointerWin = target;
  }
  if (event.xRoot != lastPress.x || event.yRoot != lastPress.y)
    lastPress.button = 0;
  QEventPush(event);
  if (event.type != QEvent::BUTTONPRESS)
    return;
  if (event.n == lastPress.button && event.p - lastPress.time <= DOUBLE_CLICK_TIME) {
    QEvent twice = event;
    twice.type = QEvent::DOUBLECLICK;
    QEventPush(twice);
  }
  lastPress = {event.p, event.n, event.xRoot, event.yRoot};
}

// Shows the event to the window, once. False when it isn't used.
bool QWindowManager::Offer(QWindow* w, const QEvent& event, std::vector<const QWindow*>& offered)
{
  return std::find(offered.begin(), offered.end(), w) == offered.end() && OfferFirst(w, event, offered);
}

bool QWindowManager::OfferFirst(QWindow* w, const QEvent& event, std::vector<const QWindow*>& offered)
{
  offered.push_back(w);
  QEvent local = event;
  if (event.xRoot != QEvent::MAGIC)
    MakeRelative(local, *w);
  return w->Event(&local);
}

// Shortcuts work whoever has the focus. The list is copied, since a handler may open or close windows.
bool QWindowManager::OfferKeyCatchers(const QEvent& event, std::vector<const QWindow*>& offered)
{
  std::vector<QWindow*> catchers;
  for (QWindow* w : windows)
    if (w->catchKeys & QWindow::CATCH_KEYS && w->IsVisible() && w->IsEnabled() && IsInActiveGroup(w))
      catchers.push_back(w);
  for (QWindow* w : catchers)
    if (Contains(w) && OfferFirst(w, event, offered))
      return true;
  return false;
}

bool QWindowManager::Bubble(const QEvent& event, std::vector<const QWindow*>& offered)
{
  for (QWindow* w = event.win; w; w = w->parent) {
    if (event.type != QEvent::EXPOSE && (!w->IsEnabled() || !IsInActiveGroup(w)))
      return false;
    if (Offer(w, event, offered) || !Contains(w))
      return true;
    if (!GoesToParents(event.type))
      return false;
  }
  return false;
}

bool QWindowManager::ProcessEvent(QEvent* event)
{
  if (!event->win || !Contains(event->win))
    return false;
  // The application mustn't act on what was meant for a window behind a dialog either.
  QWindow* held = event->IsPointer() ? grabbed : event->IsKey() ? focus : nullptr;
  const bool heldTakesPart = held && IsInActiveGroup(held) && held->IsVisible() && held->IsEnabled();
  if (IsDemand(event->type) && !heldTakesPart && !IsInActiveGroup(event->win)) {
    if (event->type == QEvent::BUTTONPRESS && activeGroup->flags & QWindow::POPUP)
      activeGroup->SendEvent(QEvent::CLOSE);
    return true;
  }

  std::vector<const QWindow*> offered;
  // Who wants to leave the program leaves the dialog first.
  if (event->type == QEvent::CLOSE && activeGroup && !IsInActiveGroup(event->win))
    return Offer(activeGroup, *event, offered);
  // Before the focus: a shortcut works while a field is being typed into.
  if (event->type == QEvent::KEYPRESS && OfferKeyCatchers(*event, offered))
    return true;
  if (heldTakesPart && Contains(held) && Offer(held, *event, offered))
    return true;
  if (!Contains(event->win))
    return true;
  return Bubble(*event, offered);
}
