#include "track/rmarshalposts.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "track/rinfokeys.h"

#include <algorithm>

namespace {

RMarshalPostActor LoadActor(const QInfo& info, const std::string& key)
{
  constexpr int LAST_TYPE = 3;
  RMarshalPostActor actor;
  const std::string typeKey = key + ".type";
  actor.type = info.GetInt(typeKey);
  if (actor.type < 0 || actor.type > LAST_TYPE) {
    QWARN("%s=%d but only 0..%d supported (flashing)", typeKey.c_str(), actor.type, LAST_TYPE);
    actor.type = 0;
  }
  for (int state = 1; state < RMarshalPostActor::STATES; ++state)
    info.GetString(key + ".state_" + RMarshalPosts::StateWord(state), actor.stateNames[static_cast<size_t>(state)]);
  return actor;
}

} // namespace

void RMarshalPosts::Load(const QInfo& info, const std::string& section)
{
  posts.clear();
  // Whatever the count says, there are no more posts than sections for them.
  const int count = std::min(GetCount(info, section + ".count"), info.CountChildren(section));
  for (int n = 0; n < count; ++n) {
    const std::string key = section + ".post" + std::to_string(n);
    RMarshalPost post;
    const int actors = std::min(GetCount(info, key + ".actors"), RMarshalPost::MAX_ACTORS);
    for (int i = 0; i < actors; ++i)
      post.actors.push_back(LoadActor(info, key + ".actor" + std::to_string(i)));
    post.splineFrom = info.GetInt(key + ".spline_from");
    post.splineTo = info.GetInt(key + ".spline_to");
    post.userID = info.GetInt(key + ".user_id", n);
    posts.push_back(std::move(post));
  }
}

const char* RMarshalPosts::StateWord(int state)
{
  static constexpr std::array<const char*, RMarshalPostActor::STATES> words = {
      "none",      "yellow", "green",  "blue",     "black",      "yellowdouble", "red",  "oil",
      "safetycar", "white",  "finish", "meatball", "blackwhite", "next_slow",    "slow", "fixed_yellow"};
  if (state >= 0 && state < RMarshalPostActor::STATES)
    return words[static_cast<size_t>(state)];
  return "<unknown_racing_flag_color>";
}
