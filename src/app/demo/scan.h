#pragma once

#include "app/demo/scenery.h"

#include <string>

// The road as a scanner sees it, as a cloud of points with triangles: "track.rld". A few millimetres off the models, as
// scans are.
std::string DemoRoadScan(const DemoScenery& scenery);
