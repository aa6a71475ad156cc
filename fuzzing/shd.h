#pragma once

#include "foundation/qinfo.h"
#include "fuzzing/check.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dshaderloader.h"

#include <string>
#include <string_view>

// Any text as a shader file; what a shader is written as reads as the same shader.
inline void FuzzShd(std::string_view input)
{
  const QuietReports quiet;
  QInfo info("fuzz.shd", QInfo::NO_READ);
  info.ReadFromText(input);
  for (const QInfoNode* node = info.Root()->FirstChild(); node; node = node->Next()) {
    if (node->type != QInfoNode::TREE || !node->Name().starts_with("shader_"))
      continue;
    DShader shader, again;
    DShaderLoader::Parse(info, std::string(node->Name()), shader, {}, false);
    FUZZ_CHECK(shader.LayerCount() <= DShader::MAX_LAYERS);
    shader.name = "s";
    QInfo written("written.shd", QInfo::NO_READ);
    written.ReadFromText(shader.Text());
    FUZZ_CHECK(DShaderLoader::Parse(written, "shader_s", again, {}, false));
  }
}
