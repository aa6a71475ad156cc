#pragma once

#include "ui/qdialog.h"
#include "ui/qlabel.h"
#include "ui/qprogress.h"

// Follows a long operation. The operation keeps its own loop and calls Poll in it. While the dialog lives the
// application's event procedure hears of nothing but releases: no key may start another operation.
class QProgressDialog : public QDialog
{
public:
  enum ProgressFlag : uint32_t
  {
    NO_CANCEL = 1
  };
  QProgressDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view text, uint32_t flags = 0);
  const char* GetClassName() const override { return "QProgressDialog"; }
  ~QProgressDialog() override;
  void SetProgress(int value, int total); // shows the percentage too
  std::string GetText() const override { return text; }
  // One line; a text that is too long for it, such as a path, is shortened in the middle.
  void SetText(std::string_view newText) override;
  // Handles what is waiting; every interval the callback. False once cancelled.
  bool Poll();
  bool IsCancelled() const { return cancelled; }
  void SetCallback(std::function<void()> procedure) { callback = std::move(procedure); }
  void SetInterval(int milliseconds) { interval = milliseconds; }
  QProgress& GetBar() { return bar; }
  QButton* GetCancel() { return cancel.get(); } // null with NO_CANCEL

private:
  void Filter(const QEvent& event);
  std::string text;
  QLabel label;
  QProgress bar;
  std::unique_ptr<QButton> cancel;
  std::function<void()> callback;
  std::function<bool(QEvent*)> procedureBefore;
  int interval = 100;
  int64_t timerStart;
  bool cancelled = false;
};
