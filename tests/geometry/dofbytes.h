#pragma once

#include "foundation/qbytes.h"
#include "geometry/dgeode.h"

#include <string>
#include <string_view>
#include <vector>

// Composes model files by hand, independently of the writer under test.
using Bytes = std::string;

inline Bytes U32(uint32_t v)
{
  QByteWriter w;
  w.PutU32(v);
  return {reinterpret_cast<const char*>(w.Bytes().data()), w.Size()};
}

inline Bytes Floats(std::initializer_list<float> values)
{
  QByteWriter w;
  for (const float v : values)
    w.PutFloat(v);
  return {reinterpret_cast<const char*>(w.Bytes().data()), w.Size()};
}

inline Bytes Shorts(std::initializer_list<int> values)
{
  Bytes b;
  for (const int v : values) {
    b += static_cast<char>(v & 255);
    b += static_cast<char>(v >> 8 & 255);
  }
  return b;
}

inline Bytes Text(std::string_view text)
{
  return Shorts({static_cast<int>(text.size())}) + Bytes(text);
}

inline Bytes Chunk(std::string_view id, const Bytes& body)
{
  return Bytes(id) + U32(static_cast<uint32_t>(body.size())) + body;
}

inline Bytes Dof(const Bytes& chunks)
{
  return Chunk("DOF1", chunks + "EDOF");
}

inline Bytes Materials(std::initializer_list<Bytes> bodies)
{
  Bytes all = U32(static_cast<uint32_t>(bodies.size()));
  for (const Bytes& b : bodies)
    all += Chunk("MAT0", b + "MEND");
  return Chunk("MATS", all);
}

inline Bytes Geobs(std::initializer_list<Bytes> bodies)
{
  Bytes all = U32(static_cast<uint32_t>(bodies.size()));
  for (const Bytes& b : bodies)
    all += Chunk("GOB1", b + "GEND");
  return Chunk("GEOB", all);
}

// One triangle in the plane z = 0.
inline const Bytes INDI = Chunk("INDI", U32(3) + Shorts({0, 1, 2}));
inline const Bytes VERT = Chunk("VERT", U32(3) + Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}));
inline const Bytes TVER = Chunk("TVER", U32(3) + Floats({0, 0, 1, 0, 0, 1}));
inline const Bytes BRST = Chunk("BRST", U32(1) + U32(0) + U32(9) + U32(0) + U32(3));

inline std::span<const std::byte> AsBytes(const Bytes& b)
{
  return std::as_bytes(std::span(b.data(), b.size()));
}
