#pragma once

#include "foundation/qobject.h"
#include "ui/qdisplay.h"

class QWindow;

// The platform's window behind a real QWindow.
class QXWindow : public QObject
{
public:
  QXWindow(QDisplay& machine, QWindow& window) : display(machine), owner(window) {}
  ~QXWindow() override;
  QXWindow(const QXWindow&) = delete;
  QXWindow& operator=(const QXWindow&) = delete;
  const char* GetClassName() const override { return "QXWindow"; }
  // False when there can be no window. One without a context is fine: nothing is drawn then.
  bool Create(const QDisplayWindow& wanted);
  QWindow& Owner() const { return owner; }

private:
  QDisplay& display;
  QWindow& owner;
};
