#pragma once

#include "fuzzing/check.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"
#include "geometry/dglobal.h"

#include <string_view>

// A model that came from text, whatever that was: its arrays fit together, it can be optimised, written and read.
inline void FuzzUseModel(DGeode& geode)
{
  for (const auto& g : geode.geob) {
    FUZZ_CHECK(g->index.size() == g->vertex.size());
    FUZZ_CHECK(g->normal.empty() || g->normal.size() == g->vertex.size());
    FUZZ_CHECK(g->vertexColor.empty() || g->vertexColor.size() == g->vertex.size());
    for (const auto& channel : g->texCoord)
      FUZZ_CHECK(channel.empty() || channel.size() == g->vertex.size());
    for (const uint16_t i : g->index)
      FUZZ_CHECK(i < g->vertex.size());
    FUZZ_CHECK(g->Bursts() <= DGeob::MAX_BURSTS);
    for (int i = 0; i < g->Bursts(); ++i)
      FUZZ_CHECK(g->BurstIndices(i).size() <= g->index.size());
  }
  DGeode again("fuzz");
  FUZZ_CHECK(again.ImportDOF(geode.ExportDOFBytes()));
  FUZZ_CHECK(again.GetNoofGeobs() == geode.GetNoofGeobs());
  DGeodeMergeVertices(geode);
  DGeodePackIndices(geode);
  DGeodeOptimizeBursts(geode);
  geode.GetBoundingBox();
}

inline void FuzzAse(std::string_view text)
{
  const QuietReports quiet;
  DGlobals().texturesOn = false; // names lead to no files
  DGeode geode("fuzz");
  DArray<int32_t> faces;
  geode.ImportASE(faces, text, "fuzz.ase");
  FuzzUseModel(geode);
}
