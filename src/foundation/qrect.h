#pragma once

// Position and size in whole pixels.
struct QRect
{
  int x = 0;
  int y = 0;
  int wid = 0;
  int hgt = 0;

  bool Contains(int px, int py) const { return px >= x && px < x + wid && py >= y && py < y + hgt; }
  friend bool operator==(const QRect&, const QRect&) = default;
};
