#pragma once

#include "ui/qwindow.h"

// What all controls share: made at once, the next tab stop if it takes input, a font.
class QControl : public QWindow
{
public:
  QFont* GetFont() const;              // its own, or the system's
  void SetFont(QFont* f) { font = f; } // not owned; null: the system's
  std::string GetText() const override { return text; }
  void SetText(std::string_view newText) override;
  bool EvKeyRelease(int key, int x, int y) override;
  bool EvEnter(QEvent* event) override;
  bool EvLeave(QEvent* event) override;

protected:
  QControl(QWindow* owner, const QRect& area, std::string_view caption) : QWindow(owner, area), text(caption) {}
  // At the end of a control's constructor.
  void Start(bool takesFocus);
  void GrabPointer();
  void ReleasePointer();
  // The keyboard's focus by a press of the mouse.
  void TakeFocus();
  // False while it has the focus just because it was clicked: then space and enter are meant for the application.
  bool TakesKeys() const { return HasFocus() && !clicked; }
  // The pointer is over it, and a press would be for it.
  bool IsHot() const;

  std::string text;
  QFont* font = nullptr;

private:
  bool pointerOver = false;
  bool clicked = false;
};
