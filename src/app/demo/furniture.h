#pragma once

#include "app/demo/terrain.h"

// A dome with the sky inside, far beyond the land.
void DemoAddSky(DemoScenery& scenery, const DemoCourse& course);

// What people have put up: rails, pits, a stand, the start, boards, posts.
void DemoAddFurniture(DemoScenery& scenery, const DemoCourse& course, const DemoStrip& strip,
                      const DemoTerrain& terrain);

// Ground that the buildings beside the start take.
bool DemoIsBuiltOver(const DemoCourse& course, const DemoPlan& p);

// Stations along the road near the start, where buildings stand in a row beside it.
class DemoStation
{
public:
  // A distance from the start line, below 0 before it.
  DemoStation(const DemoCourse& course, double distance);
  // A place beside the road: metres beyond its edge on that side, and above the level of that edge.
  DVector3 Beside(int side, double offset, double up) const;
  DVector3 Along() const { return DemoAt(tangent, 0); }
  const DemoSection& Section() const { return *section; }

private:
  const DemoSection* section;
  DemoPlan at, tangent, right;
  double height[2], half[2];
};

// The buildings beside the start; the rest of the furniture is the lap's own.
void DemoAddPits(DemoScenery& scenery, const DemoCourse& course);
void DemoAddStand(DemoScenery& scenery, const DemoCourse& course);
void DemoAddStart(DemoScenery& scenery, const DemoCourse& course);

// A sign of the signs' board, facing the way that right and up make.
void DemoAddSign(DemoMesh& mesh, int sign, const DVector3& centre, const DVector3& right, double wide, double high,
                 const DVector3& tint = DVector3(1.0f));
constexpr double DEMO_STAND_FROM = -150, DEMO_STAND_TO = 40;
