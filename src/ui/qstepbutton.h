#pragma once

#include "ui/qapp.h"
#include "ui/qbutton.h"

// A button that belongs to another control and leaves the focus where it is.
class QStepButton : public QButton
{
public:
  QStepButton(QWindow* owner, const QRect& area, std::string_view caption) : QButton(owner, area, caption)
  {
    SetTabStop(-1);
  }
  bool EvButtonPress(int button, int x, int y) override
  {
    QWindow* before = app->GetWindowManager()->GetFocus();
    const bool used = QButton::EvButtonPress(button, x, y);
    app->GetWindowManager()->SetKeyboardFocus(before);
    return used;
  }
};
