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

protected:
  QControl(QWindow* owner, const QRect& area, std::string_view caption) : QWindow(owner, area), text(caption) {}
  // At the end of a control's constructor.
  void Start(bool takesFocus);
  void GrabPointer();
  void ReleasePointer();

  std::string text;
  QFont* font = nullptr;
};
