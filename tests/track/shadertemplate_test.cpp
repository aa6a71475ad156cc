#include "geometry/dtexture.h"
#include "support/reportcapture.h"
#include "track/rshadertemplate.h"
#include "track/scenerymodel.h"
#include "track/smalltrack.h"

#include <gtest/gtest.h>

namespace {

DTexturePtr Texture(const char* name, bool transparent)
{
  auto texture = std::make_unique<DTexture>();
  if (name)
    texture->SetName(name);
  if (transparent)
    texture->flags |= DTexture::HAS_TRANSPARENCY;
  return texture;
}

std::string Entry(const std::string& name, const std::string& map, bool transparent)
{
  return "shader_" + name + (transparent ? "~vf_standard_transparent" : "~vf_standard") +
         "\n{\n  layer0\n  {\n    map=" + map + "\n" +
         (transparent ? "    ; Map has transparency so enable blending\n    alpha_to_coverage=1\n"
                        "    alphafunc=gequal 128\n    ; Real blending\n    ;blendfunc=blend\n    ;depthwrite=0\n"
                      : "") +
         "  }\n}\n";
}

} // namespace

TEST(ShaderTemplate, HasAnEntryForEachNameWithTheFirstPicture)
{
  ReportCapture reports;
  SmallTrack small;
  // Two pixels of 32 bits, one of them not to be seen.
  small.Write("hole.tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\1\0\40\10", 18) + std::string("abc\xff"
                                                                                                  "def\0",
                                                                                                  8));
  DShader own;
  own.layer.resize(1);
  own.layer[0].texture = Texture("own.tga", true);
  DShader stub; // as materials get that no shader file knows
  stub.layer.resize(1);
  stub.layer[0].texture = Texture(nullptr, false);
  DShader bare;

  std::vector<std::unique_ptr<RTrackNode>> nodes;
  const auto add = [&](const char* name, DTexturePtr texture, DShader* shader, const char* named = "") {
    nodes.push_back(SceneryNode(Square(0, 0, 0, 1), shader));
    DGeode& geode = *nodes.back()->Geode();
    geode.SetMapPath(small.Path().c_str());
    DMaterial& m = *geode.material[0];
    m.name = name;
    m.firstTextureName = named;
    if (texture)
      m.texture.push_back(std::move(texture));
  };
  add("road", Texture("road.tga", false), &own); // its own goes first
  add("tree", nullptr, &own);
  add("road", Texture("other.tga", true), nullptr);
  add("none", nullptr, nullptr);
  add("bare", nullptr, &bare);
  add("none", nullptr, nullptr);
  add("fence", nullptr, &stub, "hole.tga");
  add("gone", nullptr, &stub, "gone.tga");
  nodes.push_back(std::make_unique<RTrackNode>()); // without a model
  const std::string text = MakeShaderTemplate(nodes);
  EXPECT_TRUE(text.ends_with("; Torvik shaders\n;\n" + Entry("road", "road.tga", false) +
                             Entry("tree", "own.tga", true) +
                             ";shader_none (has no texture)\n;shader_bare (has no texture)\n"
                             ";shader_none (has no texture)\n" +
                             Entry("fence", "hole.tga", true) + Entry("gone", "gone.tga", false)))
      << text;
  EXPECT_EQ(text.size(), MakeShaderTemplate({}).size() + text.size() - text.find("shader_road"));
}
