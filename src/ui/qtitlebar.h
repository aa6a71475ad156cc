#pragma once

#include "ui/qbutton.h"

#include <memory>

// The bar along the top of a dialog, or of the whole window: a caption and a close button. A press on it starts
// dragging what it belongs to.
class QTitleBar : public QControl
{
public:
  static constexpr int HEIGHT = 26; // pixels
  QTitleBar(QWindow* owner, std::string_view caption, bool closable = true);
  ~QTitleBar() override;
  const char* GetClassName() const override { return "QTitleBar"; }
  void Paint(const QRect* r = nullptr) override;
  bool Event(QEvent* event) override; // CLICK of the close button becomes CLOSE of the owner
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvMotionNotify(int x, int y) override;
  QButton* GetCloseButton() const { return closeButton.get(); }

private:
  bool MovesShell() const;
  std::unique_ptr<QButton> closeButton;
  bool dragging = false;
  int dragX = 0, dragY = 0; // on the screen
};
