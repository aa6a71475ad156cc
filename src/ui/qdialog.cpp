#include "ui/qdialog.h"

#include "ui/qapp.h"

#include <utility>

QDialog::QDialog(QWindow* owner, const QRect& area, std::string_view title, uint32_t wanted, bool closable) :
    QWindow(owner, area), dialogFlags(wanted)
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
  QWindowManager* wm = app ? app->GetWindowManager() : nullptr;
  if (!wm)
    return;
  if (dialogFlags & MODAL)
    wm->EndModal(groupBefore);
  wm->SetKeyboardFocus(focusBefore && wm->Contains(focusBefore) ? focusBefore : nullptr);
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
  if (button != 1 || !(dialogFlags & MOVABLE))
    return false;
  dragging = true;
  dragX = app->GetEvent().xRoot;
  dragY = app->GetEvent().yRoot;
  grabbedBefore = app->GetWindowManager()->GetGrabbed();
  app->GetWindowManager()->Grab(this);
  return true;
}

bool QDialog::EvMotionNotify(int, int)
{
  if (!dragging)
    return false;
  const int dx = app->GetMouseX() - std::exchange(dragX, app->GetMouseX());
  const int dy = app->GetMouseY() - std::exchange(dragY, app->GetMouseY());
  Move(relPos.x + dx, relPos.y + dy);
  if (moveCallback)
    moveCallback(dx, dy, userData);
  return true;
}

bool QDialog::EvButtonRelease(int button, int, int)
{
  if (button != 1 || !dragging)
    return false;
  dragging = false;
  QWindowManager* wm = app->GetWindowManager();
  wm->Grab(grabbedBefore && wm->Contains(grabbedBefore) ? grabbedBefore : nullptr);
  if (moveCallback)
    moveCallback(0, 0, userData);
  return true;
}

int QDialog::RunModal(const std::function<void(QEvent*)>& filter, const int& result)
{
  // The event goes on to the window manager, but for the closing of the main window: that ends the dialog alone.
  auto before = app->SetEventProc([&filter](QEvent* event) {
    filter(event);
    return event->type == QEvent::CLOSE;
  });
  while (result == -1 && !app->hasExited)
    app->Run1();
  app->SetEventProc(std::move(before));
  return result;
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
