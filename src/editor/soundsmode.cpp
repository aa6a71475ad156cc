#include "editor/soundsmode.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <string>

// One row is an operation button and what it does.
struct SoundsMode::Command
{
  const char* label;
  void (*run)(SoundsMode& mode);
};

const std::array<SoundsMode::Command, 6> SoundsMode::commands = {{
    {"Create source at camera", [](SoundsMode& m) { m.AddSource(AT_CAMERA); }},
    {"Create source at selection", [](SoundsMode& m) { m.AddSource(AT_SELECTION); }},
    {"Move audio to selection",
     [](SoundsMode& m) {
       if (RTrackAudio* source = m.Current())
         m.MoveAudioTo(*source, AT_SELECTION);
     }},
    {"Edit radius", [](SoundsMode& m) { m.EditRadius(); }},
    {"Goto source", [](SoundsMode& m) { m.GotoSource(); }},
    {"Select sample", [](SoundsMode& m) { m.SelectSample(); }},
}};

namespace {

constexpr float NEW_RADIUS = 30; // metres

// A radius from a file may be any number.
int WholeRadius(float radius)
{
  constexpr float LIMIT = 1e9f;
  return radius >= -LIMIT ? static_cast<int>(std::min(radius, LIMIT)) : 0;
}

} // namespace

void SoundsMode::ModeSetup()
{
  std::array<const char*, commands.size()> labels{};
  std::transform(commands.begin(), commands.end(), labels.begin(), [](const Command& c) { return c.label; });
  host.SetOpButtons(labels);
}

bool SoundsMode::ModeKey(int code)
{
  if (code == QKEY_PGUP)
    PreviousSource();
  else if (code == QKEY_PGDN)
    NextSource();
  return false; // never consumed: the global keys run too
}

void SoundsMode::ModeOp(int n)
{
  if (n >= 0 && n < static_cast<int>(commands.size()))
    commands[static_cast<size_t>(n)].run(*this);
}

void SoundsMode::ModePaint(DOverlay& overlay) const
{
  state.curTrack->PaintAudio(overlay);
}

void SoundsMode::ModeHud() const
{
  const RTrackAudio* source = Current();
  host.HudPrint("Current audio: " +
                (source ? "#" + std::to_string(state.audioIndex) + " (" + source->name + ")" : "<none selected>"));
}

RTrackAudio* SoundsMode::Current() const
{
  auto* place = state.curTrack->audio.At(state.audioIndex);
  return place ? place->get() : nullptr;
}

void SoundsMode::MoveAudioTo(RTrackAudio& source, Where where)
{
  source.pos = where == AT_CAMERA ? state.camera.transform.pos : state.pickStart;
}

void SoundsMode::AddSource(Where where)
{
  RTrackVRML& track = *state.curTrack;
  const int count = track.audio.Count();
  std::string sample;
  if (!InputText(host, "Add audio source", "Enter filename of sample", "ambient.wav", sample))
    return;
  const int index = InputIndex(host, "Select audio index", count, -1);
  if (index < 0)
    return;
  if (index >= count && !track.AddTrackAudio(track.MakeTrackAudio(sample)))
    return; // the table is full
  state.audioIndex = index;
  RTrackAudio& source = *Current();
  MoveAudioTo(source, where);
  source.radius = NEW_RADIUS;
  UpdateMarks();
}

void SoundsMode::EditRadius()
{
  RTrackAudio* source = Current();
  if (!source)
    return;
  int radius = 0;
  if (InputInt(host, "Edit radius", "Enter audio radius", WholeRadius(source->radius), radius))
    source->radius = static_cast<float>(radius);
}

void SoundsMode::GotoSource()
{
  if (const RTrackAudio* source = Current())
    state.camera.SetCameraPos(source->pos);
}

void SoundsMode::SelectSample()
{
  RTrackVRML& track = *state.curTrack;
  const RTrackAudio* old = Current();
  if (!old)
    return;
  std::string sample;
  if (!InputText(host, "Add audio source", "Enter filename of sample", old->name.c_str(), sample))
    return;
  if (sample == old->name)
    sample = old->sample; // the prompt shows the leaf only: confirming it mustn't lose the directory
  auto source = track.MakeTrackAudio(sample);
  source->pos = old->pos;
  source->radius = old->radius;
  *track.audio.At(state.audioIndex) = std::move(source); // the old one goes
  UpdateMarks();
}

void SoundsMode::NextSource()
{
  const int count = state.curTrack->audio.Count();
  if (state.audioIndex + 1 < count)
    ++state.audioIndex;
  UpdateMarks();
}

void SoundsMode::PreviousSource()
{
  if (!Current())
    NextSource();
  else if (state.audioIndex > 0)
    --state.audioIndex;
  UpdateMarks();
}

void SoundsMode::UpdateMarks()
{
  for (int i = 0; i < state.curTrack->audio.Count(); ++i) {
    uint32_t& flags = (*state.curTrack->audio.At(i))->flags;
    flags = i == state.audioIndex ? flags | RTrackAudio::SELECTED : flags & ~uint32_t{RTrackAudio::SELECTED};
  }
}
