#pragma once

#include "fuzzing/ase.h"
#include "geometry/dvrml.h"

inline void FuzzWrl(std::string_view text)
{
  const QuietReports quiet;
  DGlobals().texturesOn = false; // names lead to no files
  DGeode geode("fuzz");
  geode.ImportVRMLText(text);
  // What was written reads as a model of as many shapes, as far as there are names without blanks and quotes.
  for (const auto& g : geode.geob) {
    std::string written;
    FUZZ_CHECK(g->ExportVRML(written, "fuzz", 0, text.size() % 2) == (geode.GetNoofMaterials() > 0));
    DGeode again("fuzz");
    again.ImportVRMLText(written);
  }
  FuzzUseModel(geode);
}
