#pragma once

#include "ui/qcontrol.h"

// A text. A click on it sends CLICK.
class QLabel : public QControl
{
public:
  QLabel(QWindow* owner, const QRect& area, std::string_view caption, QAlign alignment = QAlign::LEFT);
  const char* GetClassName() const override { return "QLabel"; }
  void Paint(const QRect* r = nullptr) override;
  bool EvButtonPress(int button, int x, int y) override;
  void SetAlign(QAlign a) { align = a; }
  void SetColor(const QColor& c) { color = c; }

private:
  QAlign align;
  QColor color{255, 255, 255};
};
