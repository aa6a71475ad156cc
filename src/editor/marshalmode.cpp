#include "editor/marshalmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/modelsmodepaint.h"
#include "editor/splinepaint.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qsafewrite.h"
#include "track/rmarshaltemplate.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <vector>

// One row is an operation button and what it does.
struct MarshalMode::Command
{
  const char* label;
  void (*run)(MarshalMode& mode);
};

const std::array<MarshalMode::Command, 4> MarshalMode::commands = {{
    {"Edit spline range", [](MarshalMode& m) { m.EditSplineRange(); }},
    {"Edit user ID for selected post", [](MarshalMode& m) { m.EditUserId(); }},
    {"Make template for special.ini", [](MarshalMode& m) { m.MakeTemplate(); }},
    {"Analyze user ID", [](MarshalMode& m) { m.AnalyzeUserIds(); }},
}};

MarshalMode::MarshalMode(EditState& owner, EditHost& asks, EditView& theView) : state(owner), host(asks), view(theView)
{}

void MarshalMode::ModeSetup()
{
  std::array<const char*, commands.size()> labels{};
  std::transform(commands.begin(), commands.end(), labels.begin(), [](const Command& c) { return c.label; });
  host.SetOpButtons(labels);
}

bool MarshalMode::ModeKey(int code)
{
  if (code == QKEY_PGUP) {
    if (selected > 0)
      SelectPost(selected - 1);
    return true;
  }
  if (code == QKEY_PGDN) {
    if (selected < state.curTrack->marshalPosts.Count() - 1)
      SelectPost(selected + 1);
    return true;
  }
  return false;
}

void MarshalMode::ModeOp(int n)
{
  if (n >= 0 && n < static_cast<int>(commands.size()))
    commands[static_cast<size_t>(n)].run(*this);
}

void MarshalMode::TrackLoaded()
{
  SelectPost(-1);
}

RMarshalPost* MarshalMode::SelectedPost() const
{
  RMarshalPosts& posts = state.curTrack->marshalPosts;
  return selected >= 0 && selected < posts.Count() ? &posts.posts[static_cast<size_t>(selected)] : nullptr;
}

RMarshalPost* MarshalMode::NeedPost()
{
  RMarshalPost* post = SelectedPost();
  if (!post)
    host.Message("Error", "No post selected.\nUse PageUp/PageDown to select one.");
  return post;
}

void MarshalMode::SelectPost(int n)
{
  selected = n;
  if (n < 0)
    return;
  RTrackVRML& track = *state.curTrack;
  for (RMarshalPost& post : track.marshalPosts.posts)
    post.state = RMarshalPosts::NONE;
  view.ClearSelectedNodes();
  const RMarshalPost* post = SelectedPost();
  if (!post)
    return;
  for (size_t a = 0; a < post->actors.size(); ++a) {
    const RMarshalPostActor& actor = post->actors[a];
    for (size_t i = 0; i < actor.stateNames.size(); ++i) {
      if (actor.stateNames[i].empty())
        continue;
      RTrackNode* node = actor.nodes[i];
      if (!node) // a skinned actor's names weren't looked up
        node = track.FindNode(track.trackDir + "/" + actor.stateNames[i] + ".dof");
      if (node)
        state.SelectedNodes.push_back({static_cast<int>(a), node}); // the actor's number, as the HUD shows it
    }
  }
}

void MarshalMode::EditSplineRange()
{
  constexpr const char* TITLE = "Edit spline range";
  RMarshalPost* post = NeedPost();
  if (!post || !InputInt(host, TITLE, "Enter the index of the start spline", post->splineFrom, post->splineFrom))
    return;
  InputInt(host, TITLE, "Enter the index of the last spline", post->splineTo, post->splineTo);
  state.curTrack->marshalPosts.LinkLines(state.curTrack->splines);
}

