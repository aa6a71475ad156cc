#include "track/rmarshalposts.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "track/rinfokeys.h"
#include "track/rsplinerep.h"
#include "track/rtracknode.h"

#include <algorithm>
#include <unordered_map>

namespace {

std::string StateKey(const std::string& actorKey, int state)
{
  return actorKey + ".state_" + RMarshalPosts::StateWord(state);
}

std::string ActorKey(const std::string& postKey, size_t i)
{
  return postKey + ".actor" + std::to_string(i);
}

RMarshalPostActor LoadActor(const QInfo& info, const std::string& key)
{
  constexpr int LAST_TYPE = RMarshalPostActor::SKINNED;
  RMarshalPostActor actor;
  const std::string typeKey = key + ".type";
  actor.type = info.GetInt(typeKey);
  if (actor.type < 0 || actor.type > LAST_TYPE) {
    QWARN("%s=%d but only 0..%d supported (flashing)", typeKey.c_str(), actor.type, LAST_TYPE);
    actor.type = 0;
  }
  for (int state = 1; state < RMarshalPostActor::STATES; ++state)
    info.GetString(StateKey(key, state), actor.stateNames[static_cast<size_t>(state)]);
  return actor;
}

// By the path of the model's file; of equal ones the first.
using NodesByPath = std::unordered_map<std::string, RTrackNode*>;

NodesByPath IndexNodes(const std::string& trackDir, std::span<const std::unique_ptr<RTrackNode>> nodes)
{
  NodesByPath index;
  for (const auto& node : nodes) {
    if (const DGeode* geode = node->Geode())
      index.try_emplace(geode->name, node.get());
    index.try_emplace(trackDir + "/" + node->file, node.get());
  }
  return index;
}

void FindNodes(RMarshalPostActor& actor, const std::string& trackDir, const NodesByPath& index)
{
  actor.nodes.fill(nullptr);
  if (actor.type == RMarshalPostActor::SKINNED)
    return;
  for (size_t state = 0; state < actor.nodes.size(); ++state) {
    if (actor.stateNames[state].empty())
      continue;
    const std::string path = trackDir + "/" + actor.stateNames[state] + ".dof";
    if (const auto found = index.find(path); found != index.end())
      actor.nodes[state] = found->second;
    else
      QWARN("Node '%s' of a post was not found in the track", path.c_str());
  }
}

} // namespace

void RMarshalPosts::Reserve(int count)
{
  if (count < 0) {
    QWARN("Must reserve at least 1 item (n=%d) - correcting to n=1", count);
    count = 1;
  }
  posts = std::vector<RMarshalPost>(static_cast<size_t>(count));
}

void RMarshalPosts::Load(const QInfo& info, const std::string& section)
{
  // Whatever the count says, there are no more posts than sections for them.
  const int count = info.GetInt(section + ".count");
  const int sections = info.CountChildren(section);
  if (count > sections)
    QWARN("%s.count (%d) is more than the posts that are there; taking %d", section.c_str(), count, sections);
  Reserve(std::min(count, sections));
  for (int n = 0; n < Count(); ++n) {
    const std::string key = section + ".post" + std::to_string(n);
    RMarshalPost& post = posts[static_cast<size_t>(n)];
    post.actors.resize(static_cast<size_t>(std::min(GetCount(info, key + ".actors"), RMarshalPost::MAX_ACTORS)));
    for (size_t i = 0; i < post.actors.size(); ++i) {
      post.actors[i] = LoadActor(info, ActorKey(key, i));
      post.actors[i].post = &post;
    }
    post.splineFrom = info.GetInt(key + ".spline_from");
    post.splineTo = info.GetInt(key + ".spline_to");
    post.userID = info.GetInt(key + ".user_id", n);
  }
}

void RMarshalPosts::Save(QInfo& info, const std::string& section) const
{
  info.SetInt(section + ".count", Count());
  for (int n = 0; n < Count(); ++n) {
    const std::string key = section + ".post" + std::to_string(n);
    const RMarshalPost& post = posts[static_cast<size_t>(n)];
    info.SetInt(key + ".actors", static_cast<int>(post.actors.size()));
    for (size_t i = 0; i < post.actors.size(); ++i) {
      const std::string actorKey = ActorKey(key, i);
      info.SetInt(actorKey + ".type", post.actors[i].type);
      for (int state = 1; state < RMarshalPostActor::STATES; ++state)
        info.SetString(StateKey(actorKey, state), post.actors[i].stateNames[static_cast<size_t>(state)]);
    }
    info.SetInt(key + ".spline_from", post.splineFrom);
    info.SetInt(key + ".spline_to", post.splineTo);
    info.SetInt(key + ".user_id", post.userID);
  }
}

