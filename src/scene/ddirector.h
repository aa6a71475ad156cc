#pragma once

#include <cstdint>
#include <vector>

class DCamera;

// A list of cameras that belong together. They must outlive the rail.
class DRail
{
public:
  void AddCamera(DCamera* camera) { cameras.push_back(camera); }
  int GetNoofCameras() const { return static_cast<int>(cameras.size()); }
  // Null out of range (reported).
  DCamera* GetCamera(int i) const;

private:
  std::vector<DCamera*> cameras;
};

// Chooses the camera that a view shows. The rails must outlive the director.
class DDirector
{
public:
  virtual ~DDirector() = default;
  virtual const char* GetClassName() const { return "director"; }
  virtual void Step(float /*seconds*/) {}

  void AddRail(DRail* rail) { rails.push_back(rail); }
  int GetNoofRails() const { return static_cast<int>(rails.size()); }
  DRail* GetRail(int i) const; // null out of range
  // Camera n of a rail, and activates it. Out of range there is no camera, and the index is -1.
  void SetRail(int rail, int n);
  int GetCurrentRail() const { return currentRail; }
  int GetCurrentIndex() const { return currentIndex; } // of the camera on its rail, or -1
  DCamera* GetCurrentCamera() const { return currentCamera; }

protected:
  // A rail and a camera on it by chance; another one than the current where its rail has a choice.
  // False without rails or with an empty one: noRails or noCameras is reported.
  bool PickAtRandom(const char* noRails, const char* noCameras);

private:
  std::vector<DRail*> rails;
  int currentRail = -1;
  int currentIndex = -1;
  DCamera* currentCamera = nullptr;
};

// Cuts to another camera at even intervals.
class DDirectorSimple : public DDirector
{
public:
  explicit DDirectorSimple(float seconds) : timeLeft(seconds), interval(seconds) {}
  const char* GetClassName() const override { return "simple"; }
  void Step(float seconds) override;

private:
  float timeLeft;
  float interval;
};

// Stays with a camera as long as its shot is good.
class DDirectorGoodShot : public DDirector
{
public:
  static constexpr int MAX_DRAWS = 1000; // when no camera has a good shot, the last draw stays
  const char* GetClassName() const override { return "goodshot"; }
  void Step(float seconds) override;
};
