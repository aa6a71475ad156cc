#pragma once

#include "ui/qprop.h"
#include "ui/qstepbutton.h"

#include <memory>

// A slider between two arrow buttons. Its events are the slider's, with the scroll bar as sender.
class QScrollBar : public QControl
{
public:
  static constexpr int THICKNESS = 17;
  QScrollBar(QWindow* owner, const QRect& area, bool vertical = true);
  const char* GetClassName() const override { return "QScrollBar"; }
  bool Event(QEvent* event) override;
  QProp& GetProp() { return *prop; }
  int GetPosition() const { return prop->GetPosition(); }
  void SetPosition(int v, bool repaint = true) { prop->SetPosition(v, repaint); }
  // For a list of so many lines, of which so many can be seen.
  void SetLines(int total, int displayed);

private:
  // Made after the bar itself, so that they lie above it.
  std::unique_ptr<QStepButton> back, forward;
  std::unique_ptr<QProp> prop;
};
