#pragma once

#include "foundation/qdrawable.h"
#include "foundation/qrect.h"
#include "ui/qcanvas.h"
#include "ui/qevent.h"
#include "ui/qkeys.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class DTexture;
class QXWindow;

// A rectangle on the top-level window that paints itself and takes events. It is known to the window manager from
// Create to its end. Whoever makes a window owns it; a window that outlives its parent stays without one.
class QWindow : public QDrawable
{
public:
  enum Flag : uint32_t
  {
    HIDDEN = 0x0001,
    DISABLED = 0x0002,
    X = 0x0004, // a real platform window
    CREATED = 0x0008,
    FULLSCREEN = 0x0080,
    WM = 0x0100, // with the window system's frame
    NO_CLEAR = 0x0400,
    IS_DIALOG = 0x0800,
    NO_RESIZE = 0x1000,
    POPUP = 0x10000, // a dialog that a press outside of it closes
  };
  static constexpr uint32_t CATCH_KEYS = 0x08; // of catchKeys: all key presses

  // The rectangle is relative to the parent, unless that is the shell. A child takes over its parent's compound.
  QWindow(QWindow* parent, const QRect& rect);
  ~QWindow() override;
  QWindow(const QWindow&) = delete;
  QWindow& operator=(const QWindow&) = delete;
  const char* GetClassName() const override { return "QWindow"; }

  // Real windows get their platform window and context. False, reported, when that can't be had.
  bool Create() override;
  void Destroy() override;
  int GetWidth() const override { return rect.wid; }
  int GetHeight() const override { return rect.hgt; }
  virtual void Hide();
  virtual void Show();
  virtual void Paint(const QRect* r = nullptr);
  // Dispatches to the handlers below; true when the event was used.
  virtual bool Event(QEvent* event);
  virtual bool EvButtonPress(int button, int x, int y);
  virtual bool EvButtonRelease(int button, int x, int y);
  virtual bool EvKeyPress(int key, int x, int y); // tab and shift-tab move the focus
  virtual bool EvKeyRelease(int key, int x, int y);
  virtual bool EvMotionNotify(int x, int y);
  virtual bool EvExpose(int x, int y, int wid, int hgt);
  virtual bool EvResize(int wid, int hgt);
  virtual bool EvFocusIn(QEvent* event);
  virtual bool EvFocusOut(QEvent* event);
  virtual bool EvEnter(QEvent* event);
  virtual bool EvLeave(QEvent* event);
  // What a person reads on it; empty when it shows no text.
  virtual std::string GetText() const { return {}; }
  virtual void SetText(std::string_view) {}

  // Only before Create; reported and ignored afterwards.
  void PrefFullScreen();
  void PrefWM(bool on = true);
  void PrefNoResize(bool on = true);
  void MakeRealX();
  void MakeSoftWindow();

  // Relative to the parent as in the constructor; children move along.
  void Move(int x, int y, bool repaint = true);
  void Size(int wid, int hgt);
  void Enable();
  void Disable();
  // A window without an enabled, visible parent is neither enabled nor visible.
  bool IsEnabled() const;
  bool IsVisible() const;
  bool IsCreated() const { return flags & CREATED; }
  bool HasFocus() const;
  void SetCompoundWindow(QWindow* w) { compound = w; }
  // -1: no focus; -2: the next free number.
  void SetTabStop(int n);
  void GetRootPos(int& x, int& y) const;
  // Where it stands on the top-level window.
  QRect RootRect() const;
  // Asks for the window, and all that lies above it, to be painted again.
  void Invalidate(const QRect* r = nullptr);
  // Part of a texture, at its own size or fitted into dst; source in texels from the top left. Reported without one.
  void PaintTexture(DTexture* texture, const QRect& src, int x, int y);
  void PaintTextureStretched(DTexture* texture, const QRect& src, const QRect& dst);
  QCanvas& GetCanvas() { return cv; }
  // Sends an event of this window to the queue, with the current pointer position.
  void SendEvent(int type, int n = 0);

  QRect rect;
  QRect relPos;
  std::unique_ptr<QXWindow> xwin;
  QWindow* parent;             // not owned; null at the top
  QWindow* compound = nullptr; // the dialog it belongs to, or what its parent has
  uint32_t flags = 0;
  uint32_t catchKeys = 0;
  int tabStop = -1;
  bool mergeMotion = false; // of motions that pile up only the newest is wanted
  void* userData = nullptr;

protected:
  bool CheckNotCreated(const char* operation) const;
  // True when the point, relative to this window, is on it.
  bool IsInside(int x, int y) const { return x >= 0 && y >= 0 && x < rect.wid && y < rect.hgt; }

  QCanvas cv;

private:
  void MoveBy(int dx, int dy);
};

// A drawing area: calls its painter.
class QDraw : public QWindow
{
public:
  QDraw(QWindow* owner, const QRect& area);
  const char* GetClassName() const override { return "QDraw"; }
};
