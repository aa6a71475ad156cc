#pragma once

#include "app/demo/terrain.h"

constexpr int DEMO_TREES = 2000;

// Woods and single trees as crossed pictures, a node for each square of ground, in three levels of detail.
void DemoAddTrees(DemoScenery& scenery, const DemoCourse& course, const DemoStrip& strip, const DemoTerrain& terrain);
