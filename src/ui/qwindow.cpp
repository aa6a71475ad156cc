#include "ui/qwindow.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"
#include "ui/qapp.h"
#include "ui/qxwindow.h"

namespace {

QWindowManager* Manager()
{
  return app ? app->GetWindowManager() : nullptr;
}

} // namespace

QWindow::QWindow(QWindow* owner, const QRect& area) :
    rect(area), relPos(area), parent(owner), compound(owner ? owner->compound : nullptr), cv(*this)
{
  if (parent && !(parent->flags & X)) {
    rect.x += parent->rect.x;
    rect.y += parent->rect.y;
  }
}

QWindow::~QWindow()
{
  QWindowManager* wm = Manager();
  if (!wm)
    return;
  if (wm->Contains(this))
    wm->RemoveWindow(this);
  for (QWindow* w : wm->Windows()) {
    if (w->parent == this)
      w->parent = nullptr;
    if (w->compound == this)
      w->compound = nullptr;
  }
}

bool QWindow::Create()
{
  QWindowManager* wm = Manager();
  if (!wm || IsCreated())
    return IsCreated();
  if (flags & X) {
    if (parent && !(parent->flags & X)) {
      QERR("QWindow::Create() without a parent real X window");
      return false;
    }
    QDisplayWindow wanted;
    wanted.rect = rect;
    wanted.title = GetText();
    wanted.fullScreen = flags & FULLSCREEN;
    wanted.resizable = !(flags & NO_RESIZE);
    wanted.frame = flags & WM;
    wanted.bits = app->glSettings.bits;
    wanted.depth = app->glSettings.depth;
    wanted.stencil = app->glSettings.stencil;
    wanted.alpha = app->glSettings.alpha;
    wanted.hz = app->glSettings.hz;
    wanted.stereo = app->glSettings.stereo;
    wanted.scale = app->scale;
    xwin = std::make_unique<QXWindow>(app->GetDisplay(), *this);
    if (!xwin->Create(wanted))
      return false;
    rect = app->GetDisplay().WindowRect();
  }
  if (!wm->AddWindow(this))
    return false;
  flags |= CREATED;
  Invalidate();
  return true;
}

void QWindow::Destroy()
{
  if (IsCreated() && Manager())
    Manager()->RemoveWindow(this);
  flags &= ~static_cast<uint32_t>(CREATED);
  xwin.reset();
}

void QWindow::Hide()
{
  if (flags & X) {
    QWARN("Can't hide X QWindow");
    return;
  }
  if (flags & HIDDEN)
    return;
  flags |= HIDDEN;
  if (QWindowManager* wm = Manager()) {
    if (wm->GetFocus() == this)
      wm->SetKeyboardFocus(nullptr);
    if (wm->GetGrabbed() == this)
      wm->Ungrab();
    wm->RequestPaint();
  }
}

void QWindow::Show()
{
  flags &= ~static_cast<uint32_t>(HIDDEN);
  Invalidate();
}

void QWindow::Paint(const QRect*)
{}

bool QWindow::Event(QEvent* event)
{
  switch (event->type) {
  case QEvent::KEYPRESS:
    return EvKeyPress(event->n, event->x, event->y);
  case QEvent::KEYRELEASE:
    return EvKeyRelease(event->n, event->x, event->y);
  case QEvent::BUTTONPRESS:
    return EvButtonPress(event->n, event->x, event->y);
  case QEvent::BUTTONRELEASE:
    return EvButtonRelease(event->n, event->x, event->y);
  case QEvent::MOTIONNOTIFY:
    return EvMotionNotify(event->x, event->y);
  case QEvent::ENTER:
    return EvEnter(event);
  case QEvent::LEAVE:
    return EvLeave(event);
  case QEvent::EXPOSE:
    return EvExpose(event->x, event->y, event->wid, event->hgt);
  case QEvent::RESIZE:
    return EvResize(event->wid, event->hgt);
  case QEvent::FOCUSIN:
    return EvFocusIn(event);
  case QEvent::FOCUSOUT:
    return EvFocusOut(event);
  default:
    return false;
  }
}

bool QWindow::EvButtonPress(int, int, int)
{
  return false;
}
bool QWindow::EvButtonRelease(int, int, int)
{
  return false;
}

bool QWindow::EvKeyPress(int key, int, int)
{
  QWindowManager* wm = Manager();
  if (!wm || QKeyOf(key) != QKEY_TAB || key & (QMOD_CTRL | QMOD_ALT))
    return false;
  key& QMOD_SHIFT ? wm->FocusPrevious() : wm->FocusNext();
  return true;
}

bool QWindow::EvKeyRelease(int, int, int)
{
  return false;
}
bool QWindow::EvMotionNotify(int, int)
{
  return false;
}

bool QWindow::EvExpose(int, int, int, int)
{
  Invalidate();
  return true;
}

