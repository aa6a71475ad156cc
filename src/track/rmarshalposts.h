#pragma once

#include <array>
#include <string>
#include <vector>

class QInfo;

// What shows a post's state: a flag, a light, a sign. Names of scenery by state, without extension; state 0 shows
// nothing.
struct RMarshalPostActor
{
  static constexpr int STATES = 16;
  int type = 0; // 0 light, 1 flags, 2 sign, 3 skinned
  std::array<std::string, STATES> stateNames;
};

// A stretch of road, from line splineFrom up to but not including splineTo, that is guarded by a marshal.
struct RMarshalPost
{
  static constexpr int MAX_ACTORS = 6;
  std::vector<RMarshalPostActor> actors;
  int splineFrom = 0;
  int splineTo = 0;
  int userID = 0;
};

// The section "marshal_posts" of special.ini.
class RMarshalPosts
{
public:
  std::vector<RMarshalPost> posts;

  void Load(const QInfo& info, const std::string& section);
  // The word of a state, as in the keys.
  static const char* StateWord(int state);
};
