#pragma once

#include "app/demo/profile.h"
#include "app/demo/scenery.h"
#include "app/demo/trackfiles.h"

#include <string>

// The whole track below root/data/tracks/name, with its exports if wanted. False, reported, with what was there before
// still there, when a file can't be written: all contents are made before the first is put in its place.
[[nodiscard]] bool DemoWriteTrack(const std::string& root, const DemoCourse& course, const DemoScenery& scenery,
                                  bool exports = false);

// All files of the track, in the order in which they are put in their places.
std::vector<DemoFile> DemoTrackFiles(const DemoCourse& course, const DemoScenery& scenery);

// All nodes of a circuit.
DemoScenery DemoBuildScenery(const DemoCourse& course);
