#pragma once

#include "foundation/qrect.h"
#include "ui/qevent.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// What the one real window is to be.
struct QDisplayWindow
{
  QRect rect; // a position of -1 centres it on the work area
  std::string title;
  bool fullScreen = false;
  bool resizable = false;
  bool frame = true; // title bar and borders of the window system
  int bits = 32, depth = 24, stencil = 8, alpha = 8;
  bool stereo = false; // a picture for each eye
  int hz = 0;          // refresh rate of a full screen; 0: any
  float scale = 0;     // device pixels to a pixel of the toolkit; 0: as the screen suggests
};

enum class QPointerShape
{
  ARROW,
  TEXT,
  MOVE,
  WAIT
};

// What the frame needs of the machine. Text is UTF-8.
class QDisplay
{
public:
  virtual ~QDisplay() = default;
  // False when there is no display to be had; Name says which was tried.
  [[nodiscard]] virtual bool Open() = 0;
  virtual void Close() = 0;
  virtual std::string Name() const = 0;

  // One window. False when it can't be had (reported).
  [[nodiscard]] virtual bool CreateWindow(const QDisplayWindow& wanted) = 0;
  virtual void DestroyWindow() = 0;
  virtual void SetTitle(std::string_view title) = 0;
  virtual void SetIcon(int wid, int hgt, std::span<const uint32_t> rgba) = 0; // rows from the top, red in byte 0
  virtual QRect WindowRect() const = 0; // on the screen, without the window system's frame
  virtual QRect WorkArea() const = 0;
  // Device pixels to a pixel of the toolkit: 1, 1.5, 2 and so on. All positions and sizes here are in the toolkit's
  // pixels; only what draws looks at the device's.
  virtual float Scale() const = 0;
  virtual void MoveWindow(int x, int y) = 0;
  virtual void SizeWindow(int wid, int hgt) = 0;
  virtual void RaiseWindow() = 0;
  virtual void MinimizeWindow() = 0;

  // A drawing context for the window, current from then on. False: there is none, and nothing may be drawn.
  [[nodiscard]] virtual bool CreateContext() = 0;
  virtual void SelectContext() = 0;
  virtual void Swap() = 0;

  // The next thing that happened, without waiting; false when there is none. win is null, positions stand in xRoot
  // and yRoot, n of a key is its number without modifiers.
  virtual bool NextEvent(QEvent& event) = 0;
  // Answers the window system, and keeps what happened for NextEvent: for whoever is busy for long.
  virtual void Pump() = 0;
  // The system wants the program to end, whatever it is asking or doing; unlike a closed window, which is the user's
  // answer to what is asked.
  virtual bool WantsEnd() const { return false; }
  virtual void Sleep(int milliseconds) = 0;
  virtual int64_t Clock() const = 0; // monotonic milliseconds

  virtual void ShowPointer(bool show) = 0;
  virtual void PlacePointer(int x, int y) = 0;            // in the window
  virtual void PointerPosition(int& x, int& y) const = 0; // on the screen, now
  virtual void SetPointerShape(QPointerShape shape) = 0;
  virtual std::string Clipboard() const = 0;
  virtual void SetClipboard(std::string_view text) = 0;
};
