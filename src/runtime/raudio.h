#pragma once

#include "runtime/qsample.h"

#include <map>
#include <memory>
#include <string>

// One sound that stands somewhere. Silent without a sample; it stops when it goes.
class RAudioProducer
{
public:
  RAudioProducer(std::string newName, std::shared_ptr<QSample> newSample);
  ~RAudioProducer();
  RAudioProducer(const RAudioProducer&) = delete;
  RAudioProducer& operator=(const RAudioProducer&) = delete;

  const std::string& GetName() const { return name; }
  const QSample* GetSample() const { return sample.get(); }
  // From the beginning, where it was set to.
  void Start(bool loop, float volume);
  void Stop();
  void SetPosition(const DVector3& position, const DVector3& velocity = DVector3(0.0f)); // metres, metres a second
  void SetVolume(float volume);                                                          // 0 to 1
  void SetPitch(float pitch);                                                            // 1: as recorded

private:
  std::string name;
  std::shared_ptr<QSample> sample; // may be null
  DVector3 place{0.0f};
  int channel = 0;
};

// The program's sound: starts the process' sound system and keeps one copy of each file that is in use. The system
// itself stays till the program's end.
class RAudio
{
public:
  explicit RAudio(const QInfo& settings);

  // A sound of that file, by a name of its own or that of the path's leaf. What can't be loaded is reported, and stays
  // silent.
  std::unique_ptr<RAudioProducer> MakeProducer(const std::string& path, const std::string& name = "");
  // Once a frame: where it is heard from, facing along z, and how fast sounds fade (0: not by themselves).
  void SetListener(const DVector3& position, float rolloff);

private:
  std::shared_ptr<QSample> Sample(const std::string& path);

  std::map<std::string, std::weak_ptr<QSample>> samples; // by path
};
