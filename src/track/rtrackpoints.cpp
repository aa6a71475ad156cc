#include "track/rtrackpoints.h"

#include "foundation/qreport.h"
#include "track/rfindfile.h"

#include <algorithm>

void RTrackAudio::SetSample(const std::string& given, const std::string& trackDir)
{
  constexpr const char* SHARED_DIR = "data/audio";
  sample = given;
  name = given.substr(given.find_last_of("/\\") + 1); // npos + 1 is 0
  path.clear();
  if (given.empty())
    return;
  if (!RStaysInside(trackDir + "/" + given) || !RStaysInside(given)) {
    QWARN("Sample '%s' lies outside of the data directory; it won't be played", given.c_str());
    return;
  }
  path = RFindPath(given, trackDir, SHARED_DIR);
}

float RTrackAudio::Hear(const DVector3& listener)
{
  const float distanceSq = glm::dot(listener - pos, listener - pos);
  const float radiusSq = radius * radius;
  if (!(distanceSq < radiusSq))
    return 0;
  flags |= PLAYING;
  return std::clamp(1 - distanceSq / radiusSq, 0.0f, 1.0f);
}
