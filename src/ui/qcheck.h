#pragma once

#include "ui/qtoggle.h"

// A box that is on or off, and a caption beside it.
class QCheck : public QToggle
{
public:
  enum CheckFlag : uint32_t
  {
    FILLED = 0x01
  }; // the whole rectangle gets a face
  QCheck(QWindow* owner, const QRect& area, std::string_view caption, bool on = false);
  const char* GetClassName() const override { return "QCheck"; }
  void Paint(const QRect* r = nullptr) override;

  uint32_t checkFlags = 0;

private:
  void Operate() override;
};
