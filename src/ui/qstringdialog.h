#pragma once

#include "ui/qdialog.h"
#include "ui/qedit.h"
#include "ui/qlabel.h"

// A question that is answered by a line, or some lines, of text.
class QStringDialog : public QDialog
{
public:
  // maxLen: bytes of the answer; a longer text is cut. lines: 1, or more for a field of several lines in the
  // fixed-width font, where Enter belongs to the text and Alt-O is OK.
  QStringDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view prompt,
                std::string_view text, int maxLen, int lines = 1);
  const char* GetClassName() const override { return "QStringDialog"; }
  // 1: OK, 2: Cancel or closed.
  int Execute() override;
  std::string GetText() const override { return label.GetText(); } // the question
  QEdit& GetEdit() { return edit; }
  // Height that a dialog of that width needs.
  static int HeightFor(int wid, std::string_view prompt, int lines);

private:
  void Filter(QEvent* event);
  bool single;
  QLabel label;
  QEdit edit;
  QButton ok, cancel;
  int result = -1;
};
