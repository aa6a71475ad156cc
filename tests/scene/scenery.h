#pragma once

#include "geometry/dshader.h"
#include "geometry/dvector.h"
#include "scene/dcamera.h"
#include "scene/ddirector.h"
#include "scene/worldgeodenode.h"
#include "scene/worldscene.h"

#include <memory>
#include <string>
#include <vector>

class DGeode;

// A model of one box, its middle at a place. The shader may be null.
std::unique_ptr<DGeode> BoxGeode(const DVector3& middle, float side = 1.0f, DShader* shader = nullptr);

// A shader of one layer: what the order of a frame's blocks goes by.
DShader OneLayerShader(int sortKey, uint32_t blendSrc = 1, uint32_t layerFlags = DShaderLayer::DEPTH_WRITE);

// A scene with one camera that stands at the origin and looks along -z.
class SmallScene
{
public:
  SmallScene();
  // A box below the root, or below the parent.
  WorldGeodeNode& AddBox(const std::string& name, const DVector3& middle, DShader* shader = nullptr,
                         WorldNode* parent = nullptr);
  // Walks, sorts and paints.
  void Frame();
  // The painted boxes' names, in painting order.
  std::vector<std::string> Painted();

  WorldScene scene;
  DCameraAnimated camera;
  DRail rail;
  DDirector director;
  std::vector<std::unique_ptr<WorldGeodeNode>> boxes; // they go before the scene
};
