// The command buttons that turn exported scenery into a track.

#include "editor/editshell.h"

#include "editor/edittoolui.h"
#include "foundation/qdirectory.h"
#include "foundation/qfilename.h"
#include "foundation/qlog.h"
#include "foundation/qnumber.h"
#include "foundation/qreport.h"
#include "tools/asecut.h"
#include "tools/asecutmultisub.h"
#include "tools/qbatch.h"
#include "tools/rtracksplitter.h"
#include "track/rshadertemplate.h"
#include "track/rtrackvrml.h"
#include "ui/qapp.h"

#include <filesystem>
#include <unistd.h>

namespace {

constexpr const char* CUT_LOG = "TEMP_ase_cut_multisub.txt";
constexpr const char* CUT_KEY = "cutase_ms";
constexpr const char* CUT_FAILED = "Failed to cut ASE apart";
constexpr QRect AUTO_RECT{100, 150, 400, 160};

std::string CurrentDirectory()
{
  std::error_code ignored;
  return std::filesystem::current_path(ignored).string();
}

void RemoveCutFiles(const std::string& directory)
{
  for (const std::string& name : QDirectory::SortedFiles(directory))
    if (name.find(".ase") != std::string::npos || name.find(".ASE") != std::string::npos)
      ::unlink((directory + "/" + name).c_str());
  ::rmdir(directory.c_str());
}

} // namespace

struct EditShell::Command
{
  bool needsTrack;
  void (*run)(EditShell& shell, QToolUi& ui);
};

// In the order of the buttons.
const EditShell::Command EditShell::commands[] = {
    {false, [](EditShell& s, QToolUi&) { s.SelectTrack({}); }},
    {false, [](EditShell& s, QToolUi&) { s.ReloadTrack(); }},
    {true, [](EditShell& s, QToolUi&) { s.SaveTrack(); }},
    {true, [](EditShell& s, QToolUi& ui) { ConvertAllWRLs(ui, s.state.curTrack->trackDir); }},
    {true, [](EditShell& s, QToolUi& ui) { s.ImportModels(ui, true); }},
    {true, [](EditShell& s, QToolUi& ui) { AddLightingAllDOFs(ui, s.state.curTrack->trackDir); }},
    {true, [](EditShell& s, QToolUi& ui) { ASEBatch(ui, s.state.curTrack->trackDir, {}, true, true, {}); }},
    {true, [](EditShell& s, QToolUi& ui) { s.SplitTrack(ui); }},
    {false, [](EditShell& s, QToolUi& ui) { s.CutASE(ui); }},
    {false, [](EditShell& s, QToolUi& ui) { s.CutASEMultiSub(ui, {}, {}, true); }},
    {true, [](EditShell& s, QToolUi& ui) { s.MakeShaderTemplate(ui); }},
    {false, [](EditShell& s, QToolUi& ui) { s.AutoAseToDof(ui); }},
    {true, [](EditShell& s, QToolUi& ui) { BatchOptimizeDOFs(ui, s.state.curTrack->trackDir); }},
};

EditToolUi EditShell::MakeToolUi()
{
  return {app.GetShell(), [this] { KeepFrame(); }, [this] { PaintKept(); }};
}

void EditShell::OnCommand(int n)
{
  const Command& command = commands[n];
  EditToolUi ui = MakeToolUi();
  if (state.curTrack || !command.needsTrack)
    command.run(*this, ui);
  kept.Drop();
}

void EditShell::ExportModels()
{
  EditToolUi ui = MakeToolUi();
  if (state.curTrack)
    ExportAllWRL(ui, *state.curTrack);
  kept.Drop();
}

void EditShell::ImportModels(QToolUi& ui, bool dropsCache)
{
  const bool imported = ImportDOFs(ui, *state.curTrack, {}, false, state.importFilter).started;
  if (imported && dropsCache) // it was made of the models before
    ::unlink((state.curTrack->trackDir + "/cache/trackcollision.bin").c_str());
}

// Unlike its button it leaves the collision cache alone.
void EditShell::OnImportKey()
{
  EditToolUi ui = MakeToolUi();
  ImportModels(ui, false);
  kept.Drop();
}

