#pragma once

#include "ui/qbutton.h"

#include <memory>
#include <utility>
#include <vector>

// A page that owns the controls on it.
class QTabPage : public QWindow
{
public:
  QTabPage(QWindow* owner, const QRect& area);
  const char* GetClassName() const override { return "QTabPage"; }
  // Makes a control on the page: page.Add<QLabel>(rect, "Text"). It lives as long as the page.
  template <typename T, typename... Args>
  T& Add(Args&&... args)
  {
    auto owned = std::make_unique<T>(this, std::forward<Args>(args)...);
    T& control = *owned;
    controls.push_back(std::move(owned));
    return control;
  }

private:
  std::vector<std::unique_ptr<QWindow>> controls;
};

// Pages behind heads in a row, of which one shows. Sends CLICK, n being the page's number, when the user operates a
// head; SetActivePage sends nothing.
class QTabControl : public QControl
{
public:
  static constexpr int HEAD_HGT = 20;
  QTabControl(QWindow* owner, const QRect& area);
  ~QTabControl() override;
  const char* GetClassName() const override { return "QTabControl"; }
  void Paint(const QRect* r = nullptr) override;
  bool Event(QEvent* event) override;
  // Control-tab and control-shift-tab from anywhere on a page.
  bool EvKeyPress(int key, int x, int y) override;

  // Where a page belongs, relative to this.
  QRect PageRect() const { return {0, HEAD_HGT, rect.wid, rect.hgt - HEAD_HGT}; }
  // Takes over the page, a child of this, and gives its number. The first one shows.
  int AddPage(std::string_view title, std::unique_ptr<QWindow> page);
  // The same with a fresh page, which fills PageRect.
  QTabPage& AddPage(std::string_view title);
  int GetPageCount() const { return static_cast<int>(tabs.size()); }
  QWindow* GetPage(int i) const;               // null out of range
  QButton* GetHead(int i) const;               // null out of range
  int GetActivePage() const { return active; } // -1: there is no page yet
  void SetActivePage(int i);                   // ignored out of range
  // Null, reported, out of range.
  void* GetTabUserData(int i) const;
  void SetTabUserData(int i, void* data); // reported and ignored out of range

private:
  class Head;
  struct Tab
  {
    std::unique_ptr<Head> head;
    std::unique_ptr<QWindow> page;
    std::string caption;
    void* userData = nullptr;
  };
  bool HasTab(int i) const { return i >= 0 && i < GetPageCount(); }
  int TextWidth(int i) const;
  void PlaceHeads();
  void Turn(int step, bool focusHead);
  void LeavePage(const Tab& tab);

  std::vector<Tab> tabs;
  int active = -1;
};
