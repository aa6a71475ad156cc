#include "ui/qdialog.h"

#include "ui/qapp.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int CATCHABLE = 60; // pixels of the title bar that can't leave the shell, beside the close button

// A dialog that its caller put partly outside the shell comes inside as far as it goes.
QRect KeptInside(const QWindow* owner, QRect area)
{
  if (!owner)
    return area;
  area.x = std::clamp(area.x, 0, std::max(owner->rect.wid - area.wid, 0));
  area.y = std::clamp(area.y, 0, std::max(owner->rect.hgt - area.hgt, 0));
  return area;
}

} // namespace

QDialog::QDialog(QWindow* owner, const QRect& area, std::string_view title, uint32_t wanted, bool closable) :
    QWindow(owner, KeptInside(owner, area)), dialogFlags(wanted)
{
  QWindowManager* wm = app->GetWindowManager();
  flags |= IS_DIALOG;
  compound = this;
  focusBefore = wm->GetFocus();
  if (dialogFlags & MODAL)
    groupBefore = wm->BeginModal(this);
  Create();
  titleBar = std::make_unique<QTitleBar>(this, title, closable);
}

QDialog::~QDialog()
{
  *alive = false;
  QWindowManager* wm = app ? app->GetWindowManager() : nullptr;
  if (!wm)
    return;
  if (dragging)
    wm->Grab(grabbedBefore && wm->Contains(grabbedBefore) ? grabbedBefore : nullptr);
  // A dialog that was opened later and is still there stays the group.
  const QWindow* group = wm->GetActiveGroup();
  if (dialogFlags & MODAL && (!group || group == this))
    wm->EndModal(groupBefore);
  if (!wm->GetActiveGroup() || wm->GetActiveGroup() == groupBefore)
    wm->SetKeyboardFocus(focusBefore && wm->Contains(focusBefore) ? focusBefore : nullptr);
  wm->RequestPaint();
}

void QDialog::SetTitle(std::string_view title)
{
  titleBar->SetText(title);
}

bool QDialog::EvExpose(int x, int y, int wid, int hgt)
{
  if (dialogFlags & MODAL)
    app->GetWindowManager()->SetActiveGroup(this);
  return QWindow::EvExpose(x, y, wid, hgt);
}

bool QDialog::EvButtonPress(int button, int, int)
{
  if (button != 1 || dragging || !(dialogFlags & MOVABLE))
    return false;
  dragging = true;
  const QRect root = RootRect();
  holdX = app->GetEvent().xRoot - root.x;
  holdY = app->GetEvent().yRoot - root.y;
  grabbedBefore = app->GetWindowManager()->GetGrabbed();
  app->GetWindowManager()->Grab(this);
  return true;
}

void QDialog::TellMoved(int dx, int dy)
{
  if (const auto callback = moveCallback)
    callback(dx, dy, userData);
}

bool QDialog::EvMotionNotify(int, int)
{
  if (!dragging)
    return false;
  // What is left of the title bar in the shell must be enough to catch it again.
  const QRect root = RootRect();
  const QRect shell = app->GetShell() ? app->GetShell()->RootRect() : root;
  const int keep = std::min(CATCHABLE, root.wid);
  const int x = std::clamp(app->GetMouseX() - holdX, keep - root.wid, std::max(shell.wid - keep, keep - root.wid));
  const int y = std::clamp(app->GetMouseY() - holdY, 0, std::max(shell.hgt - QTitleBar::HEIGHT, 0));
  const int dx = x - root.x;
  const int dy = y - root.y;
  if (dx == 0 && dy == 0)
    return true; // 0, 0 tells of the end
  Move(relPos.x + dx, relPos.y + dy);
  TellMoved(dx, dy);
  return true;
}

bool QDialog::EvButtonRelease(int button, int, int)
{
  if (button != 1 || !dragging)
    return false;
  dragging = false;
  QWindowManager* wm = app->GetWindowManager();
  wm->Grab(grabbedBefore && wm->Contains(grabbedBefore) ? grabbedBefore : nullptr);
  TellMoved(0, 0);
  return true;
}

bool QDialog::IsRelease(const QEvent& event)
{
  return event.type == QEvent::KEYRELEASE || event.type == QEvent::BUTTONRELEASE || event.type == QEvent::APPFOCUS;
}

int QDialog::RunModal(const std::function<void(QEvent*)>& filter, const int& result)
{
  const std::shared_ptr<bool> there = alive;
  std::function<bool(QEvent*)> before;
  // The event goes on to the window manager, but for the closing of the main window: that ends the dialog alone.
  before = app->SetEventProc([&filter, &before, there](QEvent* event) {
    if (IsRelease(*event) && before)
      before(event);
    if (*there)
      filter(event);
    return event->type == QEvent::CLOSE;
  });
  while (*there && result == -1 && !app->hasExited)
    app->Run1();
  app->SetEventProc(std::move(before));
  return *there ? result : 2;
}

void QDialog::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  cv.Begin();
  cv.SetBlending(true);
  for (int i = 1; i <= 6; ++i) { // a soft shadow
    cv.SetColor(0, 0, 0, 22);
    cv.Rectfill(7 - i, 7 - i, rect.wid + 2 * i - 6, rect.hgt + 2 * i - 6);
  }
  cv.SetColor(46, 54, 57, 255);
  cv.Rectfill(0, 0, rect.wid, rect.hgt);
  cv.SetColor(PX_FACE, 255);
  cv.Rectangle(-1, -1, rect.wid + 2, rect.hgt + 2);
  cv.End();
}
