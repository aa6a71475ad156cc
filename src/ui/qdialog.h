#pragma once

#include "ui/qtitlebar.h"

#include <functional>
#include <memory>

// A window with a title that can be dragged, and that, when modal, keeps all others from taking part while it lives.
class QDialog : public QWindow
{
public:
  enum DialogFlag : uint32_t
  {
    MOVABLE = 1,
    MODAL = 2
  };
  QDialog(QWindow* owner, const QRect& area, std::string_view title, uint32_t flags = MOVABLE | MODAL,
          bool closable = true);
  ~QDialog() override;
  const char* GetClassName() const override { return "QDialog"; }
  void Paint(const QRect* r = nullptr) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvMotionNotify(int x, int y) override;
  bool EvExpose(int x, int y, int wid, int hgt) override;
  // Runs until the user has answered; the base has nothing to ask.
  virtual int Execute() { return 0; }
  virtual void SetTitle(std::string_view title);
  std::string GetTitle() const { return titleBar->GetText(); }

  // Told of each step of dragging by its difference, and by 0, 0 of its end. It may delete the dialog.
  std::function<void(int dx, int dy, void* userData)> moveCallback;

protected:
  void HideTitleBar() { titleBar->Hide(); }
  // What the application hears of in spite of a dialog: it keeps track of what is held down.
  static bool IsRelease(const QEvent& event);
  // Runs the loop, with the filter in place of the application's event procedure, until the result isn't -1. 2 when a
  // handler has deleted the dialog meanwhile: the caller must not touch it then.
  int RunModal(const std::function<void(QEvent*)>& filter, const int& result);

private:
  void TellMoved(int dx, int dy);
  uint32_t dialogFlags;
  QWindow* groupBefore = nullptr;
  QWindow* focusBefore = nullptr;
  QWindow* grabbedBefore = nullptr;
  bool dragging = false;
  int holdX = 0, holdY = 0; // where the dialog is held while dragging, from its corner
  std::shared_ptr<bool> alive = std::make_shared<bool>(true);
  std::unique_ptr<QTitleBar> titleBar;
};
