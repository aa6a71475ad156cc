#pragma once

#include <memory>
#include <string_view>
#include <vector>

class QInfo;

// One view on a keyframe path. Angles and field of view in degrees.
struct DCameraKeyFrame
{
  float t = 0; // place on the path: seconds, or metres along a road
  float x = 0, y = 0, z = 0;
  float yaw = 0, pitch = 0, roll = 0;
  float fov = 0;
};

// A camera path through keyframes, interpolated by a curve for each field.
// On a periodic path t runs round (a lap), and the path may lead over the period's end.
class DAnimatedCamera
{
public:
  enum Flag : unsigned
  {
    CLOSED = 0x01,
    PERIODIC = 0x02
  };
  explicit DAnimatedCamera(int maxKeyFrames);
  ~DAnimatedCamera();
  DAnimatedCamera(const DAnimatedCamera&) = delete;
  DAnimatedCamera& operator=(const DAnimatedCamera&) = delete;

  unsigned GetFlags() const { return flags; }
  void SetFlags(unsigned newFlags);
  float GetWrap() const { return wrap; }
  void SetWrap(float period); // and makes the path periodic

  // The keys "<key>.count", "<key>.keyframe<n>.t" and so on. Keyframes keep the order of the file.
  // More than there is room for are reported and left out.
  void Load(const QInfo& info, std::string_view key);
  void Save(QInfo& info, std::string_view key) const;

  int GetCount() const { return static_cast<int>(keyFrames.size()); }
  int GetCapacity() const { return capacity; }
  // Null when out of range. Whoever changes t calls Sort; the pointer holds until keyframes come or go.
  DCameraKeyFrame* GetKeyFrame(int i);
  const DCameraKeyFrame* GetKeyFrame(int i) const;
  // The keyframe with exactly this t, or -1.
  int Find(float t) const;
  // Replaces the keyframe with the same t, or adds one. False when full (reported).
  bool SetKeyFrame(const DCameraKeyFrame& keyFrame);
  // False when out of range (reported).
  bool RemoveKeyFrame(int i);
  void Clear();
  // Ascending in t; a closed path keeps its first keyframe, a periodic one starts behind its widest gap.
  void Sort();

  float GetFirstTime() const; // all four 0 without keyframes
  float GetLastTime() const;
  float GetMinTime() const;
  float GetMaxTime() const;
  // From the first keyframe to the last; on a periodic path the shorter way round. 0 with fewer than 2 keyframes.
  float GetDuration() const;
  // With at least 2 keyframes: t, or t one period on, lies between the first and the last.
  bool IsInside(float t) const;
  // out gets the view at t. On a periodic path t counts from the first keyframe. Leaves out alone without keyframes.
  void Evaluate(float t, DCameraKeyFrame& out) const;

private:
  struct Curves;
  float Distance(float from, float to) const;
  void DropCurves();
  void BuildCurves() const;

  unsigned flags = 0;
  int capacity;
  float wrap = 0;
  std::vector<DCameraKeyFrame> keyFrames;
  mutable std::unique_ptr<Curves> curves; // made by the first Evaluate after a change
};
