#include "scene/danimatedcamera.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dhermite.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

namespace {

// In the order in which a file lists them.
constexpr struct
{
  const char* name;
  float DCameraKeyFrame::*field;
} storedFields[] = {
    {"fov", &DCameraKeyFrame::fov}, {"x", &DCameraKeyFrame::x},         {"y", &DCameraKeyFrame::y},
    {"z", &DCameraKeyFrame::z},     {"pitch", &DCameraKeyFrame::pitch}, {"roll", &DCameraKeyFrame::roll},
    {"yaw", &DCameraKeyFrame::yaw}, {"t", &DCameraKeyFrame::t},
};

std::string FieldPath(std::string_view key, int i, const char* field)
{
  return std::string(key) + ".keyframe" + std::to_string(i) + "." + field;
}

} // namespace

// One for each stored field but t. Their parameter runs from the first key to the last.
struct DAnimatedCamera::Curves
{
  std::array<DNonUniformHermiteSpline, std::size(storedFields) - 1> curve;
  float first = 0;
  float last = 0;
};

DAnimatedCamera::DAnimatedCamera(int maxKeyFrames) : capacity(std::max(maxKeyFrames, 0))
{}

DAnimatedCamera::~DAnimatedCamera() = default;

void DAnimatedCamera::SetFlags(unsigned newFlags)
{
  flags = newFlags;
  DropCurves();
}

void DAnimatedCamera::SetWrap(float period)
{
  wrap = period;
  flags |= PERIODIC;
  DropCurves();
}

void DAnimatedCamera::Load(const QInfo& info, std::string_view key)
{
  Clear();
  int count = std::max(info.GetInt(std::string(key) + ".count"), 0);
  if (count > capacity) {
    QWARN("DAnimatedCamera:Load(); more keyframes in file than allocated; capping");
    count = capacity;
  }
  for (int i = 0; i < count; ++i) {
    DCameraKeyFrame& keyFrame = keyFrames.emplace_back();
    for (const auto& stored : storedFields)
      keyFrame.*stored.field = info.GetFloat(FieldPath(key, i, stored.name));
  }
}

void DAnimatedCamera::Save(QInfo& info, std::string_view key) const
{
  info.SetInt(std::string(key) + ".count", GetCount());
  for (int i = 0; i < GetCount(); ++i)
    for (const auto& stored : storedFields)
      info.SetFloat(FieldPath(key, i, stored.name), GetKeyFrame(i)->*stored.field);
}

DCameraKeyFrame* DAnimatedCamera::GetKeyFrame(int i)
{
  return const_cast<DCameraKeyFrame*>(std::as_const(*this).GetKeyFrame(i));
}

const DCameraKeyFrame* DAnimatedCamera::GetKeyFrame(int i) const
{
  return i >= 0 && i < GetCount() ? &keyFrames[static_cast<size_t>(i)] : nullptr;
}

int DAnimatedCamera::Find(float t) const
{
  for (int i = 0; i < GetCount(); ++i)
    if (GetKeyFrame(i)->t == t)
      return i;
  return -1;
}

bool DAnimatedCamera::SetKeyFrame(const DCameraKeyFrame& keyFrame)
{
  if (DCameraKeyFrame* same = GetKeyFrame(Find(keyFrame.t))) {
    *same = keyFrame;
  } else if (GetCount() < capacity) {
    keyFrames.push_back(keyFrame);
  } else {
    QWARN("DAnimatedCamera:SetKeyFrame() out of keyframe space");
    return false;
  }
  Sort();
  return true;
}

bool DAnimatedCamera::RemoveKeyFrame(int i)
{
  if (!GetKeyFrame(i)) {
    QWARN("DAnimatedCamera::RemoveKeyFrame(%d) out of range 0..%d", i, GetCount() - 1);
    return false;
  }
  keyFrames.erase(keyFrames.begin() + i);
  DropCurves();
  return true;
}

void DAnimatedCamera::Clear()
{
  keyFrames.clear();
  DropCurves();
}

