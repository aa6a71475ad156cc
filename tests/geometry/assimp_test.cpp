#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "support/reportcapture.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// The sample models as another library reads them.

namespace {

using Corner = std::array<float, 5>; // position, and texture coordinates or 0
using Triangle = std::array<Corner, 3>;

// From the least corner on, so that one triangle has one form.
Triangle Turned(Triangle t)
{
  std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
  return t;
}

std::vector<Triangle> Ours(const DGeode& geode)
{
  std::vector<Triangle> all;
  for (const auto& g : geode.geob)
    for (size_t i = 0; i + 2 < g->index.size(); i += 3) {
      Triangle t{};
      for (size_t k = 0; k < 3; ++k) {
        const size_t n = g->index[i + k];
        const DVector2 uv = g->texCoord[0].empty() ? DVector2(0.0f) : g->texCoord[0][n];
        t[k] = {g->vertex[n].x, g->vertex[n].y, g->vertex[n].z, uv.x, uv.y};
      }
      all.push_back(Turned(t));
    }
  std::sort(all.begin(), all.end());
  return all;
}

// The library turns ASE to y up by its root node; tiled is the material whose tiling it leaves to the picture.
void AddNode(const aiScene& scene, const aiNode& node, aiMatrix4x4 matrix, const DMaterial* tiled,
             std::vector<Triangle>& all)
{
  matrix = matrix * node.mTransformation;
  for (unsigned m = 0; m < node.mNumMeshes; ++m) {
    const aiMesh& mesh = *scene.mMeshes[node.mMeshes[m]];
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
      if (mesh.mFaces[f].mNumIndices != 3)
        continue;
      Triangle t{};
      for (unsigned k = 0; k < 3; ++k) {
        const unsigned n = mesh.mFaces[f].mIndices[k];
        const aiVector3D v = matrix * mesh.mVertices[n];
        const aiVector3D uv = mesh.HasTextureCoords(0) ? mesh.mTextureCoords[0][n] : aiVector3D();
        t[k] = {v.x, v.y, v.z, uv.x, uv.y};
        if (tiled && mesh.HasTextureCoords(0)) {
          t[k][3] = (uv.x - 0.5f) * tiled->uTiling + 0.5f - tiled->uTiling * tiled->uOffset;
          t[k][4] = (uv.y - 0.5f) * tiled->vTiling + 0.5f - tiled->vTiling * tiled->vOffset;
        }
      }
      all.push_back(Turned(t));
    }
  }
  for (unsigned c = 0; c < node.mNumChildren; ++c)
    AddNode(scene, *node.mChildren[c], matrix, tiled, all);
}

float Distance(const Triangle& a, const Triangle& b)
{
  float most = 0;
  for (size_t k = 0; k < 3; ++k)
    for (size_t i = 0; i < 5; ++i)
      most = std::max(most, std::abs(a[k][i] - b[k][i]));
  return most;
}

// How many of ours have none beside them among the others, which may be turned as rounding has it.
size_t Missing(const std::vector<Triangle>& ours, const std::vector<Triangle>& others)
{
  constexpr float NEAR = 2e-3f;
  return static_cast<size_t>(std::count_if(ours.begin(), ours.end(), [&](Triangle t) {
    for (int turn = 0; turn < 3; ++turn) {
      if (std::any_of(others.begin(), others.end(), [&](const Triangle& o) { return Distance(t, o) < NEAR; }))
        return false;
      std::rotate(t.begin(), t.begin() + 1, t.end());
    }
    return true;
  }));
}

} // namespace

TEST(SampleModels, AgreeWithAnotherReader)
{
  const char* samples = std::getenv("PAVEX_SAMPLES");
  if (!samples || !std::filesystem::is_directory(std::string(samples) + "/models"))
    GTEST_SKIP() << "PAVEX_SAMPLES names no folder with models";
  DResetGlobals();
  DGlobals().texturesOn = false;
  const ReportCapture reports;
  int compared = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(samples) + "/models")) {
    const std::string path = entry.path().string();
    const bool ase = path.ends_with(".ASE") || path.ends_with(".ase");
    if (!ase && !path.ends_with(".wrl"))
      continue;
    SCOPED_TRACE(path);
    DGeode geode(path);
    DArray<int32_t> faces;
    ASSERT_TRUE(ase ? geode.ImportASE(faces, path) : geode.ImportVRML(path));
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path, aiProcess_Triangulate);
    if (!scene)
      continue; // it knows no such file
    std::vector<Triangle> others;
    AddNode(*scene, *scene->mRootNode, {}, ase ? geode.GetMaterial(0) : nullptr, others);
    const std::vector<Triangle> ours = Ours(geode);
    EXPECT_EQ(others.size(), ours.size());
    EXPECT_EQ(0u, Missing(ours, others));
    EXPECT_EQ(0u, Missing(others, ours));
    compared += !ours.empty();
  }
  EXPECT_GT(compared, 0);
}
