#pragma once

#include "app/demo/scenery.h"
#include "app/demo/trackfiles.h"

#include <string>
#include <vector>

// The finest levels of the scenery as a modelling program would export them, for the tools that turn such files into
// models. ASE has z up: (x, y, z) of the scenery is written as (x, -z, y).

// One scene. Plain: an object for each mesh, named after its node, and after its material too when the node has
// several. Multi/sub: an object for each node, all with the one material, whose submaterials the faces name.
enum class DemoAseKind
{
  PLAIN,
  MULTI_SUB
};
std::string DemoAse(const DemoScenery& scenery, DemoAseKind kind);

// A node as VRML 2.0, a shape for each mesh. y stays up.
std::string DemoWrl(const DemoNode& node);

// "export/scenery.ase", "export/scenery_multisub.ase" and "SCGT/wrl/<node>.wrl", below the track's directory.
std::vector<DemoFile> DemoExportFiles(const DemoScenery& scenery);