void DAnimatedCamera::Sort()
{
  DropCurves();
  const bool periodic = flags & PERIODIC;
  // Exchanges, since a file can hold numbers without an order (NaN), which the library's sorts don't survive.
  for (size_t i = flags & CLOSED && !periodic ? 1 : 0; i < keyFrames.size(); ++i)
    for (size_t j = i + 1; j < keyFrames.size(); ++j)
      if (keyFrames[j].t < keyFrames[i].t)
        std::swap(keyFrames[i], keyFrames[j]);
  if (!periodic || keyFrames.size() < 2)
    return;
  // The gap over the period's end counts first: it wins over an equally wide one, and the order stays ascending.
  size_t start = 0;
  float widest = wrap - (keyFrames.back().t - keyFrames.front().t);
  for (size_t i = 1; i < keyFrames.size(); ++i)
    if (const float gap = keyFrames[i].t - keyFrames[i - 1].t; gap > widest) {
      widest = gap;
      start = i;
    }
  std::rotate(keyFrames.begin(), keyFrames.begin() + static_cast<std::ptrdiff_t>(start), keyFrames.end());
}

float DAnimatedCamera::GetFirstTime() const
{
  return keyFrames.empty() ? 0 : keyFrames.front().t;
}

float DAnimatedCamera::GetLastTime() const
{
  return keyFrames.empty() ? 0 : keyFrames.back().t;
}

float DAnimatedCamera::GetMinTime() const
{
  float least = GetFirstTime();
  for (const DCameraKeyFrame& keyFrame : keyFrames)
    least = std::min(least, keyFrame.t);
  return least;
}

float DAnimatedCamera::GetMaxTime() const
{
  float most = GetFirstTime();
  for (const DCameraKeyFrame& keyFrame : keyFrames)
    most = std::max(most, keyFrame.t);
  return most;
}

float DAnimatedCamera::Distance(float from, float to) const
{
  const float difference = to - from;
  if (flags & PERIODIC && std::abs(difference) > wrap / 2)
    return difference > 0 ? wrap - difference : wrap + difference;
  return std::abs(difference);
}

float DAnimatedCamera::GetDuration() const
{
  return GetCount() < 2 ? 0 : Distance(GetFirstTime(), GetLastTime());
}

bool DAnimatedCamera::IsInside(float t) const
{
  if (GetCount() < 2)
    return false;
  const float first = GetFirstTime();
  const bool overEnd = flags & PERIODIC && GetLastTime() < first;
  const float last = GetLastTime() + (overEnd ? wrap : 0);
  const auto within = [first, last](float at) { return at >= first && at <= last; };
  return within(t) || (flags & PERIODIC && within(t + wrap));
}

void DAnimatedCamera::DropCurves()
{
  curves.reset();
}

void DAnimatedCamera::BuildCurves() const
{
  curves = std::make_unique<Curves>();
  const bool periodic = flags & PERIODIC;
  // On a periodic path t jumps at the period's end, so the way along the path takes its place.
  float at = periodic ? 0 : GetFirstTime();
  curves->first = at;
  for (int i = 0; i < GetCount(); ++i) {
    const DCameraKeyFrame& keyFrame = *GetKeyFrame(i);
    if (i > 0)
      at = periodic ? at + Distance(GetKeyFrame(i - 1)->t, keyFrame.t) : keyFrame.t;
    for (size_t c = 0; c < curves->curve.size(); ++c)
      curves->curve[c].AddKey(at, keyFrame.*storedFields[c].field);
  }
  curves->last = at;
  for (DNonUniformHermiteSpline& curve : curves->curve)
    curve.SetClosed(flags & CLOSED);
}

void DAnimatedCamera::Evaluate(float t, DCameraKeyFrame& out) const
{
  if (keyFrames.empty())
    return;
  if (keyFrames.size() == 1) {
    out = keyFrames.front();
    out.t = t;
    return;
  }
  if (!curves)
    BuildCurves();
  // Beyond its ends an open path stands still. A t that isn't a number stays one.
  const float at = flags & CLOSED ? t : std::clamp(t, curves->first, std::max(curves->first, curves->last));
  for (size_t c = 0; c < curves->curve.size(); ++c)
    out.*storedFields[c].field = curves->curve[c].GetValue(at);
  out.t = t;
}