void MarshalMode::EditUserId()
{
  if (RMarshalPost* post = NeedPost())
    InputInt(host, "Edit user id", "Enter the user id for this post\n(used with 'mpost' console command)", post->userID,
             post->userID);
}

void MarshalMode::MakeTemplate()
{
  const RTrackVRML& track = *state.curTrack;
  const QInfo special(track.trackDir + "/special.ini");
  WriteAndShow(MakeMarshalTemplate({track.nodes.begin(), track.nodes.end()}, special));
}

void MarshalMode::AnalyzeUserIds()
{
  WriteAndShow(AnalyzeMarshalIds(state.curTrack->marshalPosts));
}

void MarshalMode::WriteAndShow(const std::string& text)
{
  if (!QWriteFile(MARSHAL_TEXT_FILE, text))
    host.Message("Error", (std::string("Can't open ") + MARSHAL_TEXT_FILE).c_str());
  else
    QNotePad(MARSHAL_TEXT_FILE);
}

// The posts hide their scenery, as no flag is out; what is selected is to be seen all the same.
void MarshalMode::ModeUpdate()
{
  BlinkSelectedNodes(state);
}

void MarshalMode::ModePaint(DOverlay& overlay) const
{
  PaintSelectedNodes(state, overlay);
  PaintSplines(state.curTrack->splines, state.SelectedIndices, overlay);
  if (const RMarshalPost* post = SelectedPost())
    PaintRange(*post, overlay);
}

void MarshalMode::PaintRange(const RMarshalPost& post, DOverlay& overlay) const
{
  const auto& lines = state.curTrack->splines.lines;
  const auto at = [&](int i) { return static_cast<size_t>(std::clamp(i, 0, static_cast<int>(lines.size()))); };
  std::vector<DVector3> ends;
  for (size_t i = at(post.splineFrom); i < at(post.splineTo); ++i) {
    ends.insert(ends.end(), {lines[i].left, lines[i].right});
    if (i + 1 < at(post.splineTo))
      ends.insert(ends.end(), {lines[i].left, lines[i + 1].left, lines[i].right, lines[i + 1].right});
  }
  DOverlayStyle style;
  style.color = QColor(255, 0, 0);
  style.width = 5; // wider than the outlines of the road, which are red too
  overlay.Lines(ends, style);
}

void MarshalMode::ModeHud() const
{
  const RTrackVRML& track = *state.curTrack;
  if (!state.SelectedNodes.empty()) {
    const SelectedNode& first = state.SelectedNodes.front();
    host.HudPrint("Object: " + first.node->file + " (" + std::to_string(first.index + 1) + " out of " +
                  std::to_string(track.nodes.Count()) + ")");
  }
  host.HudPrint(std::to_string(track.marshalPosts.Count()) + " marshall posts present.");
  if (const RMarshalPost* post = SelectedPost())
    PostHud(*post);
  else
    host.HudPrint("No marshal post selected (use PageUp/PageDown)");
}

void MarshalMode::PostHud(const RMarshalPost& post) const
{
  host.HudPrint("Marshal post " + std::to_string(selected) + " selected");
  host.HudPrint("Spline range: " + std::to_string(post.splineFrom) + " - " + std::to_string(post.splineTo));
  host.HudPrint("User id: " + std::to_string(post.userID));
  for (size_t a = 0; a < post.actors.size(); ++a) {
    const RMarshalPostActor& actor = post.actors[a];
    host.HudPrint("Actor " + std::to_string(a) + " - type " + std::to_string(actor.type) + " (" +
                  RMarshalPosts::ActorTypeName(actor.type) + ")");
    if (actor.type >= RMarshalPostActor::SKINNED)
      continue;
    for (int i = 1; i < RMarshalPostActor::STATES; ++i) {
      const std::string& model = actor.stateNames[static_cast<size_t>(i)];
      host.HudPrint(std::string("- Model for state '") + RMarshalPosts::StateWord(i) +
                    "': " + (model.empty() ? "<none defined>" : model));
    }
  }
}
