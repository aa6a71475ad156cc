#pragma once

#include "ui/qcontrol.h"

// A box that is on or off, and a caption beside it.
class QCheck : public QControl
{
public:
  enum CheckFlag : uint32_t
  {
    FILLED = 0x01
  }; // the whole rectangle gets a face
  QCheck(QWindow* owner, const QRect& area, std::string_view caption, bool on = false);
  const char* GetClassName() const override { return "QCheck"; }
  void Paint(const QRect* r = nullptr) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override; // space, with the focus, flips it
  bool GetState() const { return state; }
  void SetState(bool on);

  uint32_t checkFlags = 0;

private:
  void Flip();
  bool state;
  bool pressed = false;
};
