#pragma once

#include "ui/qcontrol.h"

// One of several: setting it by hand clears all others of the same group number, wherever they stand.
class QRadio : public QControl
{
public:
  // As wide as the text needs, and as high as its font.
  QRadio(QWindow* owner, const QRect& area, std::string_view caption, int groupNumber);
  const char* GetClassName() const override { return "QRadio"; }
  void Paint(const QRect* r = nullptr) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override; // space, with the focus, sets it
  void SetText(std::string_view newText) override;
  bool GetState() const { return state; }
  void SetState(bool on); // this one alone
  int GetGroup() const { return group; }

  int eventType = QEvent::CLICK;

private:
  void Choose();
  void FitToText();
  int group;
  bool state = false;
  bool pressed = false;
};
