#pragma once

#include "geometry/dgeode.h"
#include "geometry/dshader.h"
#include "scene/worldgeodenode.h"
#include "track/rtracknode.h"

#include <memory>
#include <string>
#include <vector>

// A node of one geob with the given triangles, three vertices each. The shader may be null, and outlives the node.
inline std::unique_ptr<RTrackNode> SceneryNode(const std::vector<DVector3>& vertices, DShader* shader,
                                               uint32_t flags = RTrackNode::DEFAULT_FLAGS)
{
  auto model = std::make_unique<DGeode>("piece");
  DMaterial& material = *model->AddMaterial();
  material.name = "ground";
  material.shader = shader;
  DGeob& geob = *model->AddGeob();
  for (const DVector3& v : vertices) {
    geob.index.push_back(static_cast<uint16_t>(geob.vertex.size()));
    geob.vertex.push_back(v);
  }
  geob.AddBurst({.start = 0, .count = 3 * geob.IndexCount()});
  geob.FinalizeGeob();
  auto node = std::make_unique<RTrackNode>();
  node->flags = flags;
  node->sceneNode = std::make_unique<WorldGeodeNode>(nullptr, "piece");
  node->sceneNode->SetGeode(std::move(model), "piece");
  return node;
}

// A level square around (x, z), two triangles, seen from above.
inline std::vector<DVector3> Square(float x, float y, float z, float half)
{
  const DVector3 a(x - half, y, z - half), b(x - half, y, z + half), c(x + half, y, z + half), d(x + half, y, z - half);
  return {a, b, c, a, c, d};
}
