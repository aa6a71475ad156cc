#pragma once

#include "ui/qtoggle.h"

// One of several: setting it by hand clears all others of the same group number, wherever they stand.
class QRadio : public QToggle
{
public:
  // As wide as the text needs, and as high as its font.
  QRadio(QWindow* owner, const QRect& area, std::string_view caption, int groupNumber);
  const char* GetClassName() const override { return "QRadio"; }
  void Paint(const QRect* r = nullptr) override;
  void SetText(std::string_view newText) override;
  int GetGroup() const { return group; }

  int eventType = QEvent::CLICK;

private:
  void Operate() override;
  void FitToText();
  int group;
};
