#pragma once

#include "foundation/qrect.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Gathers coloured, textured quads in pixels of the top-level window and draws them in as few calls as their textures
// allow. OpenGL's state is as before after each flush. Only used with a context.
class QGLBatch
{
public:
  struct Vertex
  {
    float x, y, u, v;
    uint32_t rgba; // red in the lowest byte
  };
  void Begin() { ++depth; }
  // The outermost one draws.
  void End();
  // Corners in order around the quad.
  void Quad(uint32_t texture, const std::array<Vertex, 4>& corners);
  void Flush();
  // A picture from its top row down, at once. The rectangle and the clip are in pixels of the interface.
  void Pixels(const QRect& r, const uint32_t* rgba, bool blend, const QRect& clip);
  // Draw calls so far; for measuring.
  int Calls() const { return calls; }

private:
  // Quads in a row with the same texture.
  struct Piece
  {
    uint32_t texture;
    size_t end; // of its vertices
  };
  void Draw();
  std::vector<Vertex> vertices;
  std::vector<Piece> pieces;
  int depth = 0;
  int calls = 0;
};
