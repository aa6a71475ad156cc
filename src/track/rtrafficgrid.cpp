#include "track/rtrafficgrid.h"

#include "foundation/qreport.h"
#include "geometry/doverlay.h"
#include "track/rinfokeys.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace {

constexpr float DEFAULT_VELOCITY = 20; // m/s

std::string WayPointKey(int i)
{
  return "waypoints.waypoint" + std::to_string(i);
}

constexpr std::array<const char*, RTrafficWayPoint::DIRECTIONS> LINK_KEYS = {".forward", ".left", ".right"};

RTrafficWayPoint LoadWayPoint(const QInfo& info, const std::string& key)
{
  RTrafficWayPoint w;
  w.pos = GetVector(info, key + ".pos");
  for (size_t i = 0; i < LINK_KEYS.size(); ++i)
    info.GetInts(key + LINK_KEYS[i], 1, &w.links[i]); // of a list the first
  w.flags = info.GetInt(key + ".flags");
  const int velocity = info.GetInt(key + ".velocity");
  w.velocity = velocity == 0 ? DEFAULT_VELOCITY : static_cast<float>(velocity);
  return w;
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
    for (size_t k = 0; k < LINK_KEYS.size(); ++k)
      info.SetInt(key + LINK_KEYS[k], w.links[k]);
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
    for (int& link : w.links) {
      if (link == index)
        link = -1;
      else if (link > index)
        --link;
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
  for (int link : w->links)
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
  PaintPoints(overlay);
  DOverlayStyle style;
  int i = 0;
  for (const RTrafficWayPoint& w : wayPoints) {
    std::array<char, 80> label;
    std::snprintf(label.data(), label.size(), "WP %d, %.1f m/s", i, static_cast<double>(w.velocity));
    style.color = i == selected ? QColor(255, 100, 100) : QColor(255, 255, 255);
    style.always = i == selected;
    overlay.Text(w.pos, label.data(), style);
    ++i;
  }
  PaintLinks(overlay);
}

// Two calls for all: there can be thousands.
void RTrafficGrid::PaintPoints(DOverlay& overlay) const
{
  std::vector<DVector3> points;
  points.reserve(static_cast<size_t>(wayPoints.Count()));
  int i = 0;
  for (const RTrafficWayPoint& w : wayPoints)
    if (i++ != selected)
      points.push_back(w.pos);
  DOverlayStyle style;
  style.depthTest = false; // the road, in which they lie, would hide half of each
  style.width = 10;
  style.color = QColor(255, 0, 0);
  overlay.Points(points, style);
  style.color = QColor(255, 204, 204);
  if (const RTrafficWayPoint* w = wayPoints.At(selected))
    overlay.Points({&w->pos, 1}, style);
}

void RTrafficGrid::PaintLinks(DOverlay& overlay) const
{
  std::vector<DVector3> ends;
  for (const RTrafficWayPoint& w : wayPoints)
    for (int link : w.links)
      if (const RTrafficWayPoint* to = wayPoints.At(link))
        ends.insert(ends.end(), {w.pos, to->pos});
  DOverlayStyle style;
  style.depthTest = false;
  style.color = QColor(0, 255, 0);
  overlay.Lines(ends, style);
  const RTrafficWayPoint* from = wayPoints.At(selected);
  if (!from)
    return;
  style.always = true;
  const char* letters[] = {"F", "L", "R"};
  for (size_t i = 0; i < from->links.size(); ++i)
    if (const RTrafficWayPoint* to = wayPoints.At(from->links[i]))
      overlay.Text((from->pos + to->pos) * 0.5f, letters[i], style);
}
