#include "ui/qwindowmanager.h"

#include "foundation/qimage.h"
#include "foundation/qreport.h"
#include "geometry/dtexture.h"
#include "ui/qapp.h"
#include "ui/qwindow.h"

#include <algorithm>

QWindowManager::QWindowManager() = default;
QWindowManager::~QWindowManager() = default;

bool QWindowManager::AddWindow(QWindow* w)
{
  if (activeGroup && !IsInActiveGroup(w)) {
    QWARN("QWindowManager:AddWindow(); not part of activegroup, refusing to add window");
    return false;
  }
  windows.push_back(w);
  known.insert(w);
  if (onAddWindow)
    onAddWindow(w);
  return true;
}

bool QWindowManager::RemoveWindow(QWindow* w)
{
  const auto at = std::find(windows.begin(), windows.end(), w);
  if (at == windows.end()) {
    QWARN("QWindowManager:RemoveWindow: win %p was NOT found (%s)\n", static_cast<void*>(w), w->GetClassName());
    return false;
  }
  windows.erase(at);
  known.erase(w);
  if (app && app->GetEventQueue())
    app->GetEventQueue()->Forget(w);
  for (QWindow** mine : {&focus, &grabbed, &pointerWin, &activeGroup})
    if (*mine == w)
      *mine = nullptr;
  RequestPaint();
  return true;
}

bool QWindowManager::Contains(const QWindow* w) const
{
  return known.count(w) > 0;
}

void QWindowManager::SetKeyboardFocus(QWindow* w)
{
  if (w == focus)
    return;
  if (focus)
    focus->SendEvent(QEvent::FOCUSOUT);
  focus = w;
  if (focus)
    focus->SendEvent(QEvent::FOCUSIN);
}

// The window whose number follows; past the end the first, or the last, one. Null when nobody takes the focus.
QWindow* QWindowManager::TabStopNext(int from, bool forward) const
{
  QWindow* next = nullptr;
  for (QWindow* w : windows) {
    const bool beyond = forward ? w->tabStop > from : w->tabStop < from;
    if (w->tabStop < 0 || !beyond || !w->IsEnabled() || !w->IsVisible() || !IsInActiveGroup(w))
      continue;
    if (!next || (forward ? w->tabStop < next->tabStop : w->tabStop > next->tabStop))
      next = w;
  }
  return next;
}

void QWindowManager::FocusByOrder(bool forward)
{
  QWindow* next = focus && focus->tabStop >= 0 ? TabStopNext(focus->tabStop, forward) : nullptr;
  if (next)
    SetKeyboardFocus(next);
  else
    forward ? FocusFirst() : FocusLast();
}

void QWindowManager::FocusFirst()
{
  if (QWindow* first = TabStopNext(-1, true))
    SetKeyboardFocus(first);
}

void QWindowManager::FocusLast()
{
  if (QWindow* last = TabStopNext(INT32_MAX, false))
    SetKeyboardFocus(last);
}

void QWindowManager::FocusNext()
{
  FocusByOrder(true);
}

void QWindowManager::FocusPrevious()
{
  FocusByOrder(false);
}

int QWindowManager::GetNextTabStop() const
{
  int highest = -1;
  for (const QWindow* w : windows)
    highest = std::max(highest, w->tabStop);
  return highest + 1;
}

QWindow* QWindowManager::FindWindowAt(const QXWindow*, int x, int y) const
{
  for (auto w = windows.rbegin(); w != windows.rend(); ++w)
    if ((*w)->IsVisible() && (*w)->RootRect().Contains(x, y))
      return *w;
  return nullptr;
}

QWindow* QWindowManager::FindXWindow(const QXWindow* xwin) const
{
  for (QWindow* w : windows)
    if (xwin && w->xwin.get() == xwin)
      return w;
  return nullptr;
}

bool QWindowManager::SetBackgroundImage(const std::string& path)
{
  backgroundTexture.reset();
  RequestPaint();
  if (path.empty())
    return true;
  auto picture = std::make_unique<QImage>(path);
  if (!picture->GetBuffer())
    return false;
  backgroundTexture = std::make_unique<DBitMapTexture>(std::move(picture));
  return true;
}

void QWindowManager::PaintBackground(QWindow* w, const QRect* r)
{
  QCanvas& cv = w->GetCanvas();
  const QRect area = r ? *r : QRect{0, 0, w->rect.wid, w->rect.hgt};
  cv.SetColor(background);
  cv.Rectfill(area);
  if (!backgroundTexture)
    return;
  cv.SetColor(PX_WHITE);
  const int wid = backgroundTexture->width, hgt = backgroundTexture->height;
  for (int y = area.y / hgt * hgt; y < area.y + area.hgt; y += hgt)
    for (int x = area.x / wid * wid; x < area.x + area.wid; x += wid) {
      // Of each tile what lies in the area.
      const int left = std::max(area.x - x, 0), top = std::max(area.y - y, 0);
      const QRect part{left, top, std::min(wid, area.x + area.wid - x) - left,
                       std::min(hgt, area.y + area.hgt - y) - top};
      w->PaintTexture(backgroundTexture.get(), part, x + left, y + top);
    }
}

void QWindowManager::PaintAll()
{
  if (windows.empty())
    return;
  QCanvas& cv = windows.front()->GetCanvas();
  cv.Begin();
  for (QWindow* w : windows)
    if (w->IsVisible())
      w->Paint();
  cv.End();
}

void QWindowManager::PaintChildren()
{
  if (windows.empty())
    return;
  QCanvas& cv = windows.front()->GetCanvas();
  cv.Begin();
  for (QWindow* w : windows)
    if (w->IsVisible() && !(w->flags & QWindow::X))
      w->Paint();
  cv.End();
}

bool QWindowManager::TakePaintRequest()
{
  return std::exchange(paintWanted, false);
}

bool QWindowManager::IsInActiveGroup(const QWindow* w) const
{
  return !activeGroup || w == activeGroup || w->compound == activeGroup;
}

void QWindowManager::SetActiveGroup(QWindow* w)
{
  activeGroup = w;
  if (!w)
    return;
  std::stable_partition(windows.begin(), windows.end(), [this](const QWindow* x) { return !IsInActiveGroup(x); });
  if (grabbed && !IsInActiveGroup(grabbed))
    grabbed = nullptr;
  RequestPaint();
}

QWindow* QWindowManager::BeginModal(QWindow* w)
{
  QWindow* before = activeGroup;
  SetActiveGroup(w);
  return before;
}

void QWindowManager::EndModal(QWindow* before)
{
  SetActiveGroup(before && Contains(before) ? before : nullptr);
  RequestPaint();
}

QWindow* QWindowManager::FindVisible(std::string_view className, std::string_view text) const
{
  for (auto w = windows.rbegin(); w != windows.rend(); ++w)
    if ((*w)->IsVisible() && (*w)->GetClassName() == className && (*w)->GetText() == text)
      return *w;
  return nullptr;
}

QWindow* QWindowManager::OpenDialog() const
{
  for (auto w = windows.rbegin(); w != windows.rend(); ++w)
    if ((*w)->IsVisible() && (*w)->flags & QWindow::IS_DIALOG)
      return *w;
  return nullptr;
}

std::vector<std::string> QWindowManager::VisibleTexts(std::string_view className) const
{
  std::vector<std::string> texts;
  for (const QWindow* w : windows)
    if (w->IsVisible() && w->GetClassName() == className)
      texts.push_back(w->GetText());
  return texts;
}
