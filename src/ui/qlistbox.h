#pragma once

#include "ui/qscrollbar.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class DTexture;

// A list to choose from. It sends CLICK when an item was selected: by a press, with 0 in n, or by a key, with the key
// in n. Typing finds the item that begins so. A double click is left to the parent.
class QListBox : public QControl
{
public:
  enum ListFlag : uint32_t
  {
    MULTI_SELECT = 1,
    NO_SELECT = 8,
    NO_HOVER = 16,
  };
  enum ItemFlag : uint32_t
  {
    SELECTED = 1,
    HOVER = 4,
  };
  struct Item
  {
    std::string text;
    void* userData = nullptr;
    uint32_t flags = 0;
    DTexture* image = nullptr; // not owned; painted before the text
    QRect imageSource;
  };
  QListBox(QWindow* owner, const QRect& area, uint32_t flags = 0);
  const char* GetClassName() const override { return "QListBox"; }
  std::string GetText() const override; // of the first selected item
  void Paint(const QRect* r = nullptr) override;
  bool Event(QEvent* event) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvMotionNotify(int x, int y) override;
  bool EvLeave(QEvent* event) override;
  bool EvKeyPress(int key, int x, int y) override;
  // Paints one item where it stands.
  virtual void PaintItem(int i);

  void AddString(std::string_view text, void* userData = nullptr);
  // False, reported, for a position beyond the count.
  bool InsertItem(int pos, std::string_view text, void* userData = nullptr);
  bool RemoveItem(int i); // false outside the list
  void Empty();
  Item* GetItem(int i); // null outside the list
  int GetItemCount() const { return static_cast<int>(items.size()); }
  // Selects, and sends CLICK unless it was selected already; or takes the selection away. Reported outside the list.
  void Select(int i, bool on = true);
  // Scrolls as little as it takes. Reported outside the list.
  void SetItemVisible(int i);
  int GetFirstSelected() const { return GetNextSelected(-1); } // -1: none
  int GetNextSelected(int after) const;
  // The item at the top; clamped so that the list is filled.
  void SetFirst(int i);
  int GetFirst() const { return first; }
  int GetVisibleLines() const;
  int GetItemHeight() const;
  // -1 beside all items; relative to the list.
  int ItemAt(int x, int y) const;

  uint32_t listFlags;

private:
  bool InRange(int i) const { return i >= 0 && i < GetItemCount(); }
  void SelectByKey(int i, int key);
  void Select(int i, bool on, int key);
  void SetHover(int i);
  void UpdateBar();
  bool Search(char32_t c);
  int TextWidth() const;

  std::vector<Item> items;
  std::unique_ptr<QScrollBar> bar; // made after the list, so that it lies above it
  int first = 0;
  int hover = -1;
  int cursor = -1; // where the keys go on from
  std::string searched;
  int64_t searchedAt = 0;
};
