#pragma once

#include "foundation/qobject.h"

// A thing that can be drawn on.
class QDrawable : public QObject
{
public:
  const char* GetClassName() const override { return "QDrawable"; }
  // Is this a window of the platform?
  virtual bool IsXWindow() const { return false; }
  virtual bool Create();  // of the base: reports and answers false
  virtual void Destroy(); // of the base: reports
  virtual int GetWidth() const { return 0; }
  virtual int GetHeight() const { return 0; }
};
