#pragma once

#include "foundation/qtable.h"
#include "geometry/dvector.h"

#include <array>
#include <functional>
#include <string>

class DOverlay;
class QInfo;

// A place that traffic drives through, with up to three ways on.
struct RTrafficWayPoint
{
  enum Direction
  {
    FORWARD,
    LEFT,
    RIGHT
  };
  static constexpr int DIRECTIONS = 3;
  DVector3 pos{0.0f};
  float velocity = 20; // m/s; a whole number in the file
  // By direction: the number of the next way point, -1 for none. What came from a file may name none that exists.
  std::array<int, DIRECTIONS> links{-1, -1, -1};
  int flags = 0;
};

struct RTrafficCar
{
  std::string car;
  int wayPoint = 0;
};

// The graph of way points along which traffic cars drive, and the cars to place: "traffic.ini".
class RTrafficGrid
{
public:
  static constexpr int MAX_WAYPOINTS = 5000;
  static constexpr int MAX_ADDED = 4999;
  static constexpr int MAX_CARS = 20;
  DTable<RTrafficWayPoint, MAX_WAYPOINTS> wayPoints;
  DTable<RTrafficCar, MAX_CARS> cars;
  int selected = -1;

  bool unreadable = false; // the file is there, but Load couldn't read it

  // False, with nothing changed, when there is no such file. afterRead gets the file when all that is wanted was read.
  bool Load(const std::string& path, const std::function<void(const QInfo&)>& afterRead = {});
  // Cars and keys that aren't the grid's stay as they are.
  void Save(QInfo& info) const;
  // False when the file couldn't be written.
  bool Save(const std::string& path) const;
  // A new way point behind the last, or null when there are too many.
  RTrafficWayPoint* Add();
  // Links to the way point are cut, those behind it renumbered. False when out of range.
  bool Remove(int index);
  // Where the car stands when put on a way point: on it, facing the next, with a second point a metre behind.
  // False when car or way point don't exist or no way leads on (reported).
  bool WarpCar(int car, int wayPoint, DVector3& position, DVector3& behind) const;
  // Way points, their labels, their links; the selected one stands out, and its links are named.
  void Paint(DOverlay& overlay) const;

private:
  void PaintPoints(DOverlay& overlay) const;
  void PaintLinks(DOverlay& overlay) const;
};
