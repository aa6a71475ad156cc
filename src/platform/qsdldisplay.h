#pragma once

#include "ui/qdisplay.h"

#include <deque>

struct SDL_Window;
struct SDL_Cursor;
struct SDL_KeyboardEvent;
union SDL_Event;

// The window, its input and its context by SDL 2: X11, or the offscreen driver, which has a context but no screen.
class QSDLDisplay : public QDisplay
{
public:
  QSDLDisplay() = default;
  ~QSDLDisplay() override;
  QSDLDisplay(const QSDLDisplay&) = delete;
  QSDLDisplay& operator=(const QSDLDisplay&) = delete;
  bool Open() override;
  void Close() override;
  std::string Name() const override;
  bool CreateWindow(const QDisplayWindow& wanted) override;
  void DestroyWindow() override;
  void SetTitle(std::string_view title) override;
  void SetIcon(int wid, int hgt, std::span<const uint32_t> rgba) override;
  QRect WindowRect() const override;
  QRect WorkArea() const override;
  float Scale() const override { return scale; }
  void MoveWindow(int x, int y) override;
  void SizeWindow(int wid, int hgt) override;
  void RaiseWindow() override;
  void MinimizeWindow() override;
  bool CreateContext() override;
  void SelectContext() override;
  void Swap() override;
  bool NextEvent(QEvent& event) override;
  void Pump() override;
  bool WantsEnd() const override;
  void Sleep(int milliseconds) override;
  int64_t Clock() const override;
  void ShowPointer(bool show) override;
  void PlacePointer(int x, int y) override;
  void PointerPosition(int& x, int& y) const override;
  void SetPointerShape(QPointerShape shape) override;
  std::string Clipboard() const override;
  void SetClipboard(std::string_view text) override;

private:
  bool SetFullScreen(const QDisplayWindow& wanted);
  void ChooseScale(const QDisplayWindow& wanted);
  void MeasureDensity();
  bool CheckPixelFormat(bool stereo) const;
  // Between pixels of the interface and what the window system counts in.
  int ToSystem(int at) const;
  int FromSystem(int at) const;
  void TakeKey(const SDL_KeyboardEvent& key);
  void TakeText(const char* text, QEvent* press);
  void TakeMouse(const SDL_Event& event);
  void TakeWindow(const SDL_Event& event);
  void Take(const SDL_Event& event);

  bool open = false;
  float scale = 1;
  float density = 1; // device pixels to one of the window system's
  SDL_Window* window = nullptr;
  void* context = nullptr;
  SDL_Cursor* cursor = nullptr;
  QPointerShape cursorShape = QPointerShape::ARROW;
  std::deque<QEvent> pending; // taken from SDL, not yet handed out
  // What is held, by the key events in their order: SDL's own state runs ahead of them.
  bool ctrlHeld = false, altHeld = false, rightAltHeld = false;
};
