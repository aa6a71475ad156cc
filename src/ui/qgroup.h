#pragma once

#include "ui/qcontrol.h"

// A frame around controls that belong together, with a caption in its top edge. It takes no input.
class QGroup : public QControl
{
public:
  QGroup(QWindow* owner, const QRect& area, std::string_view caption);
  const char* GetClassName() const override { return "QGroup"; }
  void Paint(const QRect* r = nullptr) override;
  void SetTransparent(bool on); // without a background
  void SetPlateColor(const QColor& color);

private:
  bool transparent = false;
  QColor plate;
};
