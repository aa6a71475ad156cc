#pragma once

#include <cmath>
#include <cstdio>
#include <string>

// An exported scene: ground in squares of two triangles, with texture coordinates and a normal for each corner.
class AseScene
{
public:
  explicit AseScene(int materials)
  {
    Put("*3DSMAX_ASCIIEXPORT\t200\n*SCENE {\n}\n*MATERIAL_LIST {\n\t*MATERIAL_COUNT %d\n", materials);
    for (int m = 0; m < materials; ++m)
      Put("\t*MATERIAL %d {\n\t\t*MATERIAL_NAME \"material%d\"\n\t\t*MATERIAL_DIFFUSE 0.5 0.5 0.5\n\t}\n", m, m);
    text += "}\n";
  }
  // side: squares along an edge.
  void AddGround(int number, int side, int material)
  {
    const int row = side + 1, faces = 2 * side * side;
    Put("*GEOMOBJECT {\n\t*NODE_NAME \"ground%d\"\n\t*MESH {\n\t\t*MESH_NUMVERTEX %d\n\t\t*MESH_NUMFACES %d\n"
        "\t\t*MESH_VERTEX_LIST {\n",
        number, row * row, faces);
    for (int i = 0; i < row * row; ++i)
      Put("\t\t\t*MESH_VERTEX %4d\t%.4f\t%.4f\t%.4f\n", i, i % row * 0.7 + number * side, i / row * 0.7,
          Height(i, row));
    text += "\t\t}\n\t\t*MESH_FACE_LIST {\n";
    for (int i = 0; i < faces; ++i) {
      const auto [a, b, c] = Corners(i, side);
      Put("\t\t\t*MESH_FACE %4d:    A: %4d B: %4d C: %4d AB:    1 BC:    1 CA:    0\t *MESH_SMOOTHING 1 \t"
          "*MESH_MTLID 0\n",
          i, a, b, c);
    }
    Put("\t\t}\n\t\t*MESH_NUMTVERTEX %d\n\t\t*MESH_TVERTLIST {\n", row * row);
    for (int i = 0; i < row * row; ++i)
      Put("\t\t\t*MESH_TVERT %d\t%.4f\t%.4f\t0.0000\n", i, i % row / 8.0, i / row / 8.0);
    Put("\t\t}\n\t\t*MESH_NUMTVFACES %d\n\t\t*MESH_TFACELIST {\n", faces);
    for (int i = 0; i < faces; ++i) {
      const auto [a, b, c] = Corners(i, side);
      Put("\t\t\t*MESH_TFACE %d\t%d\t%d\t%d\n", i, a, b, c);
    }
    text += "\t\t}\n\t\t*MESH_NORMALS {\n";
    for (int i = 0; i < faces; ++i) {
      const auto corners = Corners(i, side);
      Put("\t\t\t*MESH_FACENORMAL %d\t0.1000\t0.2000\t0.9747\n", i);
      for (const int corner : {corners.a, corners.b, corners.c})
        Put("\t\t\t\t*MESH_VERTEXNORMAL %d\t%.4f\t0.2000\t0.9747\n", corner, 0.3 * Height(corner, row));
    }
    Put("\t\t}\n\t}\n\t*MATERIAL_REF %d\n}\n", material);
  }
  std::string text;

private:
  struct Triangle
  {
    int a, b, c;
  };
  static double Height(int vertex, int row) { return std::sin(vertex % row * 0.1 + vertex / row * 0.3); }
  static Triangle Corners(int face, int side)
  {
    const int at = face / 2 / side * (side + 1) + face / 2 % side;
    return face % 2 == 0 ? Triangle{at, at + 1, at + side + 1} : Triangle{at + 1, at + side + 2, at + side + 1};
  }
  template <typename... Values>
  void Put(const char* format, Values... values)
  {
    char line[256];
    text.append(line, static_cast<size_t>(std::snprintf(line, sizeof line, format, values...)));
  }
};
