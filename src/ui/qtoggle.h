#pragma once

#include "ui/qcontrol.h"

// What a check box and a radio button share: a state, and being operated by the left button or, with the focus, by the
// space bar. A press takes focus and pointer; the release operates it, wherever the pointer is by then.
class QToggle : public QControl
{
public:
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override;
  bool GetState() const { return state; }
  void SetState(bool on); // this one alone; sends nothing

protected:
  QToggle(QWindow* owner, const QRect& area, std::string_view caption, bool on) :
      QControl(owner, area, caption), state(on)
  {}
  virtual void Operate() = 0;
  bool IsPressed() const { return pressed; }
  // The edge of the box or disc.
  void SetEdgeColor();

private:
  bool state;
  bool pressed = false;
};
