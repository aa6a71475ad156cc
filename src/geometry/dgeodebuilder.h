#pragma once

#include "geometry/dvector.h"

#include <memory>
#include <string>
#include <vector>

class DGeode;

// Makes a model in code, of triangles that share no vertices.
class DGeodeBuilder
{
public:
  static constexpr int MAX_GEOBS = 100;
  static constexpr int MAX_VERTICES = 200000;
  class Geob
  {
  public:
    // False at MAX_VERTICES.
    bool AddTriangle(const DVector3& a, const DVector3& b, const DVector3& c);

  private:
    friend class DGeodeBuilder;
    std::vector<DVector3> vertex;
  };
  Geob* MakeGeob(); // null, with a report, at MAX_GEOBS
  // A geob for each one made, all with the one material of the picture. Triangles beyond what an index can name are
  // left out (reported). Never null.
  std::unique_ptr<DGeode> Build(const std::string& fileName, const std::string& imageName) const;

private:
  std::vector<std::unique_ptr<Geob>> geobs;
};
