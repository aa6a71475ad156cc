#include "track/rtrackpoints.h"

#include "foundation/qreport.h"
#include "track/rfindfile.h"

#include <algorithm>

void RTrackAudio::SetSample(const std::string& given, const std::string& trackDir, RAudio* audio)
{
  sample = given;
  name = given.substr(given.find_last_of("/\\") + 1); // npos + 1 is 0
  path.clear();
  producer.reset();
  flags &= ~uint32_t{PLAYING};
  if (given.empty())
    return;
  path = RFindSample(given, trackDir);
  if (audio && !path.empty())
    producer = audio->MakeProducer(path);
}

float RTrackAudio::Hear(const DVector3& listener)
{
  const float distanceSq = glm::dot(listener - pos, listener - pos);
  const float radiusSq = radius * radius;
  const bool inside = distanceSq < radiusSq; // never with what is no number
  const bool starts = inside && !(flags & PLAYING);
  const float volume = inside ? std::clamp(1 - distanceSq / radiusSq, 0.0f, 1.0f) : 0;
  if (starts)
    flags |= PLAYING;
  if (!producer)
    return volume;
  if (inside)
    producer->SetPosition(pos);
  if (starts)
    producer->Start(true, volume);
  else if (flags & PLAYING)
    producer->SetVolume(volume);
  return volume;
}
