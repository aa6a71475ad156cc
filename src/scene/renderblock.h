#pragma once

#include "geometry/dvector.h"

#include <cstdint>

class DGeob;
class DShader;

// One entry of the list that a frame paints.
struct RenderBlock
{
  DShader* shader; // null: none
  DGeob* geob;
  const DMatrix4* matrix; // null: the geob is in world space
  int firstIndex;         // the run of the geob's indices that is painted
  int indexCount;
  bool quads;       // else triangles
  float distance;   // from the camera
  float screenSize; // radius over distance
};

struct RenderLine
{
  DVector3 from, to;
  DVector3 color;
};

// Counted anew each frame, but for the frames themselves.
struct RenderStats
{
  int64_t indices = 0; // of triangles painted, three each
  int drawCalls = 0;
  int frames = 0;
  int opaqueBlocks = 0;
  int transparentBlocks = 0;
  int shaderChanges = 0;

  void StartFrame() { *this = {.frames = frames}; }
  int64_t Triangles() const { return indices / 3; }
};
