#include "track/rmarshaltemplate.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "track/rmarshalposts.h"
#include "track/rtracknode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace {

constexpr const char* HEAD = R"(;
; Template generated based on a specific marshal post naming convention.
; The convention is as follows:
; - Each file is named <material>_mpost_<n>_<type>_<state>.dof
; - <material> is ignored ("_mpost_" is searched for)
; - <n> is the post number, starting with 0, increasing per 1 (0, 1, 2 etc)
; - <type> can be eiter 'flag', 'light', 'sign' or 'skin'. 'skin' is not yet supported
; - <state> can be 'black', 'blackwhite', 'finish', 'red', 'green', 'yellow',
;           'blue','yellowdouble', 'meatball', 'oil', 'white', 'next_slow', 'slow',
;           'fixed_yellow' or 'safetycar'/'sc' (for safety-car)
; This template is then generated and can be inserted in special.ini.
; This template tried to preserve spline_from/spline_to/user_id settings from the existing special.ini.
;
)";

int TypeOf(std::string_view word)
{
  constexpr std::array<std::string_view, 4> words = {"light", "flag", "sign", "skin"};
  const auto found = std::find(words.begin(), words.end(), word);
  return found == words.end() ? -1 : static_cast<int>(found - words.begin());
}

int StateOf(std::string_view word)
{
  constexpr int SAFETY_CAR = 8;
  if (word == "sc")
    return SAFETY_CAR;
  for (int state = 1; state < RMarshalPostActor::STATES; ++state) // no file shows "none"
    if (word == RMarshalPosts::StateWord(state))
      return state;
  return -1;
}

// Takes the part up to the mark, and the mark, off the text. False without a mark.
bool TakePart(std::string_view& text, char mark, std::string_view& part)
{
  const size_t at = text.find(mark);
  if (at == std::string_view::npos)
    return false;
  part = text.substr(0, at);
  text.remove_prefix(at + 1);
  return true;
}

bool PostNumber(std::string_view text, int& number)
{
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end && number >= 0 && number <= RMarshalName::MAX_POST;
}

std::string ErrorLine(const char* what, const char* words, const std::string& file, std::string_view part)
{
  return std::string("; ** ERROR: ") + what + " in '" + file + "' must be " + words + " - '" + std::string(part) +
         "' detected\n";
}

struct ParsedFile
{
  std::string file;
  RMarshalName name;
  std::string errors;
};

struct Slot
{
  int type = -1; // free
  std::array<std::string, RMarshalPostActor::STATES> files;
};
using Slots = std::array<Slot, RMarshalPost::MAX_ACTORS>;

bool Place(Slots& slots, const ParsedFile& parsed)
{
  const auto state = static_cast<size_t>(parsed.name.state);
  auto slot = std::find_if(slots.begin(), slots.end(),
                           [&](const Slot& s) { return s.type == parsed.name.type && s.files[state].empty(); });
  if (slot == slots.end())
    slot = std::find_if(slots.begin(), slots.end(), [](const Slot& s) { return s.type == -1; });
  if (slot == slots.end())
    return false;
  slot->type = parsed.name.type;
  slot->files[state] = parsed.file;
  return true;
}

std::string WithoutExtension(const std::string& file)
{
  return file.substr(0, file.rfind('.'));
}

// Names of any post can bring errors here: each post's block tells them again.
void WriteActors(std::string& out, const std::vector<ParsedFile>& files, int post)
{
  Slots slots;
  for (const ParsedFile& parsed : files) {
    out += parsed.errors;
    const RMarshalName& name = parsed.name;
    if (!name.isPost || name.post != post || name.type >= RMarshalPostActor::SKINNED || name.state < 0)
      continue;
    if (Place(slots, parsed))
      continue;
    qlog(QFileNameOf(__FILE__), "TemplateWritePost2", __LINE__, "Could not place '%s' in any actor",
         parsed.file.c_str());
    out += "**** Could not place '" + parsed.file + "' in any actor";
  }
  const auto used = std::count_if(slots.begin(), slots.end(), [](const Slot& s) { return s.type != -1; });
  out += "    actors=" + std::to_string(used) + "\n";
  for (size_t a = 0; a < static_cast<size_t>(used); ++a) {
    out += "    actor" + std::to_string(a) + "\n    {\n      type=" + std::to_string(slots[a].type) + "\n";
    for (int state = 0; state < RMarshalPostActor::STATES; ++state)
      if (const std::string& file = slots[a].files[static_cast<size_t>(state)]; !file.empty())
        out += std::string("      state_") + RMarshalPosts::StateWord(state) + "=" + WithoutExtension(file) + "\n";
    out += "    }\n";
  }
}

