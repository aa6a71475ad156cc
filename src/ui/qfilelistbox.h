#pragma once

#include "ui/qfilelist.h"
#include "ui/qlistbox.h"

#include <functional>

// The list of a file selector: entries with size and time.
class QFileListBox : public QListBox
{
public:
  static constexpr int SIZE_WID = 80; // pixels of the columns
  static constexpr int DATE_WID = 120;
  QFileListBox(QWindow* owner, const QRect& area, const QFileList& shown, uint32_t listFlags);
  const char* GetClassName() const override { return "QFileListBox"; }
  bool Event(QEvent* event) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override;
  void PaintItem(int i) override;
  void Refill();                // with the entries as they are now
  QRect EntryRect(int i) const; // in the list
  // Whether the selection was made with the pointer.
  bool WasPointedAt() const { return pointedAt; }
  // The rest of a double click on a directory mustn't hit what appears in its place.
  void IgnoreDoubleClick();

  std::function<void()> onActivate; // double click, Enter
  std::function<void()> onParent;   // Backspace

private:
  bool IsIgnored(uint32_t time) const;
  const QFileList& entries;
  bool pointedAt = false;
  uint32_t ignoreUntil = 0; // milliseconds; 0: nothing is ignored
};
