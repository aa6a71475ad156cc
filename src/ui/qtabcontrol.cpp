#include "ui/qtabcontrol.h"

#include "foundation/qreport.h"
#include "ui/qapp.h"
#include "ui/qfont.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int HEAD_MIN_WID = 60, HEAD_PADDING = 10, HEAD_MIN_PADDING = 6;

bool IsOn(const QWindow* w, const QWindow* page)
{
  while (w && w != page)
    w = w->parent;
  return w != nullptr;
}

} // namespace

// A button that looks like the top of its page while that shows.
class QTabControl::Head : public QButton
{
public:
  Head(QTabControl& control, std::string_view caption) :
      QButton(&control, {0, 0, HEAD_MIN_WID, HEAD_HGT}, caption), owner(control)
  {}
  bool EvKeyPress(int key, int x, int y) override
  {
    if (!HasFocus() || (key != QKEY_LEFT && key != QKEY_RIGHT))
      return QButton::EvKeyPress(key, x, y);
    owner.Turn(key == QKEY_LEFT ? -1 : 1, true);
    return true;
  }
  void Paint(const QRect* r = nullptr) override;

private:
  QTabControl& owner;
};

void QTabControl::Head::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  const bool front = owner.HasTab(owner.active) && owner.tabs[static_cast<size_t>(owner.active)].head.get() == this;
  // The others stand back a little.
  const QRect face{0, front ? 0 : 2, rect.wid - 1, rect.hgt - (front ? 0 : 2)};
  cv.Begin();
  cv.SetBlending(true);
  if (front)
    cv.SetColor(PX_FACE, 255);
  else if (GetState() == PRESSED)
    cv.SetColor(PX_PRESSED);
  else
    cv.SetColor(PX_DKTEAL, IsHot() ? 255 : 200);
  cv.Rectfill(face);
  if (front || IsHot()) {
    cv.SetColor(PX_FOCUS, front ? 255 : 128);
    cv.Rectfill(face.x, face.y, face.wid, 1);
  }
  if (HasFocus()) {
    cv.SetColor(PX_FOCUS);
    cv.Rectangle(face.x + 2, face.y + 3, face.wid - 4, face.hgt - 5);
  }
  PaintCaption(face, 0);
  cv.End();
}

QTabPage::QTabPage(QWindow* owner, const QRect& area) : QWindow(owner, area)
{
  Create();
}

QTabControl::QTabControl(QWindow* owner, const QRect& area) : QControl(owner, area, {})
{
  Start(false);
}

QTabControl::~QTabControl() = default;

int QTabControl::AddPage(std::string_view title, std::unique_ptr<QWindow> page)
{
  const int i = GetPageCount();
  Tab& tab = tabs.emplace_back();
  tab.head = std::make_unique<Head>(*this, title);
  tab.page = std::move(page);
  tab.caption = title;
  if (i == 0) {
    active = 0;
  } else {
    // One stop for all heads: the arrow keys go from one to the next.
    tab.head->SetTabStop(-1);
    if (tab.page)
      tab.page->Hide();
  }
  PlaceHeads();
  return i;
}

QTabPage& QTabControl::AddPage(std::string_view title)
{
  auto owned = std::make_unique<QTabPage>(this, PageRect());
  QTabPage& page = *owned;
  AddPage(title, std::move(owned));
  return page;
}

int QTabControl::TextWidth(int i) const
{
  return static_cast<int>(std::ceil(GetFont()->GetWidth(tabs[static_cast<size_t>(i)].caption)));
}

// As wide as their texts. Where that is too much they first lose air, and at last are all alike; then the texts make
// do.
void QTabControl::PlaceHeads()
{
  const int count = GetPageCount();
  int texts = 0, wanted = 0;
  for (int i = 0; i < count; ++i) {
    texts += TextWidth(i);
    wanted += std::max(HEAD_MIN_WID, TextWidth(i) + 2 * HEAD_PADDING);
  }
  const int padding = std::min((rect.wid - texts) / (2 * count), HEAD_PADDING);
  int x = 0;
  for (int i = 0; i < count; ++i) {
    int next = rect.wid * (i + 1) / count;
    if (wanted <= rect.wid)
      next = x + std::max(HEAD_MIN_WID, TextWidth(i) + 2 * HEAD_PADDING);
    else if (padding >= HEAD_MIN_PADDING)
      next = x + TextWidth(i) + 2 * padding;
    Head& head = *tabs[static_cast<size_t>(i)].head;
    head.Size(next - x, HEAD_HGT);
    head.Move(x, 0);
    x = next;
  }
}

QWindow* QTabControl::GetPage(int i) const
{
  return HasTab(i) ? tabs[static_cast<size_t>(i)].page.get() : nullptr;
}

QButton* QTabControl::GetHead(int i) const
{
  return HasTab(i) ? tabs[static_cast<size_t>(i)].head.get() : nullptr;
}

// What is out of sight keeps neither the keyboard nor the pointer.
void QTabControl::LeavePage(const Tab& tab)
{
  if (!tab.page)
    return;
  QWindowManager* wm = app->GetWindowManager();
  if (wm->GetGrabbed() && IsOn(wm->GetGrabbed(), tab.page.get()))
    wm->Ungrab();
  if (wm->GetFocus() && IsOn(wm->GetFocus(), tab.page.get()))
    wm->SetKeyboardFocus(GetHead(active));
  tab.page->Hide();
}

void QTabControl::SetActivePage(int i)
{
  if (!HasTab(i) || i == active)
    return;
  Tab& before = tabs[static_cast<size_t>(active)];
  Tab& now = tabs[static_cast<size_t>(i)];
  active = i;
  now.head->SetTabStop(before.head->tabStop);
  before.head->SetTabStop(-1);
  LeavePage(before);
  if (now.page)
    now.page->Show();
  Invalidate();
}

void QTabControl::Turn(int step, bool focusHead)
{
  const int count = GetPageCount();
  if (count == 0)
    return;
  SetActivePage((active + step + count) % count);
  if (focusHead)
    app->GetWindowManager()->SetKeyboardFocus(GetHead(active));
  SendEvent(QEvent::CLICK, active);
}

bool QTabControl::Event(QEvent* event)
{
  if (event->type == QEvent::CLICK)
    for (int i = 0; i < GetPageCount(); ++i)
      if (event->win == GetHead(i)) {
        SetActivePage(i);
        SendEvent(QEvent::CLICK, i);
        return true;
      }
  return QControl::Event(event);
}

bool QTabControl::EvKeyPress(int key, int x, int y)
{
  if (QKeyOf(key) != QKEY_TAB || !(key & QMOD_CTRL) || key & QMOD_ALT)
    return QControl::EvKeyPress(key, x, y);
  Turn(key & QMOD_SHIFT ? -1 : 1, false);
  return true;
}

void* QTabControl::GetTabUserData(int i) const
{
  if (HasTab(i))
    return tabs[static_cast<size_t>(i)].userData;
  QWARN("QTabControl:GetTabUserData(%d) out of range - null", i);
  return nullptr;
}

void QTabControl::SetTabUserData(int i, void* data)
{
  if (HasTab(i))
    tabs[static_cast<size_t>(i)].userData = data;
  else
    QWARN("QTabControl:SetTabUserData(%d) out of range - ignored", i);
}

void QTabControl::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  const QRect page = PageRect();
  cv.Begin();
  cv.SetBlending(true);
  cv.SetColor(PX_DKTEAL, 120);
  cv.Rectfill(page);
  cv.SetColor(PX_FACE, 255);
  cv.Rectangle(page);
  cv.Rectfill(page.x, page.y, page.wid, 2);
  cv.End();
}
