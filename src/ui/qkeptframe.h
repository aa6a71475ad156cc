#pragma once

#include "geometry/dtextureptr.h"

// What stood on the window, to be put there again below a dialog while nothing else is painted. Without a context
// nothing happens.
class QKeptFrame
{
public:
  // Of the back buffer, width and height in pixels of the screen.
  void Take(int width, int height);
  void Paint() const; // over all of the window
  void Drop() { picture = nullptr; }

private:
  DTexturePtr picture;
};
