#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

class QInfo;
class RMarshalPosts;
class RTrackNode;

// What a scenery file's name says by the convention <material>_mpost_<n>_<type>_<state>.dof.
struct RMarshalName
{
  static constexpr int MAX_POST = 999;
  bool isPost = false;
  int post = 0;   // 0 to MAX_POST; a larger number is no post
  int type = 0;   // 0 light, 1 flag, 2 sign, 3 skin
  int state = -1; // 0 to 15; -1: none that is known
};

// The file that both texts below are written to, in the current directory.
inline constexpr const char* MARSHAL_TEXT_FILE = "TEMP_PAVEX_MARSHAL_POSTS.txt";

// An unknown type or state is added to errors as a line of comment.
RMarshalName ParseMarshalName(const std::string& file, std::string& errors);
// A section "marshal_posts" for all scenery files that follow the convention. Ranges and ids are taken over from the
// track's special.ini.
std::string MakeMarshalTemplate(std::span<const std::unique_ptr<RTrackNode>> nodes, const QInfo& special);
// Which user ids are used, which aren't, and which more than once.
std::string AnalyzeMarshalIds(const RMarshalPosts& posts);
