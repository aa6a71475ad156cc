#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QToolUi;
class RTrackVRML;

// Turns a directory of exported scenery into models of a track, and works over all models of one. What fails with one
// file is reported by its name, and the next one follows; a Cancel leaves what is done.

struct QBatchResult
{
  bool started = false; // the user agreed
  int files = 0;        // that were to be worked on
  int failed = 0;
};

// Names in a directory that hold the extension in lower or in upper case, anywhere; sorted without regard to case.
std::vector<std::string> QBatchFiles(const std::string& directory, std::string_view extension);

// All of <trackDir>/SCGT/wrl becomes <trackDir>/*.dof, optimised.
QBatchResult ConvertAllWRLs(QToolUi& ui, const std::string& trackDir);
// All of source becomes models in directory. An empty directory is the track's, an empty source its "ase". When
// interactive the user is asked, optimize is the user's choice, and the log of problems is shown. Without a track
// (trackDir empty) nothing is done.
QBatchResult ASEBatch(QToolUi& ui, const std::string& trackDir, const std::string& directory, bool interactive,
                      bool optimize, const std::string& source);
// Adds the models of the directory, which an empty one makes the track's, whose names match the filter. Unless
// useFilter is set the user is asked for it; it is kept for the next time.
QBatchResult ImportDOFs(QToolUi& ui, RTrackVRML& track, std::string directory, bool useFilter, std::string& filter);
QBatchResult AddLightingAllDOFs(QToolUi& ui, const std::string& trackDir);
QBatchResult BatchOptimizeDOFs(QToolUi& ui, const std::string& trackDir);
// The track's models as <trackDir>/wrl/objects_group_<n>.wrl, thirty in each.
QBatchResult ExportAllWRL(QToolUi& ui, const RTrackVRML& track);
