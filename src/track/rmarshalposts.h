#pragma once

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

class QInfo;
class RSplineRep;
class RTrackNode;
struct RMarshalPost;

// What shows a post's state: a flag, a light, a sign. Each array is by state; state 0 shows nothing.
struct RMarshalPostActor
{
  enum Type
  {
    LIGHT,
    FLAGS,
    SIGN,
    SKINNED // its look changes, its nodes aren't named
  };
  static constexpr int STATES = 16;
  int type = LIGHT;
  std::string name = "marshal_post_actor";
  RMarshalPost* post = nullptr;
  std::array<RTrackNode*, STATES> nodes{};    // the track's; null where no scenery shows the state
  std::array<std::string, STATES> stateNames; // of scenery files, without extension

  bool IsFlashing() const { return type == LIGHT || type == SKINNED; }
};

// A stretch of road, from line splineFrom up to but not including splineTo, that is guarded by a marshal.
struct RMarshalPost
{
  static constexpr int MAX_ACTORS = 6;
  std::vector<RMarshalPostActor> actors;
  int splineFrom = 0;
  int splineTo = 0;
  int userID = 0;
  int state = 0; // 0 to 15
};

// The section "marshal_posts" of special.ini: where the marshals are, and what of the scenery shows their flags.
class RMarshalPosts
{
public:
  enum State
  {
    NONE = 0,
    YELLOW_DOUBLE = 5,
    NEXT_SLOW = 13
  };
  std::vector<RMarshalPost> posts; // grows and shrinks in Reserve alone: lines and actors point at posts

  RMarshalPosts() = default;
  RMarshalPosts(const RMarshalPosts&) = delete;
  RMarshalPosts& operator=(const RMarshalPosts&) = delete;

  int Count() const { return static_cast<int>(posts.size()); }
  // New posts in place of what existed. A negative count is reported and gives one.
  void Reserve(int count);
  void Load(const QInfo& info, const std::string& section);
  void Save(QInfo& info, const std::string& section) const;
  // Finds the scenery by its files below the track's directory (what isn't there is reported), and links the lines.
  void PostLoad(const std::string& trackDir, std::span<const std::unique_ptr<RTrackNode>> nodes, RSplineRep& splines);
  // Lets each line name the post that covers it; of several the last.
  void LinkLines(RSplineRep& splines);
  // The node is about to go.
  void Forget(RTrackNode* node);

  // An index or state out of range is reported; such a state counts as 0.
  void SetState(int index, int state);
  bool SetStateByUserID(int userID, int state); // false when no post has this id
  int FindByUserID(int userID) const;           // index or -1
  // The post before a slow stretch warns, those from slowStart to slowEnd, perhaps over the last one, show double
  // yellow. Indices out of range are reported, and nothing changes.
  void CreateSlowZone(int nextSlow, int slowStart, int slowEnd);
  // Shows the scenery of each post's state and hides that of all others. Clock in milliseconds.
  void Update(int time);
  void DbgPrint(const char* label) const;

  // The word of a state, as in the keys.
  static const char* StateWord(int state);
  static const char* ActorTypeName(int type);

private:
  bool IsIndex(const char* what, int index) const;
};