void EditShell::SplitTrack(QToolUi& ui)
{
  constexpr QRect RECT{100, 100, 400, 150};
  constexpr int LENGTH = 80;
  std::string size = "500";
  if (!AskText("Split track", "Enter cellsize in meters", size, LENGTH, &RECT))
    return;
  RTrackSplitter splitter(*state.curTrack, ui);
  splitter.cellSize = QParseFloat(size);
  if (splitter.Split())
    ui.Tell("Success", "Track has been split succesfully; check <trackname>_split/*.dof");
  else
    ui.Tell("Failed", "Split failed or aborted.");
}

void EditShell::CutASE(QToolUi& ui)
{
  std::string file;
  if (!AskFile("Cut ASE apart", "cutase", file))
    return;
  if (ASECut(file, ui))
    Message("Done", ("Split ASE files are in " + CurrentDirectory() + "/output").c_str(), false, nullptr, nullptr,
            nullptr);
  else
    qerr(QFileNameOf(__FILE__), "CutASE", __LINE__, CUT_FAILED);
}

bool EditShell::CutASEMultiSub(QToolUi& ui, std::string file, std::string directory, bool showResult)
{
  if (file.empty() && !AskFile("Cut ASE-MultiSub apart", CUT_KEY, file))
    return false;
  if (directory.empty())
    directory = state.curTrack ? state.curTrack->trackDir + "/ase" : CurrentDirectory() + "/output";
  bool cut = false;
  bool problems = false;
  {
    const QLogRedirect log(CUT_LOG);
    cut = ASECutMultiSub(file, directory, showResult, ui);
    if (!cut)
      qerr(QFileNameOf(__FILE__), "CutASEMultiSub", __LINE__, CUT_FAILED);
    problems = QLogHasProblems();
  }
  if (problems)
    ui.ShowFile(CUT_LOG);
  else
    ::unlink(CUT_LOG);
  return cut;
}

void EditShell::CutTestScene()
{
  EditToolUi ui = MakeToolUi();
  static_cast<void>(
      ASECutMultiSub("data/tracks/zandy_msub/ase_big/track03.ase", "data/tracks/zandy_msub/ase/", true, ui));
  kept.Drop();
}

void EditShell::AutoAseToDof(QToolUi& ui)
{
  if (!Message("Auto ASE to DOF", "This will create DOF files in the current track. Are you sure?", false, &AUTO_RECT,
               nullptr, nullptr))
    return;
  std::string file;
  if (!AskFile("Auto - Ase to Dof", CUT_KEY, file))
    return;
  const std::string temp = file.substr(0, file.find_last_of('/')) + "/temp_split_as";
  const bool optimize =
      Message("Optimize resulting DOF files?", "Conversion is faster without optimizations but draws slower.", false,
              &AUTO_RECT, "Yes", "No");
  bool good = CutASEMultiSub(ui, file, temp, false);
  if (good) {
    const std::string trackDir = state.curTrack ? state.curTrack->trackDir : std::string();
    good = ASEBatch(ui, trackDir, {}, false, optimize, temp).started;
  }
  RemoveCutFiles(temp);
  if (good)
    Message("Done", "Automatic Ase to Dof finished succesfully.", true, nullptr, nullptr, nullptr);
  else
    Message("ERROR", "Automatic Ase to Dof failed.", true, nullptr, nullptr, nullptr);
}

void EditShell::MakeShaderTemplate(QToolUi& ui)
{
  constexpr QRect RECT{50, 50, 500, 150};
  if (!state.curTrack) {
    Message("Error", "There is no track yet.", false, nullptr, nullptr, nullptr);
    return;
  }
  const std::string path = RShaderTemplatePath(*state.curTrack);
  if (!RWriteShaderTemplate(*state.curTrack)) {
    Message("Error", ("Can't write " + path).c_str(), true, nullptr, nullptr, nullptr);
    return;
  }
  Message("Info", ("Shader templates written in " + path).c_str(), false, &RECT, nullptr, nullptr);
  ui.ShowFile(path);
}
