#pragma once

#include "ui/qcontrol.h"

// A bar that fills from the left.
class QProgress : public QControl
{
public:
  QProgress(QWindow* owner, const QRect& area);
  const char* GetClassName() const override { return "QProgress"; }
  void Paint(const QRect* r = nullptr) override;
  void SetProgress(int newValue, int newTotal);
  void SetAlign(QAlign a) { align = a; }
  int GetValue() const { return value; }
  int GetTotal() const { return total; }
  // Pixels of the filled part: 0 to width - 8. A total of 0 counts as done.
  int FilledWidth() const;

private:
  int value = 0, total = 100;
  QAlign align = QAlign::CENTER;
};
