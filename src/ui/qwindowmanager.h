#pragma once

#include "foundation/qcolor.h"
#include "foundation/qobject.h"
#include "foundation/qrect.h"
#include "ui/qevent.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

class DTexture;
class QWindow;
class QXWindow;

// Knows all windows, in the order of their creation, which is the order of painting: newer ones lie above older ones.
class QWindowManager : public QObject
{
public:
  QWindowManager();
  ~QWindowManager() override;
  const char* GetClassName() const override { return "QWindowManager"; }

  // False, reported, for a window outside the active group.
  bool AddWindow(QWindow* w);
  // Its unread events are dropped; it loses focus, grab and pointer. False, reported, when it isn't known.
  bool RemoveWindow(QWindow* w);
  bool Contains(const QWindow* w) const;

  // Turns what the platform told into events for windows and queues them.
  void Convert(const QEvent& raw);
  // Takes an event through focus, grab, shortcut holders and up the parents. True when it was used, or is not to
  // reach anybody.
  bool ProcessEvent(QEvent* event);

  void SetKeyboardFocus(QWindow* w); // null: nobody
  void FocusFirst();
  void FocusLast();
  void FocusNext();
  void FocusPrevious();
  QWindow* GetFocus() const { return focus; }
  int GetNextTabStop() const;

  // Pointer events go to this window until it lets go.
  void Grab(QWindow* w) { grabbed = w; }
  void Ungrab() { grabbed = nullptr; }
  QWindow* GetGrabbed() const { return grabbed; }
  QWindow* GetPointerWindow() const { return pointerWin; }

  // The topmost visible window at the point; null outside all.
  QWindow* FindWindowAt(const QXWindow* xwin, int x, int y) const;
  QWindow* FindXWindow(const QXWindow* xwin) const;

  void SetBackgroundColor(const QColor& c) { background = c; }
  // A picture that covers the background as tiles, from the window's origin; an empty path: none. False, reported, when
  // it can't be read: then the colour stays.
  bool SetBackgroundImage(const std::string& path);
  void PaintBackground(QWindow* w, const QRect* r);
  void PaintAll();      // the background, then all visible windows from the oldest on
  void PaintChildren(); // the same without the shell and its background
  void RequestPaint() { paintWanted = true; }
  bool TakePaintRequest();

  // From then on only windows with this compound take part; null: all. The group's windows come to lie on top.
  void SetActiveGroup(QWindow* w);
  QWindow* GetActiveGroup() const { return activeGroup; }
  bool IsInActiveGroup(const QWindow* w) const;
  // Makes the window the group and gives the one before, to be handed to EndModal.
  QWindow* BeginModal(QWindow* w);
  void EndModal(QWindow* before);

  // What a person could point at: the newest visible window of the class with that text; null when there is none.
  QWindow* FindVisible(std::string_view className, std::string_view text) const;
  // The newest visible dialog, or null.
  QWindow* OpenDialog() const;
  // The texts of all visible windows of a class, in the order of creation.
  std::vector<std::string> VisibleTexts(std::string_view className) const;
  const std::deque<QWindow*>& Windows() const { return windows; }

  std::function<void(QWindow*)> onAddWindow;

private:
  struct Press
  {
    uint32_t time = 0;
    int button = 0;
    int x = 0, y = 0;
  };
  bool Offer(QWindow* w, const QEvent& event, std::vector<const QWindow*>& offered);
  bool OfferFirst(QWindow* w, const QEvent& event, std::vector<const QWindow*>& offered);
  bool OfferKeyCatchers(const QEvent& event, std::vector<const QWindow*>& offered);
  bool Bubble(const QEvent& event, std::vector<const QWindow*>& offered);
  void ConvertPointer(QEvent event);
  void FocusByOrder(bool forward);
  QWindow* TabStopNext(int from, bool forward) const;

  std::deque<QWindow*> windows;             // not owned
  std::unordered_set<const QWindow*> known; // the same ones; asked for each event
  QWindow* focus = nullptr;
  QWindow* grabbed = nullptr;
  QWindow* pointerWin = nullptr;
  QWindow* activeGroup = nullptr;
  QColor background{94, 94, 94};
  std::unique_ptr<DTexture> backgroundTexture;
  Press lastPress;
  int pointerX = 0, pointerY = 0; // where the platform last told
  bool paintWanted = true;
};
