#pragma once

#include "fuzzing/check.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dintersect.h"

#include <string_view>

// Whatever the bytes are, the model that comes out of them can be used, written, and read again as the same model.
inline void FuzzDof(std::string_view bytes)
{
  const auto input = std::as_bytes(std::span(bytes.data(), bytes.size()));
  const QuietReports quiet;
  DGlobals().texturesOn = false; // names lead to no files
  DGeode geode("fuzz");
  const bool good = geode.ImportDOF(input);
  for (const auto& g : geode.geob) {
    for (const uint16_t i : g->index) {
      FUZZ_CHECK(i < g->vertex.size() && i < g->texCoord[0].size());
      FUZZ_CHECK(!good || i < g->normal.size()); // missing ones are made at the end of a load
    }
    for (int i = 0; i < g->Bursts(); ++i) {
      FUZZ_CHECK(g->BurstIndices(i).size() <= g->index.size());
      g->GetMaterial(g->burst[static_cast<size_t>(i)].mtlID);
      g->GetBurstOfIndex(i);
    }
  }
  const auto written = geode.ExportDOFBytes();
  DGeode again("fuzz");
  FUZZ_CHECK(again.ImportDOF(written));
  FUZZ_CHECK(again.GetNoofGeobs() == geode.GetNoofGeobs());
  FUZZ_CHECK(again.GetNoofMaterials() == geode.GetNoofMaterials());
  const auto twice = again.ExportDOFBytes();
  DGeode third("fuzz");
  FUZZ_CHECK(third.ImportDOF(twice));
  FUZZ_CHECK(third.ExportDOFBytes() == twice);
  GeodeHit hit;
  IntersectRayGeode(geode, {0, 0, 5}, {0.1f, 0.1f, -1}, hit);
  geode.GetBoundingBox();
  for (const auto& g : geode.geob) {
    g->FlipFaces(0);
    g->CheckDegenerate();
    g->AdjacencyIndices();
    g->CalculateTangentArray();
    FUZZ_CHECK(g->tangent.size() == g->vertex.size());
    for (const uint16_t i : g->index)
      FUZZ_CHECK(i < g->vertex.size());
  }
}
