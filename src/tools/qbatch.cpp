#include "tools/qbatch.h"

#include "foundation/qdirectory.h"
#include "foundation/qfilename.h"
#include "foundation/qlog.h"
#include "foundation/qmatch.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "tools/qconvertmodel.h"
#include "tools/qtoolui.h"
#include "track/rtrackvrml.h"

#include <algorithm>

namespace {

constexpr const char* SURE = "This may take a while, are you sure?";
constexpr const char* ASE_LOG = "Convert ASE-Batch log.txt";
constexpr int NODES_A_GROUP = 30;

using Work = std::function<bool(const std::string& file)>;

QBatchResult WorkOn(QToolUi& ui, const char* dialogTitle, const char* dialogText, const std::vector<std::string>& files,
                    const Work& work)
{
  const auto progress = ui.OpenProgress(dialogTitle, dialogText);
  QBatchResult result{true, static_cast<int>(files.size())};
  result.failed = ui.WorkOnFiles(files, *progress, work);
  return result;
}

} // namespace

std::vector<std::string> QBatchFiles(const std::string& directory, std::string_view extension)
{
  qstring upper(extension);
  upper.ToUpper();
  std::vector<std::pair<std::string, std::string>> found; // as it is compared, as it is
  for (const std::string& name : QDirectory::SortedFiles(directory)) {
    if (name.find(extension) == std::string::npos && name.find(upper.Str()) == std::string::npos)
      continue;
    qstring lower(name);
    lower.ToLower();
    found.emplace_back(lower.Str(), name);
  }
  std::ranges::sort(found);
  std::vector<std::string> names;
  for (auto& [lower, name] : found)
    names.push_back(std::move(name));
  return names;
}

QBatchResult ConvertAllWRLs(QToolUi& ui, const std::string& trackDir)
{
  if (!ui.Confirm("Convert all SCGT WRL to DOF", SURE))
    return {};
  const std::string source = trackDir + "/SCGT/wrl";
  return WorkOn(ui, "Converting...", "Converting all WRL files to DOF format.", QBatchFiles(source, ".wrl"),
                [&](const std::string& file) { return ConvertModel(file, source, trackDir, MODEL_WRL, true); });
}

QBatchResult ASEBatch(QToolUi& ui, const std::string& trackDir, const std::string& directory, bool interactive,
                      bool optimize, const std::string& source)
{
  if (trackDir.empty())
    return {};
  std::unique_ptr<QLogRedirect> log;
  if (interactive) {
    log = std::make_unique<QLogRedirect>(ASE_LOG);
    if (!ui.Confirm("Convert all ASE files in <trackdir>/ase", SURE))
      return {};
    optimize =
        ui.Confirm("Optimize resulting DOF files?", "Conversion is faster without optimizations but draws slower.");
  }
  DGlobals().texturePool.Empty(); // it may hold pictures of earlier conversions
  const std::string target = directory.empty() ? trackDir : directory;
  const std::string from = source.empty() ? target + "/ase" : source;
  const QBatchResult result =
      WorkOn(ui, "Converting...", "Converting all ASE files to DOF format.", QBatchFiles(from, ".ase"),
             [&](const std::string& file) { return ConvertModel(file, from, target, MODEL_ASE, optimize); });
  if (!interactive)
    return result;
  ui.Tell("Conversion finished", "Done with conversion, check:\n" + target + "/*.dof");
  const bool problems = QLogHasProblems();
  log.reset();
  if (problems)
    ui.ShowFile(ASE_LOG);
  return result;
}

QBatchResult ImportDOFs(QToolUi& ui, RTrackVRML& track, std::string directory, bool useFilter, std::string& filter)
{
  if (!useFilter) {
    std::string answer = filter.empty() ? "*" : filter;
    if (!ui.AskText("Import DOF files", "Enter filter expression:", answer))
      return {};
    filter = answer;
  }
  if (directory.empty())
    directory = track.trackDir;
  auto files = QBatchFiles(directory, ".dof");
  std::erase_if(files, [&](const std::string& file) { return !QMatch(filter.c_str(), file.c_str()); });
  DGlobals().mapPath.Clear();
  DGlobals().mapPath.Add(directory);
  // One after the other: each joins the track.
  const auto progress = ui.OpenProgress("Importing...", "Importing matching DOF files.");
  QBatchResult result{true, static_cast<int>(files.size())};
  result.failed = ui.QToolUi::WorkOnFiles(
      files, *progress, [&](const std::string& file) { return AddModel(track, file, directory, directory); });
  DGlobals().mapPath.Clear();
  return result;
}

QBatchResult AddLightingAllDOFs(QToolUi& ui, const std::string& trackDir)
{
  if (!ui.Confirm("Add lighting to all DOFs", SURE))
    return {};
  return WorkOn(ui, "Processing...", "Add lighting/normals to all DOF files.", QBatchFiles(trackDir, ".dof"),
                [&](const std::string& file) { return ModelAddLighting(file, trackDir, trackDir); });
}

QBatchResult BatchOptimizeDOFs(QToolUi& ui, const std::string& trackDir)
{
  if (!ui.Confirm("Optimize all DOFs (trackdir/*.dof)", SURE))
    return {};
  return WorkOn(ui, "Processing...", "Optimizing all DOF files.", QBatchFiles(trackDir, ".dof"),
                [&](const std::string& file) {
                  QDBG("Model '%s'\n", file.c_str());
                  return ModelOptimize(file, trackDir, trackDir);
                });
}

QBatchResult ExportAllWRL(QToolUi& ui, const RTrackVRML& track)
{
  if (!ui.Confirm("Export all DOF files to WRL", SURE))
    return {};
  const std::string directory = track.trackDir + "/wrl";
  if (!QCreateDirectory(directory))
    QWARN("ExportAllWRL(); can't create directory '%s'", directory.c_str());
  const auto progress = ui.OpenProgress("Processing...", "Converting DOF to WRL (in <trackdir>/wrl).");
  QBatchResult result{true, track.nodes.Count()};
  for (int i = 0; i < track.nodes.Count(); ++i) {
    const RTrackNode& node = **track.nodes.At(i);
    progress->SetText(node.file);
    progress->SetProgress(i, track.nodes.Count());
    progress->Flush();
    const std::string target = directory + "/objects_group_" + std::to_string(i / NODES_A_GROUP) + ".wrl";
    const int mode = i % NODES_A_GROUP == 0 ? 0 : VRML_APPEND;
    if (!node.Geode() || !node.Geode()->ExportVRML(node.file, target, mode))
      ++result.failed;
  }
  return result;
}
