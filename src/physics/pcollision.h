#pragma once

#include "physics/pinside.h"
#include "physics/ptreeshape.h"

#include <memory>

// A shape that bodies share.
struct PCollision
{
  std::unique_ptr<btCollisionShape> shape;
  PTreeShape* tree = nullptr; // the shape, when it is a tree
};
