#pragma once

#include "ui/qdialog.h"
#include "ui/qlabel.h"

#include <string>
#include <vector>

// A message with OK, or OK and Cancel. It gets wider and higher than the given area when the message needs it.
class QTextDialog : public QDialog
{
public:
  enum Style
  {
    OK_CANCEL = 0,
    OK_ONLY = 1
  };
  QTextDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view text, int style);
  const char* GetClassName() const override { return "QTextDialog"; }
  // 1: OK, 2: Cancel or closed.
  int Execute() override;
  std::string GetText() const override { return message; }
  QButton& GetOk() { return ok; }
  QButton* GetCancel() { return cancel.get(); } // null with OK_ONLY

private:
  void Filter(QEvent* event);
  void AddLabels();
  std::string message;
  std::vector<std::unique_ptr<QLabel>> labels; // one, but for a very long message
  QButton ok;
  std::unique_ptr<QButton> cancel;
  int result = -1;
};
