// Answers for the window test: a view onto a track's road, and how far declared points are from its triangles.
//   roadcheck view TRACKDIR       a camera transform that looks down on the road, for settings.transform
//   roadcheck distance TRACKDIR N metres between the surface and the farther point of grid position N

#include "foundation/qinfo.h"
#include "foundation/qinfoiterator.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr int SURFACE = 4;

// Distance from p to the nearest point of triangle abc, by the regions of its corners and edges.
float DistanceToTriangle(const DVector3& p, const DVector3& a, const DVector3& b, const DVector3& c)
{
  const auto toSegment = [&](const DVector3& s, const DVector3& e) {
    const DVector3 d = e - s;
    const float t = glm::dot(d, d) > 0 ? std::clamp(glm::dot(p - s, d) / glm::dot(d, d), 0.0f, 1.0f) : 0.0f;
    return glm::distance(p, s + d * t);
  };
  const float edges = std::min({toSegment(a, b), toSegment(b, c), toSegment(c, a)});
  const DVector3 n = glm::cross(b - a, c - a);
  if (glm::dot(n, n) == 0)
    return edges;
  const bool inside = glm::dot(glm::cross(b - a, p - a), n) >= 0 && glm::dot(glm::cross(c - b, p - b), n) >= 0 &&
                      glm::dot(glm::cross(a - c, p - c), n) >= 0;
  return inside ? std::abs(glm::dot(p - a, glm::normalize(n))) : edges;
}

float DistanceToModel(const DVector3& p, const DGeode& model)
{
  float best = 1e9f;
  for (const auto& geob : model.geob)
    for (int i = 0; i + 2 < geob->IndexCount(); i += 3)
      best = std::min(best, DistanceToTriangle(p, geob->vertex[geob->index[size_t(i)]],
                                               geob->vertex[geob->index[size_t(i) + 1]],
                                               geob->vertex[geob->index[size_t(i) + 2]]));
  return best;
}

float DistanceToSurface(const std::string& directory, const DVector3& p)
{
  QInfo geometry(directory + "/geometry.ini");
  QInfoIterator walk(geometry, "objects");
  qstring path;
  float best = 1e9f;
  while (walk.GetNext(path, false)) {
    std::string file;
    const std::string key = path.Str();
    if (!geometry.GetString(key + ".file", file) || !(geometry.GetInt(key + ".flags", 6) & SURFACE))
      continue;
    DGeode model;
    if (model.ImportDOF(directory + "/" + file))
      best = std::min(best, DistanceToModel(p, model));
  }
  return best;
}

DVector3 Point(const QInfo& info, const std::string& key)
{
  return {info.GetFloat(key + ".x"), info.GetFloat(key + ".y"), info.GetFloat(key + ".z")};
}

int PrintView(const std::string& directory)
{
  QInfo spline(directory + "/spline.ini");
  const auto middle = [&](int line) {
    DVector3 left, right;
    spline.GetFloats("line" + std::to_string(line) + ".cp0", 3, &left.x);
    spline.GetFloats("line" + std::to_string(line) + ".cp1", 3, &right.x);
    return (left + right) * 0.5f;
  };
  const DVector3 target = middle(8);
  const DVector3 eye = middle(5) + DVector3(0, 8, 0);
  const DVector3 ahead = glm::normalize(target - eye);
  const double degrees = 180 / M_PI;
  std::printf("%f %f %f %f %f 0 50\n", double(eye.x), double(eye.y), double(eye.z),
              std::asin(double(-ahead.y)) * degrees, std::atan2(double(ahead.x), double(-ahead.z)) * degrees);
  return 0;
}

int PrintDistance(const std::string& directory, const std::string& n)
{
  DGlobals().texturesOn = false;
  QInfo special(directory + "/special.ini");
  const std::string key = "grid.pos" + n;
  const float distance = std::max(DistanceToSurface(directory, Point(special, key + ".from")),
                                  DistanceToSurface(directory, Point(special, key + ".to")));
  std::printf("%.3f\n", double(distance));
  return distance < 0.1f ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
  QReports().quiet = true;
  const std::string verb = argc > 1 ? argv[1] : "";
  if (verb == "view" && argc == 3)
    return PrintView(argv[2]);
  if (verb == "distance" && argc == 4)
    return PrintDistance(argv[2], argv[3]);
  return 2;
}
