#pragma once

#include "ui/qwindow.h"

#include <functional>
#include <vector>

// A window that writes down what reaches it.
class Listener : public QWindow
{
public:
  Listener(QWindow* owner, const QRect& area) : QWindow(owner, area) { Create(); }
  bool Event(QEvent* event) override
  {
    seen.push_back(*event);
    if (onEvent)
      onEvent(*event);
    return uses;
  }
  int Count(int type) const
  {
    int n = 0;
    for (const QEvent& event : seen)
      n += event.type == type;
    return n;
  }

  std::vector<QEvent> seen;
  std::function<void(const QEvent&)> onEvent; // must not touch the listener after deleting it
  bool uses = true;
};
