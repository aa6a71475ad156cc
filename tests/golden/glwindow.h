#pragma once

#include "foundation/qbitmap.h"

struct SDL_Window;

// An OpenGL context of the software renderer that draws into a window nobody sees. While it lives the scenery is drawn.
class GlWindow
{
public:
  GlWindow(int wid, int hgt);
  ~GlWindow();
  GlWindow(const GlWindow&) = delete;
  GlWindow& operator=(const GlWindow&) = delete;
  bool IsOpen() const { return context != nullptr; } // false: the machine has no such renderer
  QBitMap& Picture();                                // what was drawn
  // Errors that OpenGL told since the last call; each is printed.
  int TakeErrors();

private:
  int wid, hgt;
  SDL_Window* window = nullptr;
  void* context = nullptr;
  QBitMap picture;
};
