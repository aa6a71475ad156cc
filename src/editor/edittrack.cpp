// The track commands: select, load, reload, save.

#include "editor/editshell.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dworld.h"
#include "runtime/rmanager.h"
#include "runtime/rscene.h"
#include "scene/worldscene.h"
#include "track/rtrackvrml.h"
#include "ui/qapp.h"
#include "ui/qprogressdialog.h"
#include "ui/qtitlebar.h"

namespace {

constexpr int NAME_LENGTH = 80;
constexpr int PROGRESS_INTERVAL = 100; // milliseconds

} // namespace

bool EditShell::TrackExists(const std::string& name) const
{
  // A track is one directory's name: nothing that leads elsewhere.
  if (name.find_first_of("/\\") != std::string::npos || name == "." || name == "..")
    return false;
  return QFileExists(("data/tracks/" + name + "/track.ini").c_str());
}

bool EditShell::SelectTrack(std::string name)
{
  bool ask = name.empty();
  while (true) {
    if (!ask && TrackExists(name)) {
      OpenTrack(name);
      return true;
    }
    if (!ask)
      Message("Error", "Track not found", false, nullptr, nullptr, nullptr);
    ask = false;
    name = state.curTrack ? state.curTrack->trackName : std::string();
    if (!AskText("Select track", "Enter the track name", name, NAME_LENGTH, nullptr))
      return false;
  }
}

void EditShell::OpenTrack(const std::string& name)
{
  settings->SetString("track.lasttrack", name);
  settings->Write(nullptr, true);
  SetTrack(name);
  ResetView();
  LoadTrack();
}

void EditShell::ResetView()
{
  state.camera.transform = EditTransform{DVector3(0, 10, 0), 0, 0, 0};
}

void EditShell::ResetTrack()
{
  state.curTrack = nullptr;
  state.trackCam = -1;
  state.SelectedNodes.clear();
  state.SelectedIndices.clear();
  vertices = {};
  verticesNodes = -1;
  state.audioIndex = -1;
  manager->SetTrack(nullptr);
  DGlobals().strings.clear();
  manager->GetWorld()->GetWorld()->Clear(); // with the track gone nothing names its models and shaders any more
  RTrackHost host;
  host.settings = app.GetInfo();
  host.scene = manager->GetWorld();
  host.audio = manager->GetAudio();
  host.physics = manager->GetPhysics();
  auto track = std::make_unique<RTrackVRML>(host);
  state.curTrack = track.get();
  manager->SetTrack(std::move(track));
  SetTrack(settings->GetStringDirect("track.lasttrack"));
}

void EditShell::SetTrack(const std::string& name)
{
  qlog(QFileNameOf(__FILE__), "SetTrack", __LINE__, "SelectTrack(%s)\n", name.c_str());
  if (state.curTrack)
    state.curTrack->SetName(name);
  const std::string title = name.empty() ? VERSION : std::string(VERSION) + " - " + name;
  titleBar->SetText(title);
}

bool EditShell::LoadProgress(QProgressDialog& dialog, int current, int total, const char* text)
{
  dialog.SetText(text);
  dialog.SetProgress(current, total);
  return dialog.Poll();
}

void EditShell::LoadTrack()
{
  state.trackReady = false;
  auto dialog = std::make_unique<QProgressDialog>(app.GetShell(), QRect{100, 100, 400, 150}, "Loading",
                                                  "Loading track shaders & models.");
  dialog->SetInterval(PROGRESS_INTERVAL);
  dialog->SetCallback([this] { idleFunc(); });
  ResetTrack();
  state.curTrack->progressCallback = [this, &dialog](int current, int total, const char* text) {
    return LoadProgress(*dialog, current, total, text);
  };
  if (!state.curTrack->Load()) {
    Message("Error", "Can't load track!", false, nullptr, nullptr, nullptr);
    state.curTrack = nullptr;
    manager->SetTrack(nullptr);
  }
  if (state.curTrack)
    state.curTrack->progressCallback = nullptr;
  dialog.reset();
  if (state.curTrack) {
    int i = 0;
    for (const auto& node : state.curTrack->nodes) {
      if (node->Geode() && !node->Geode()->Validate())
        qerr(QFileNameOf(__FILE__), "LoadTrack", __LINE__, "Track node %d (%s) is bad!", i, node->name.c_str());
      ++i;
    }
    state.trackReady = true;
  }
  BakeMiniMap();
  for (const auto& mode : modes)
    if (mode)
      mode->TrackLoaded();
  state.camera.ZeroSpeeds();
}

void EditShell::ReloadTrack()
{
  const QRect rect{180, 130, 500, 150};
  if (Message("Reload track", "Are you sure you want to reload the track?", false, &rect, nullptr, nullptr))
    LoadTrack();
}

void EditShell::SaveTrack()
{
  bool saved = false;
  {
    QProgressDialog dialog(app.GetShell(), QRect{100, 100, 400, 100}, "Saving", "Saving track definition.",
                           QProgressDialog::NO_CANCEL);
    PaintAll();
    saved = state.curTrack->Save();
  }
  state.keyDown['S'] = 0; // the dialog ate the release
  if (saved)
    Message("Save track", "Track saved succesfully.", true, nullptr, nullptr, nullptr);
  else
    Message("Error", "Can't save track!", true, nullptr, nullptr, nullptr);
}
