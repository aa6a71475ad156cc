#pragma once

#include "editor/edithost.h"
#include "ui/qbutton.h"
#include "ui/qdialog.h"
#include "ui/qlistbox.h"

// The window of a list to choose from, in the middle of the shell. Keys but those that turn pages go to the mode.
class ModelsModeList : public EditList
{
public:
  ModelsModeList(QWindow& shell, const char* title, std::span<const std::string> items);
  int Cursor() const override;
  void SetCursor(int i) override;
  Answer AnswerTo(const QEvent& event) override;

private:
  class Names : public QListBox
  {
  public:
    using QListBox::QListBox;
    bool Event(QEvent* event) override;
  };
  QDialog dialog;
  Names list;
  QButton ok;
  QButton cancel;
};
