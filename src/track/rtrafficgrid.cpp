#include "track/rtrafficgrid.h"

#include "foundation/qreport.h"
#include "geometry/doverlay.h"
#include "track/rinfokeys.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr float DEFAULT_VELOCITY = 20; // m/s

std::string WayPointKey(int i)
{
  return "waypoints.waypoint" + std::to_string(i);
}

RTrafficWayPoint LoadWayPoint(const QInfo& info, const std::string& key)
{
  RTrafficWayPoint w;
  w.pos = GetVector(info, key + ".pos");
  info.GetInts(key + ".forward", 3, w.forward.data());
  info.GetInts(key + ".left", 3, w.left.data());
  info.GetInts(key + ".right", 3, w.right.data());
  w.flags = info.GetInt(key + ".flags");
  const int velocity = info.GetInt(key + ".velocity");
  w.velocity = velocity == 0 ? DEFAULT_VELOCITY : static_cast<float>(velocity);
  return w;
}

std::string LinkText(const RTrafficWayPoint::Links& links)
{
  return std::to_string(links[0]) + " " + std::to_string(links[1]) + " " + std::to_string(links[2]);
}

int WholeVelocity(float velocity)
{
  constexpr float LIMIT = 1e9f; // also keeps NaN out
  return velocity > -LIMIT && velocity < LIMIT ? static_cast<int>(velocity) : 0;
}

} // namespace

bool RTrafficGrid::Load(const std::string& path, const std::function<void(const QInfo&)>& afterRead)
{
  const QInfo info(path, QInfo::NO_OPEN_WARNING);
  unreadable = info.IsUnreadable();
  if (!info.IsRead())
    return false;
  wayPoints.Clear();
  cars.Clear();
  selected = -1;
  const int count = std::min(GetCount(info, "waypoints.count"), MAX_WAYPOINTS);
  for (int i = 0; i < count; ++i) {
    const std::string key = WayPointKey(i);
    if (!info.PathExists(key + ".pos"))
      break;
    static_cast<void>(wayPoints.Add(LoadWayPoint(info, key)));
  }
  for (int i = 0; i < MAX_CARS; ++i) {
    const std::string key = "cars.car" + std::to_string(i);
    RTrafficCar car;
    if (!info.GetString(key + ".car", car.car))
      break;
    car.wayPoint = info.GetInt(key + ".waypoint");
    static_cast<void>(cars.Add(std::move(car)));
  }
  if (afterRead)
    afterRead(info);
  return true;
}

void RTrafficGrid::Save(QInfo& info) const
{
  info.SetInt("waypoints.count", wayPoints.Count());
  int i = 0;
  for (const RTrafficWayPoint& w : wayPoints) {
    const std::string key = WayPointKey(i++);
    SetVector(info, key + ".pos", w.pos);
    info.SetString(key + ".forward", LinkText(w.forward));
    info.SetString(key + ".left", LinkText(w.left));
    info.SetString(key + ".right", LinkText(w.right));
    info.SetInt(key + ".flags", w.flags);
    info.SetInt(key + ".velocity", WholeVelocity(w.velocity));
  }
}

bool RTrafficGrid::Save(const std::string& path) const
{
  QInfo info(path, QInfo::NO_OPEN_WARNING);
  Save(info);
  return info.Write();
}

RTrafficWayPoint* RTrafficGrid::Add()
{
  return wayPoints.Count() >= MAX_ADDED ? nullptr : wayPoints.Add({});
}

bool RTrafficGrid::Remove(int index)
{
  if (!wayPoints.Remove(index))
    return false;
  for (RTrafficWayPoint& w : wayPoints) {
    for (RTrafficWayPoint::Links* links : {&w.forward, &w.left, &w.right}) {
      for (int& link : *links) {
        if (link == index)
          link = -1;
        else if (link > index)
          --link;
      }
    }
  }
  return true;
}

bool RTrafficGrid::WarpCar(int car, int wayPoint, DVector3& position, DVector3& behind) const
{
  if (!cars.At(car)) {
    QWARN("Car #%d not found", car);
    return false;
  }
  const RTrafficWayPoint* w = wayPoints.At(wayPoint);
  if (!w) {
    QWARN("Waypoint %d out of range 0..%d", wayPoint, wayPoints.Count() - 1);
    return false;
  }
  const RTrafficWayPoint* next = nullptr;
  for (const RTrafficWayPoint::Links* links : {&w->forward, &w->left, &w->right})
    for (int link : *links)
      next = next ? next : wayPoints.At(link);
  if (!next) {
    QWARN("RTrafficGrid::WarpCarToWayPoint() Need waypoint to warp to");
    return false;
  }
  position = w->pos;
  behind = position - DNormalized(next->pos - position);
  return true;
}

void RTrafficGrid::Paint(DOverlay& overlay) const
{
  int i = 0;
  for (const RTrafficWayPoint& w : wayPoints) {
    DOverlayStyle style;
    style.color = i == selected ? QColor(255, 204, 204) : QColor(255, 0, 0);
    std::array<char, 80> label;
    std::snprintf(label.data(), label.size(), "WP %d, %.1f m/s", i, static_cast<double>(w.velocity));
    overlay.Text(w.pos, label.data(), style);
    for (const RTrafficWayPoint::Links* links : {&w.forward, &w.left, &w.right})
      for (int link : *links)
        if (const RTrafficWayPoint* to = wayPoints.At(link))
          overlay.Line(w.pos, to->pos, style);
    ++i;
  }
}