// A mistyped id can be two thousand million; a gap this wide is told in one line.
constexpr int64_t WIDE_GAP = 1000;

void DescribeGap(std::string& out, int64_t first, int64_t end)
{
  if (end - first > WIDE_GAP) {
    out += "- User ids " + std::to_string(first) + " to " + std::to_string(end - 1) + " are never used\n";
    return;
  }
  for (int64_t id = first; id < end; ++id)
    out += "- User id " + std::to_string(id) + " is never used\n";
}

// uses: sorted pairs of id and post. Without a post id 0 is the largest, and unused.
std::string DescribeUses(std::span<const std::pair<int, int>> uses)
{
  std::string out;
  int64_t next = 0;
  for (size_t i = 0, end = 0; i < uses.size(); i = end) {
    const int id = uses[i].first;
    while (end < uses.size() && uses[end].first == id)
      ++end;
    DescribeGap(out, next, id);
    next = int64_t{id} + 1;
    if (end - i < 2)
      continue;
    out += "- User id " + std::to_string(id) + " is used " + std::to_string(end - i) + " times\n";
    for (size_t k = i; k < end; ++k)
      out += "    - Post index " + std::to_string(uses[k].second) + " uses it\n";
  }
  if (uses.empty())
    DescribeGap(out, 0, 1);
  return out;
}

} // namespace

RMarshalName ParseMarshalName(const std::string& file, std::string& errors)
{
  constexpr std::string_view MARK = "_mpost_";
  RMarshalName name;
  const size_t at = file.find(MARK);
  if (at == std::string::npos)
    return name;
  std::string_view rest = std::string_view(file).substr(at + MARK.size());
  std::string_view number, type, state;
  if (!TakePart(rest, '_', number) || !PostNumber(number, name.post) || !TakePart(rest, '_', type))
    return name;
  if (const int known = TypeOf(type); known >= 0)
    name.type = known;
  else
    errors += ErrorLine("type", "flag/light/sign/skin", file, type);
  const bool ends = TakePart(rest, '.', state);
  name.isPost = ends ? !state.empty() : !rest.empty();
  if (!ends || state.empty())
    return name;
  name.state = StateOf(state);
  if (name.state < 0)
    errors += ErrorLine("state", "blue/yellow/sc etc", file, state);
  return name;
}

std::string MakeMarshalTemplate(std::span<const std::unique_ptr<RTrackNode>> nodes, const QInfo& special)
{
  std::string out = HEAD;
  std::vector<ParsedFile> files;
  int count = 0;
  for (const auto& node : nodes) {
    ParsedFile parsed{node->file, {}, {}};
    parsed.name = ParseMarshalName(node->file, parsed.errors);
    out += parsed.errors;
    if (parsed.name.isPost)
      count = std::max(count, parsed.name.post + 1);
    if (parsed.name.isPost || !parsed.errors.empty())
      files.push_back(std::move(parsed));
  }
  out += "marshal_posts\n{\n  count=" + std::to_string(count) + "\n";
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    const std::string key = "marshal_posts.post" + number;
    out += "  post" + number + "\n  {\n";
    out += "    spline_from=" + std::to_string(special.GetInt(key + ".spline_from")) + "\n";
    out += "    spline_to=" + std::to_string(special.GetInt(key + ".spline_to")) + "\n";
    out += "    user_id=" + std::to_string(special.GetInt(key + ".user_id", i)) + "\n";
    WriteActors(out, files, i);
    out += "  }\n";
  }
  return out + "}\n";
}

std::string AnalyzeMarshalIds(const RMarshalPosts& posts)
{
  std::string out = "Marshall post analysis\n\nUser ID analysis:\n\n";
  std::vector<std::pair<int, int>> uses; // of ids from 0 on: id, post
  int max = 0;
  for (int i = 0; i < posts.Count(); ++i) {
    const int id = posts.posts[static_cast<size_t>(i)].userID;
    max = std::max(max, id);
    if (id >= 0)
      uses.emplace_back(id, i);
  }
  out += "Defined indices (" + std::to_string(posts.Count()) + " total, max user id found is " + std::to_string(max) +
         "):\n";
  for (int i = 0; i < posts.Count(); ++i)
    out += "- post index " + std::to_string(i) + " has user id " +
           std::to_string(posts.posts[static_cast<size_t>(i)].userID) + "\n";
  out += "\nAnomalies in user indices:\n";
  std::sort(uses.begin(), uses.end());
  const std::string anomalies = DescribeUses(uses);
  return out + (anomalies.empty() ? "- No anomalies found; seems a 1:1 relationship (index==user ID)\n" : anomalies);
}
