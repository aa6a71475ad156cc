#pragma once

#include "fuzzing/check.h"
#include "platform/qcgsource.h"

#include <string_view>

// Any text as a preprocessed Cg program, of both stages: rewritten or refused with a reason.
inline void FuzzCg(std::string_view input)
{
  for (const DProgramStage stage : {DProgramStage::VERTEX, DProgramStage::FRAGMENT}) {
    const QCgSource source = QRewriteCg(input, stage, "fuzz.cg");
    FUZZ_CHECK(source.text.empty() != source.error.empty());
  }
}