bool QWindow::EvResize(int, int)
{
  return false;
}

bool QWindow::EvFocusIn(QEvent*)
{
  Invalidate();
  return false;
}

bool QWindow::EvFocusOut(QEvent*)
{
  Invalidate();
  return false;
}

bool QWindow::EvEnter(QEvent*)
{
  return false;
}
bool QWindow::EvLeave(QEvent*)
{
  return false;
}

bool QWindow::CheckNotCreated(const char* operation) const
{
  if (IsCreated())
    QWARN("QWindow:%s() called after window was created", operation);
  return !IsCreated();
}

void QWindow::PrefFullScreen()
{
  if (CheckNotCreated("PrefFullScreen"))
    flags |= FULLSCREEN;
}

void QWindow::PrefWM(bool on)
{
  if (CheckNotCreated("PrefWM"))
    flags = on ? flags | WM : flags & ~static_cast<uint32_t>(WM);
}

void QWindow::PrefNoResize(bool on)
{
  if (CheckNotCreated("PrefNoResize"))
    flags = on ? flags | NO_RESIZE : flags & ~static_cast<uint32_t>(NO_RESIZE);
}

void QWindow::MakeRealX()
{
  if (CheckNotCreated("MakeRealX"))
    flags |= X;
}

void QWindow::MakeSoftWindow()
{
  if (CheckNotCreated("MakeSoftWindow"))
    flags &= ~static_cast<uint32_t>(X);
}

void QWindow::MoveBy(int dx, int dy)
{
  rect.x += dx;
  rect.y += dy;
  for (QWindow* w : Manager()->Windows())
    if (w->parent == this)
      w->MoveBy(dx, dy);
}

void QWindow::Move(int x, int y, bool repaint)
{
  if (!Manager())
    return;
  if (flags & X) {
    app->GetDisplay().MoveWindow(x, y);
    relPos.x = rect.x = x;
    relPos.y = rect.y = y;
    return;
  }
  const int dx = x - relPos.x;
  const int dy = y - relPos.y;
  relPos.x = x;
  relPos.y = y;
  MoveBy(dx, dy);
  if (repaint)
    Invalidate();
}

void QWindow::Size(int wid, int hgt)
{
  if (flags & X && IsCreated())
    app->GetDisplay().SizeWindow(wid, hgt);
  rect.wid = relPos.wid = wid;
  rect.hgt = relPos.hgt = hgt;
  Invalidate();
}

void QWindow::Enable()
{
  flags &= ~static_cast<uint32_t>(DISABLED);
  Invalidate();
}

void QWindow::Disable()
{
  flags |= DISABLED;
  Invalidate();
}

bool QWindow::IsEnabled() const
{
  for (const QWindow* w = this; w; w = w->parent)
    if (w->flags & DISABLED)
      return false;
  return true;
}

bool QWindow::IsVisible() const
{
  for (const QWindow* w = this; w; w = w->parent)
    if (w->flags & HIDDEN)
      return false;
  return IsCreated();
}

bool QWindow::HasFocus() const
{
  return Manager() && Manager()->GetFocus() == this;
}

void QWindow::SetTabStop(int n)
{
  tabStop = n == -2 && Manager() ? Manager()->GetNextTabStop() : n;
}

void QWindow::GetRootPos(int& x, int& y) const
{
  x = flags & X ? 0 : rect.x;
  y = flags & X ? 0 : rect.y;
}

QRect QWindow::RootRect() const
{
  QRect r = rect;
  GetRootPos(r.x, r.y);
  return r;
}

void QWindow::Invalidate(const QRect*)
{
  if (Manager() && IsCreated())
    Manager()->RequestPaint();
}

void QWindow::PaintTexture(DTexture* texture, const QRect& src, int x, int y)
{
  PaintTextureStretched(texture, src, {x, y, src.wid, src.hgt});
}

void QWindow::PaintTextureStretched(DTexture* texture, const QRect& src, const QRect& dst)
{
  if (!texture) {
    QWARN("QWindow:PaintTexture(); no texture");
    return;
  }
  if (!DGlobals().hasContext)
    return;
  if (texture->glTexture == 0)
    texture->CreateTexture();
  cv.Texture(texture->glTexture, texture->width, texture->height, src, dst);
}

void QWindow::SendEvent(int type, int n)
{
  if (!app)
    return;
  QEvent event;
  event.type = type;
  event.n = n;
  event.win = this;
  event.xRoot = app->GetMouseX();
  event.yRoot = app->GetMouseY();
  int x = 0, y = 0;
  GetRootPos(x, y);
  event.x = event.xRoot - x;
  event.y = event.yRoot - y;
  QEventPush(event);
}

QDraw::QDraw(QWindow* owner, const QRect& area) : QWindow(owner, area)
{
  Create();
}
