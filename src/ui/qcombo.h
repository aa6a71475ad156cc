#pragma once

#include "ui/qbutton.h"
#include "ui/qdialog.h"
#include "ui/qedit.h"
#include "ui/qlistbox.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A choice out of a list that opens below it: a field and a "$DOWN" button, or, list-only, a button that shows the
// choice. It sends CLICK when something was chosen.
class QCombo : public QControl
{
public:
  enum ComboFlag : uint32_t
  {
    LIST_ONLY = 1,
  };
  QCombo(QWindow* owner, const QRect& area, uint32_t flags = 0);
  ~QCombo() override;
  const char* GetClassName() const override { return "QCombo"; }
  bool Event(QEvent* event) override;
  bool EvKeyPress(int key, int x, int y) override;
  std::string GetText() const override { return text; }

  void AddString(std::string_view text);
  void Empty();
  int GetCount() const { return static_cast<int>(strings.size()); }
  int GetSelected() const { return selected; } // -1: nothing
  // Sends nothing. Outside the list: nothing is selected.
  void SetSelected(int i);
  std::string GetString(int i) const; // empty outside the list
  bool IsOpen() const { return popup != nullptr; }
  void Open(); // the list, once
  void CloseList();

private:
  class Popup;
  class Field;
  void Choose(int i);
  void Step(int by);

  std::vector<std::string> strings;
  int selected = -1;
  std::unique_ptr<QEdit> field; // null when list-only
  std::unique_ptr<QButton> button;
  std::unique_ptr<Popup> popup;
};
