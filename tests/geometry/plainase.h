#pragma once

#include "foundation/qfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// An ASE object read the plain way, one copied token after the other, for files without mistakes.
struct PlainObject
{
  using Floats = std::vector<float>;
  Floats vertex, normal, color;
  std::array<Floats, 2> uv;
  std::vector<int> index, faces, bursts; // bursts: start, count and id each
  int materialRef = 0;
};

class PlainAse
{
public:
  explicit PlainAse(std::string_view text) : file("plain.ase", Bytes(text))
  {
    for (std::string t; Next(t);)
      if (t == "*GEOMOBJECT")
        Object(objects.emplace_back());
  }
  std::vector<PlainObject> objects;

private:
  using Floats = PlainObject::Floats;
  static std::vector<std::byte> Bytes(std::string_view text)
  {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
  }
  bool Next(std::string& token)
  {
    char buffer[1024];
    const bool any = file.GetString(buffer, sizeof buffer);
    token = buffer;
    return any;
  }
  std::string Token()
  {
    std::string token;
    Next(token);
    return token;
  }
  int Int() { return std::atoi(Token().c_str()); }
  float Float() { return static_cast<float>(std::atof(Token().c_str())); }
  static void Put(Floats& to, int at, const Floats& from)
  {
    const size_t start = from.size() * static_cast<size_t>(at);
    to.resize(std::max(to.size(), start + from.size()));
    std::copy(from.begin(), from.end(), to.begin() + static_cast<std::ptrdiff_t>(start));
  }
  Floats Three()
  {
    const float x = Float(), y = Float();
    return {x, y, Float()};
  }
  static Floats Turned(const Floats& v) { return {v[0], v[2], -v[1]}; }
  static Floats Part(const Floats& from, int at, size_t n)
  {
    const auto first = from.begin() + 3 * at;
    return {first, first + static_cast<std::ptrdiff_t>(n)};
  }
  void Face(PlainObject& o)
  {
    const int f = Int();
    for (int i = 0; i < 3; ++i) {
      Token();
      const int corner = Int();
      o.faces.push_back(corner);
      o.index.push_back((3 * f + i) % 65536);
      Put(o.vertex, 3 * f + i, Part(points, corner, 3));
    }
    for (int i = 0; i < 8; ++i)
      Token();
    while (Token() != "*MESH_MTLID") {
    }
    const int id = Int();
    if (id != lastId && o.bursts.size() < 300) {
      o.bursts.insert(o.bursts.end(), {9 * f, 0, id});
      lastId = id;
    }
    o.bursts[o.bursts.size() - 2] += 9;
  }
  void Object(PlainObject& o)
  {
    points.clear();
    colors.clear();
    tverts = {};
    channel = 0;
    lastId = -1;
    int mapVert = 0;
    int normals = 0;
    int depth = 0;
    for (std::string t; Next(t);) {
      if (t == "{") {
        ++depth;
      } else if (t == "}") {
        if (--depth == 0)
          return;
      } else if (t == "*MESH_ANIMATION") {
        int inner = 0;
        do {
          t = Token();
          inner += t == "{" ? 1 : t == "}" ? -1 : 0;
        } while (inner > 0);
      } else if (t == "*MESH_NUMFACES") {
        const auto n = static_cast<size_t>(Int());
        o.normal.assign(9 * n, 0);
      } else if (t == "*MESH_VERTEX") {
        const int i = Int();
        Put(points, i, Turned(Three()));
      } else if (t == "*MESH_FACE") {
        Face(o);
      } else if (t == "*MESH_VERTEXNORMAL") {
        Int();
        const Floats n = Three();
        const Floats v = {n[0] * 1 + n[1] * 0 + n[2] * 0, n[0] * 0 + n[1] * 1 + n[2] * 0,
                          n[0] * 0 + n[1] * 0 + n[2] * 1}; // the matrix of an object without one
        const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        Put(o.normal, normals++,
            Turned(length < 1e-5f ? Floats{0, 1, 0} : Floats{v[0] / length, v[1] / length, v[2] / length}));
      } else if (t == "*MESH_MAPPINGCHANNEL") {
        channel = static_cast<size_t>(Int() - 1);
      } else if (t == "*MESH_TVERT") {
        const int i = Int();
        Put(tverts[channel], i, Three());
      } else if (t == "*MESH_TFACE") {
        const int f = Int();
        for (int i = 0; i < 3; ++i)
          Put(o.uv[channel], 3 * f + i, Part(tverts[channel], Int(), 2));
      } else if (t == "*MESH_FACEMAPVERT") {
        const Floats v = Three();
        Put(o.uv[channel], mapVert++, {v[1], v[0]});
      } else if (t == "*MESH_VERTCOL") {
        const int i = Int();
        Put(colors, i, Three());
      } else if (t == "*MESH_CFACE") {
        const int f = Int();
        for (int i = 0; i < 3; ++i)
          Put(o.color, 3 * f + i, Part(colors, Int(), 3));
      } else if (t == "*MATERIAL_REF") {
        o.materialRef = Int();
      }
    }
  }

  QFile file;
  Floats points, colors;
  std::array<Floats, 2> tverts;
  size_t channel = 0;
  int lastId = -1;
};