void RMarshalPosts::PostLoad(const std::string& trackDir, std::span<const std::unique_ptr<RTrackNode>> nodes,
                             RSplineRep& splines)
{
  const NodesByPath index = posts.empty() ? NodesByPath() : IndexNodes(trackDir, nodes);
  for (RMarshalPost& post : posts)
    for (RMarshalPostActor& actor : post.actors)
      FindNodes(actor, trackDir, index);
  LinkLines(splines);
}

void RMarshalPosts::LinkLines(RSplineRep& splines)
{
  for (RSplineLine& line : splines.lines)
    line.post = nullptr;
  for (RMarshalPost& post : posts) {
    const int end = std::min(post.splineTo, splines.LineCount());
    for (int i = std::max(post.splineFrom, 0); i < end; ++i)
      splines.lines[static_cast<size_t>(i)].post = &post;
  }
}

void RMarshalPosts::Forget(RTrackNode* node)
{
  for (RMarshalPost& post : posts)
    for (RMarshalPostActor& actor : post.actors)
      std::replace(actor.nodes.begin(), actor.nodes.end(), node, static_cast<RTrackNode*>(nullptr));
}

void RMarshalPosts::SetState(int index, int state)
{
  if (index < 0 || index >= Count()) {
    QWARN("Value n (%d) out of range 0..%d", index, Count() - 1);
    return;
  }
  if (state < 0 || state >= RMarshalPostActor::STATES) {
    QWARN("Value %d out of range", state);
    state = NONE;
  }
  posts[static_cast<size_t>(index)].state = state;
}

bool RMarshalPosts::SetStateByUserID(int userID, int state)
{
  const int index = FindByUserID(userID);
  if (index >= 0)
    SetState(index, state);
  return index >= 0;
}

int RMarshalPosts::FindByUserID(int userID) const
{
  const auto found =
      std::find_if(posts.begin(), posts.end(), [=](const RMarshalPost& post) { return post.userID == userID; });
  return found == posts.end() ? -1 : static_cast<int>(found - posts.begin());
}

bool RMarshalPosts::IsIndex(const char* what, int index) const
{
  if (index >= 0 && index < Count())
    return true;
  QWARN("%s (%d) >= posts (%d)", what, index, Count());
  return false;
}

void RMarshalPosts::CreateSlowZone(int nextSlow, int slowStart, int slowEnd)
{
  qlog(QLOG_FATAL, "RMarshalPosts::CreateSlowZone",
       "CreateSlowZone is not really useful currently - just script post states directly");
  if (!IsIndex("postNextSlow", nextSlow) || !IsIndex("postSlowStart", slowStart) || !IsIndex("postSlowEnd", slowEnd))
    return;
  SetState(nextSlow, NEXT_SLOW);
  for (int i = slowStart;; i = (i + 1) % Count()) {
    SetState(i, YELLOW_DOUBLE);
    if (i == slowEnd)
      break;
  }
}

void RMarshalPosts::Update(int time)
{
  constexpr int PERIOD = 1000; // milliseconds; a light is dark in the first half
  const bool lit = time % PERIOD > PERIOD / 2;
  // Two passes: a node may stand for several states.
  for (RMarshalPost& post : posts)
    for (RMarshalPostActor& actor : post.actors)
      for (RTrackNode* node : actor.nodes)
        if (node)
          node->SetVisible(false);
  for (RMarshalPost& post : posts)
    for (RMarshalPostActor& actor : post.actors)
      if (RTrackNode* node = actor.nodes[static_cast<size_t>(post.state)]; node && (lit || !actor.IsFlashing()))
        node->SetVisible(true);
}

void RMarshalPosts::DbgPrint(const char* label) const
{
  QLOG("Marshal posts - %d posts [%s]\n", Count(), label);
  for (const RMarshalPost& post : posts) {
    QLOG("Marshalpost [%s] - %d actors\n", label, static_cast<int>(post.actors.size()));
    for (const RMarshalPostActor& actor : post.actors) {
      QLOG("MarshalPostActor [%s]\n", actor.name.c_str());
      for (size_t state = 0; state < actor.nodes.size(); ++state)
        QLOG("node[%d] = %p\n", static_cast<int>(state), static_cast<const void*>(actor.nodes[state]));
    }
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

const char* RMarshalPosts::ActorTypeName(int type)
{
  static constexpr std::array<const char*, 4> names = {"light", "flags", "sign", "skinned"};
  if (type >= 0 && type < static_cast<int>(names.size()))
    return names[static_cast<size_t>(type)];
  return "<unknown_actor_type>";
}
