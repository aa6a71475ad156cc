#pragma once

#include <cstdint>
#include <memory>

class QWindow;

// One thing that happened. Copied by value; 48 bytes.
struct QEvent
{
  enum Type : int
  {
    NONE = 1, // what the events of a removed window become: nobody handles it
    KEYPRESS = 2,
    KEYRELEASE = 3,
    BUTTONPRESS = 4,
    BUTTONRELEASE = 5,
    MOTIONNOTIFY = 6,
    ENTER = 7,
    LEAVE = 8,
    EXPOSE = 12,
    RESIZE = 22,
    WHEEL = 30,    // n: signed delta, 120 a notch, positive away from the user
    APPFOCUS = 31, // the application was activated or left
    DOUBLECLICK = 50,
    CLICK = 100, // a control was operated
    FOCUSIN = 102,
    FOCUSOUT = 103,
    SLIDE = 104, // a slider is being dragged
    CLOSE = 105,
  };
  // In xRoot and yRoot of a key press that a button sent itself.
  static constexpr int MAGIC = 0x676256;

  int type = NONE;
  int x = 0, y = 0; // of the pointer, relative to win once dispatched
  int wid = 0, hgt = 0;
  int n = 0;                // button number (1 left, 2 middle, 3 right), or key code with modifiers
  int xRoot = 0, yRoot = 0; // of the pointer on the top-level window
  uint32_t p = 0;           // milliseconds; for button events
  char32_t text = 0;        // what the key press types, whatever the keyboard's layout; 0: nothing
  QWindow* win = nullptr;   // receiver; not owned, and only good while the window manager knows it

  bool IsKey() const { return type == KEYPRESS || type == KEYRELEASE; }
  bool IsPointer() const
  {
    return (type >= BUTTONPRESS && type <= MOTIONNOTIFY) || type == WHEEL || type == DOUBLECLICK;
  }
};
static_assert(sizeof(QEvent) == 48);

// A ring of events with a fixed number of places.
class QEventQueue
{
public:
  static constexpr int CAPACITY = 3072;
  QEventQueue();
  // Drops EXPOSE, since windows paint on their own. A motion replaces the position of an unread one for the same
  // window, if that window asks for it and nothing else came between. False, reported, when the queue is full.
  bool Push(const QEvent& event);
  // False when there is none.
  bool Get(QEvent& event);
  int Count() const { return count; }
  // Events for the window become NONE.
  void Forget(const QWindow* window);

private:
  QEvent& At(int i) { return ring[static_cast<size_t>((read + i) % CAPACITY)]; }
  std::unique_ptr<QEvent[]> ring;
  int read = 0;
  int count = 0;
};

// The queue of the application; without an application an event is dropped.
bool QEventPush(const QEvent& event);
// Takes over what the platform has, and says whether anything is queued.
bool QEventPending();
// Waits for an event.
void QEventGet(QEvent& event);
