#pragma once

#include "foundation/qinfo.h"
#include "fuzzing/check.h"
#include "geometry/dtexfont.h"

#include <string_view>

// Any text as the description of a texture font; every letter can be looked for.
inline void FuzzTexfont(std::string_view input)
{
  const QuietReports quiet;
  QInfo info("fuzz.dtf", QInfo::NO_READ);
  info.ReadFromText(input);
  DTexFont font;
  static_cast<void>(font.Read(info, "fuzz", {64.0f, 32.0f}, {1.0f, 1.0f}));
  FUZZ_CHECK(font.Chars().size() == font.Outlines().size());
  for (const DTexFont::Range& range : font.Ranges())
    FUZZ_CHECK(font.Find(range.first) && font.Find(range.last));
  const auto quads = font.Layout("\x01 Az09\xff");
  FUZZ_CHECK(quads.position.size() == quads.texCoord.size());
}
