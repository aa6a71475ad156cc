#include "geometry/dgeodebuilder.h"

#include "foundation/qreport.h"
#include "geometry/dgeode.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr size_t ADDRESSABLE = DGeob::MAX_VERTICES / 3 * 3; // whole triangles

} // namespace

bool DGeodeBuilder::Geob::AddTriangle(const DVector3& a, const DVector3& b, const DVector3& c)
{
  if (vertex.size() + 3 > MAX_VERTICES)
    return false;
  vertex.insert(vertex.end(), {a, b, c});
  return true;
}

DGeodeBuilder::Geob* DGeodeBuilder::MakeGeob()
{
  if (geobs.size() >= MAX_GEOBS) {
    QWARN("DGeodeBuilder::MakeGeob() out of geobs (max=%d)", MAX_GEOBS);
    return nullptr;
  }
  return geobs.emplace_back(std::make_unique<Geob>()).get();
}

std::unique_ptr<DGeode> DGeodeBuilder::Build(const std::string& fileName, const std::string& imageName) const
{
  auto geode = std::make_unique<DGeode>(fileName);
  // A picture that isn't there is no fault of an author's: it is stubbed without a word.
  geode->AddMaterial()->AddBitMap(geode->FindMapFile(imageName), true, geode.get(), true);
  for (const auto& made : geobs) {
    DGeob& g = *geode->AddGeob();
    const size_t count = std::min(made->vertex.size(), ADDRESSABLE);
    if (count < made->vertex.size())
      QWARN("DGeodeBuilder:Build(%s); %d vertices are more than indices can name, cutting down to %d", fileName.c_str(),
            static_cast<int>(made->vertex.size()), static_cast<int>(count));
    g.vertex.assign(made->vertex.begin(), made->vertex.begin() + static_cast<std::ptrdiff_t>(count));
    g.normal.assign(g.vertex.size(), DVector3(0, 1, 0));
    g.texCoord[0].assign(g.vertex.size(), DVector2(0.0f));
    g.index.resize(g.vertex.size());
    std::iota(g.index.begin(), g.index.end(), static_cast<uint16_t>(0));
    g.AddBurst({0, 3 * g.VertexCount(), 0, 3});
    g.FinalizeGeob();
  }
  geode->GetBoundingBox();
  return geode;
}
