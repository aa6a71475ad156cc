#pragma once

#include "ui/qcontrol.h"

// A slider: a knob on a track, as long as the part of the whole that is displayed.
// It sends SLIDE while it is dragged or turned by the wheel, and CLICK when it was put somewhere.
class QProp : public QControl
{
public:
  QProp(QWindow* owner, const QRect& area, bool vertical);
  const char* GetClassName() const override { return "QProp"; }
  void Paint(const QRect* r = nullptr) override;
  bool Event(QEvent* event) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvMotionNotify(int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override;

  int GetPosition() const { return position; }
  // Clamped to the range; sends nothing.
  void SetPosition(int v, bool repaint = true);
  // Both ends are positions; a maximum below the minimum counts as the minimum.
  void SetRange(int min, int max);
  // What can be seen at once, of how much: the knob's length, and how far a press beside it goes.
  void SetDisplayed(int n);
  void SetTotal(int n);

private:
  QRect Knob() const;
  int Length() const { return vertical ? rect.hgt : rect.wid; }
  int PositionAt(int knobStart) const;
  // True when that changed it; sent as an event of the type.
  bool GoTo(int v, int type);

  bool vertical;
  int min = 0, max = 0;
  int displayed = 1, total = 1;
  int position = 0;
  bool dragging = false;
  int dragOffset = 0; // from the knob's start to the pointer
};
