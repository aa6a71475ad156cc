#include "foundation/qbitmap.h"
#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "geometry/dshader.h"
#include "geometry/dshaderloader.h"
#include "geometry/dtexture.h"
#include "geometry/dworld.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

namespace {

class ShaderLoad : public testing::Test
{
protected:
  void SetUp() override { DResetGlobals(); }
  void TearDown() override { DResetGlobals(); }
  // A shader of these lines; textures aren't looked for.
  DShader Parsed(const std::string& lines)
  {
    reports.Clear();
    QInfo info("test.shd", QInfo::NO_READ);
    info.ReadFromText("shader_s\n{\n" + lines + "\n}\n");
    DShader shader;
    shader.name = "s";
    EXPECT_TRUE(DShaderLoader::Parse(info, "shader_s", shader, "", false));
    return shader;
  }
  static std::string Layer(int n, const std::string& lines)
  {
    return "layer" + std::to_string(n) + "\n{\nmap=a.tga\n" + lines + "\n}\n";
  }
  ReportCapture reports;
};

TEST_F(ShaderLoad, ShaderKeys)
{
  const struct
  {
    const char* lines;
    uint32_t flags; // beside FROM_FILE
    int sortKey;
  } cases[] = {
      {"", 0x109, 300},
      {"cull=", 0x109, 300},
      {"cull=front\nfog=0\nmotion_blur=0", 0x2, 300},
      {"cull=disable\ntangents=1\natlas=0\ncast_shadow=1", 0x2B08, 300},
      {"sky=1\nsort_offset=5", 0x119, 205},
      {"water=1\nsort_offset=5", 0x1109, 350},
      {"sort_offset=-7", 0x109, 293},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.lines);
    const DShader s = Parsed(c.lines + std::string("\n") + Layer(0, ""));
    EXPECT_EQ(c.flags | DShader::FROM_FILE, s.shaderFlags);
    EXPECT_EQ(c.sortKey, s.sortKey);
    EXPECT_EQ(0, reports.Problems()) << reports.All();
  }
  Parsed("cull=left\n" + Layer(0, ""));
  EXPECT_TRUE(reports.Contains("DShaderLoader: cull arg 'left' unknown"));
}

TEST_F(ShaderLoad, LayerDefaults)
{
  const DShader s = Parsed(Layer(0, ""));
  const DShaderLayer& l = s.layer.at(0);
  EXPECT_EQ(DShaderLayer::MIPMAP | DShaderLayer::COMPRESSION | DShaderLayer::DEPTH_WRITE | DShaderLayer::CACHEABLE,
            l.flags & 0x9019Du);
  EXPECT_EQ(unsigned{GL_LINEAR_MIPMAP_LINEAR}, l.minFilter);
  EXPECT_EQ(unsigned{GL_LINEAR}, l.magFilter);
  EXPECT_EQ(unsigned{GL_MODULATE}, l.texEnv);
  EXPECT_EQ(unsigned{GL_LEQUAL}, l.depthFunc);
  EXPECT_EQ("srgb", l.mode);
  EXPECT_EQ("dyn_standard_v.cg", s.vertexFile);
}

TEST_F(ShaderLoad, BlendingAndSorting)
{
  const struct
  {
    const char* line;
    bool on;
    unsigned src, dst;
    int sortKey;
    const char* report;
  } cases[] = {
      {"", false, GL_ONE, GL_ZERO, 300, nullptr},
      {"blendfunc=blend  ", true, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, 600, nullptr},
      {"blendfunc=filter", true, GL_ZERO, GL_SRC_COLOR, 600, nullptr},
      {"blendfunc=dst_color zero", true, GL_DST_COLOR, GL_ZERO, 600, nullptr},
      {"blendfunc=one one", true, GL_ONE, GL_ONE, 300, nullptr},
      {"blendfunc=blend\nalphafunc=gequal 128", true, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, 500, nullptr},
      {"blendfunc=zero", true, GL_ONE, GL_ZERO, 300, "Bad blendfunc; need source & dest parameter"},
      {"blendfunc=zero odd", true, GL_ZERO, GL_ONE, 600, "DShaderLoader: blendfunc 'odd' unknown"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const DShader s = Parsed(Layer(0, c.line));
    const DShaderLayer& l = s.layer.at(0);
    EXPECT_EQ(c.on, (l.flags & DShaderLayer::BLENDING) != 0);
    EXPECT_EQ(c.src, l.blendSrc);
    EXPECT_EQ(c.dst, l.blendDst);
    EXPECT_EQ(c.sortKey, s.sortKey);
    EXPECT_EQ(c.report ? 1 : 0, reports.Problems()) << reports.All();
    EXPECT_TRUE(!c.report || reports.Contains(c.report)) << reports.All();
  }
}

TEST_F(ShaderLoad, AlphaTest)
{
  const struct
  {
    const char* value;
    bool test;
    unsigned func;
    float ref;
    const char* report;
  } cases[] = {
      {"gequal 128", true, GL_GEQUAL, 128 / 255.0f, nullptr},
      {"always", false, GL_ALWAYS, 0, nullptr},
      {"none", false, GL_ALWAYS, 0, nullptr},
      {"never 20", false, GL_NEVER, 20 / 255.0f, nullptr},
      {"gequal", false, GL_GEQUAL, 0, "Alpha func syntax error (gequal)"},
      {"gequal 300", false, GL_GEQUAL, 0, "Alpha reference value (300) out of range 0..255"},
      {"gequal nan", false, GL_GEQUAL, 0, "out of range 0..255"},
      {"most 3", true, GL_LEQUAL, 3 / 255.0f, "DShaderLoader: depth or alphafunc arg 'most' unknown"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    const DShader s = Parsed(Layer(0, std::string("alphafunc=") + c.value));
    EXPECT_EQ(c.test, (s.layer.at(0).flags & DShaderLayer::ALPHA_TEST) != 0);
    EXPECT_EQ(c.func, s.layer[0].alphaFunc);
    EXPECT_FLOAT_EQ(c.ref, s.layer[0].alphaRef);
    EXPECT_EQ(c.report ? 1 : 0, reports.Problems()) << reports.All();
    EXPECT_TRUE(!c.report || reports.Contains(c.report)) << reports.All();
  }
}

TEST_F(ShaderLoad, LaterLayersTakeOverFromTheOneBefore)
{
  const std::string lines = "diffuse=0.5 0.5 0.5\nambient=0.1 0.1 0.1 0.1\n" +
                            Layer(0, "depthfunc=always\nalphafunc=less 255\nblendfunc=dst_color zero") +
                            Layer(1, "ambient=1 0 0 1\nreflect=0.25") + Layer(3, "");
  DShader s = Parsed(lines);
  ASSERT_EQ(2, s.LayerCount()); // layer2 is missing
  EXPECT_EQ(unsigned{GL_ALWAYS}, s.layer[1].depthFunc);
  EXPECT_TRUE(s.layer[1].flags & DShaderLayer::NO_DEPTH_TEST);
  EXPECT_EQ(unsigned{GL_LESS}, s.layer[1].alphaFunc);
  EXPECT_EQ(unsigned{GL_SRC_ALPHA}, s.layer[1].blendSrc);
  EXPECT_TRUE(reports.Contains("DShaderLoader: s has no blendfunc for layer 1; implicitly added"));
  EXPECT_EQ(DVector4(0.5f, 0.5f, 0.5f, 1), s.layer[1].diffuse);
  EXPECT_EQ(DVector4(0.1f), s.layer[0].ambient);
  EXPECT_EQ(DVector4(1, 0, 0, 1), s.layer[1].ambient);
  EXPECT_EQ(0.25f, s.layer[1].reflect);

  DGlobals().programsOn = DGlobals().requirePrograms = true;
  DGlobals().programCompiler.compile = [](DProgramStage stage, const std::string& file, std::span<const std::string>) {
    DCompiledProgram program;
    program.code = file == "data/renderer/shaders/standard_f.cg" ? "" : "code";
    if (stage == DProgramStage::VERTEX)
      program.annotations = {{"adjacency", 1}};
    return program;
  };
  s = Parsed("fragment_shader\n{\nfile=own_f.cg\n}\n" + lines);
  EXPECT_EQ(unsigned{GL_DST_COLOR}, s.layer[1].blendSrc);
  EXPECT_FALSE(reports.Contains("implicitly added"));
  EXPECT_TRUE(s.shaderFlags & DShader::HAS_ADJACENCY);
  EXPECT_FALSE(reports.Contains("doesn't have a"));
  s = Parsed(lines); // its program can't be compiled
  EXPECT_TRUE(reports.Contains("implicitly added"));
  EXPECT_TRUE(reports.Contains("Shader 's' doesn't have a fragment shader"));
  DTheGPUShaders().Clear();
  EXPECT_EQ(DVector4(0.5f, 0.5f, 0.5f, 1), Parsed("diffuse=0.5 0.5 0.5\n" + Layer(0, "")).layer[0].ambient);
}

TEST_F(ShaderLoad, BadValuesGetTheirDefault)
{
  const struct
  {
    const char* line;
    const char* report;
  } cases[] = {
      {"mag_filter=linear_mipmap_nearest", "DShaderLoader: filter arg 'linear_mipmap_nearest' unknown"},
      {"wrap_t=mirror", "DShaderLoader: wrap 'mirror' unknown (must be repeat, clamp or clamp_to_edge)"},
      {"texenv=add", "DShaderLoader: texenv arg 'add' unknown"},
      {"texgen_r=sphere_map", "Shader s: sphere_map only allowed for texgen_s and _t"},
      {"mode=gamma", "unrecognized ('gamma'; use srgb or linear)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const DShader s = Parsed(Layer(0, c.line));
    EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    ASSERT_EQ(1, s.LayerCount());
    EXPECT_EQ("srgb", s.layer[0].mode);
    EXPECT_EQ(unsigned{GL_REPEAT}, s.layer[0].wrapT);
    EXPECT_EQ(unsigned{GL_MODULATE}, s.layer[0].texEnv);
    EXPECT_EQ(0u, s.layer[0].texGen[2]);
  }
  EXPECT_EQ(0, Parsed("scale=2").LayerCount());
  EXPECT_TRUE(reports.Contains("has no layer0; we need at least one layer"));
  EXPECT_EQ(0, Parsed("layer0\n{\nmode=srgb\n}").LayerCount());
  EXPECT_TRUE(reports.Contains("Shader s: no layers defined (need layer0.map)"));
}

TEST_F(ShaderLoad, WorldReadsAFileAndReadsItAgain)
{
  const TempDir dir;
  const InDirectory here(dir.Path());
  const char* text = "vf_standard\n{\nscale=3\n}\nshader_Wall~vf_standard\n{\nlayer0\n{\nmap=wall.tga\n}\n}\n"
                     "shader_env\n{\nlayer0\n{\nmap=$mirror\n}\n}\n";
  dir.Write("cars/Ford/skin01/car.shd", text);
  ASSERT_TRUE(QBitMap(32, 4, 2).Write(dir.Path("cars/Ford/skin01/wall.tga").c_str(), QBitMap::TGA));
  DWorld world;
  ASSERT_TRUE(world.LoadShaders("cars/Ford/skin01/car.shd"));
  ASSERT_EQ(2, world.ShaderCount());
  DShader* wall = world.FindShader("skin0/cars/ford/wall"); // all skins share one key space
  ASSERT_NE(nullptr, wall);
  EXPECT_EQ(3, wall->scale);
  ASSERT_EQ(1, wall->LayerCount());
  EXPECT_STREQ("wall.tga", wall->layer[0].texture->GetName());
  EXPECT_EQ(4, wall->layer[0].texture->width);
  EXPECT_TRUE(reports.Contains("DShaderLoader: could not resolve $mirror"));
  EXPECT_NE(nullptr, world.FindShader("skin0/cars/ford/env")->layer[0].texture);

  dir.Write("cars/Ford/skin01/car.shd", "shader_wall\n{\ncull=none\nlayer0\n{\nmap=gone.tga\n}\n}\n");
  ASSERT_TRUE(world.LoadShaders("cars/Ford/skin01/car.shd"));
  EXPECT_EQ(2, world.ShaderCount());
  EXPECT_EQ(wall, world.FindShader("skin0/cars/ford/wall"));
  EXPECT_EQ(1, wall->scale);
  EXPECT_TRUE(reports.Contains("Image 'gone.tga' not found for shader skin0/cars/ford/wall"));
  EXPECT_NE(nullptr, wall->layer[0].texture);
  EXPECT_FALSE(world.LoadShaders("none.shd"));
}

TEST_F(ShaderLoad, WorldTakesEachGeob)
{
  DWorld world;
  DGeode geode("g");
  geode.AddMaterial();
  for (int i = 0; i < 3; ++i)
    geode.AddGeob()->AddBurst({});
  geode.geob[1]->burst.clear();
  DWorldObject* first = world.Add(&geode);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(geode.geob[0].get(), first->geob);
  EXPECT_EQ(0x10000u, first->flags);
  EXPECT_EQ(3, world.Objects().Count());
  EXPECT_TRUE(reports.Contains("DWorld:Add(geode g); no bursts for geob 1"));
  EXPECT_EQ(1, reports.Count("No texture for geob 0 (geode g)"));
  EXPECT_STREQ("q_generated", geode.material[0]->texture[0]->GetName());
  world.Remove(&geode);
  EXPECT_EQ(0, world.Objects().Count());
}

} // namespace

TEST_F(ShaderLoad, WrittenOnesReadTheSame)
{
  const DShader s =
      Parsed("cull=front\nsky=1\nscale=2\nbounce_alpha=0.5\ntangents=1\natlas=0\n"
             "vertex_shader\n{\nfile=v.cg\n}\nfragment_shader\n{\nfile=f.cg\n}\n" +
             Layer(0, "alphafunc=gequal 128\nwrap_t=clamp\ndiffuse=1 0.5 0.25\nshininess=7\nreflect=0.5") +
             Layer(1, "mode=linear\nblendfunc=filter\ndepthwrite=0\ndepthfunc=always"));
  const std::string text = s.Text();
  EXPECT_EQ(
      0u,
      text.find("shader_s\n{\n  vertex_shader\n  {\n    file=v.cg\n  }\n  fragment_shader\n  {\n    file=f.cg\n  }\n"
                "  sky=1\n  scale=2.000000\n  bounce_amount=1.000000\n  bounce_alpha=0.500000\n  cull=front\n"
                "  cast_shadow=0\n  tangents=1\n  atlas=0\n  layer0\n  {\n    map=a.tga\n    compression=1\n"
                "    alpha_to_coverage=0\n    alphafunc=gequal 128\n    depthfunc=lequal\n    depthwrite=1\n"
                "    blendfunc=one zero\n    wrap_s=repeat\n    wrap_t=clamp\n"))
      << text;
  const std::string body = s.Text(true);
  EXPECT_EQ(text, "shader_s\n{\n" + body + "}\n");
  EXPECT_EQ(text, Parsed(body).Text());
}

// The six of a cube, a table of floats, a picture whose magenta is clear: each by its name.
TEST_F(ShaderLoad, NamesOfMapsChooseTheTexture)
{
  TempDir dir;
  const InDirectory inside(dir.Path());
  QBitMap picture(32, 2, 2);
  picture.Fill(nullptr, QColor(255, 0, 255));
  for (const char* side : {"rt", "lt", "up", "dn", "bk", "ft"})
    ASSERT_TRUE(picture.Write((std::string("sky_") + side + ".tga").c_str(), QBitMap::TGA));
  dir.Write("t/transmittance.f32", std::string(0x30000, '\0'));
  dir.Write("t/other.f32", "x");
  const struct
  {
    const char* map;
    const char* type;
    int wid;
    const char* report;
  } cases[] = {{"sky*.tga", "cubeMap", 2, nullptr},
               {"t/transmittance.f32", "texture2D", 256, nullptr},
               {"t/inscatter.f32", "3dTexture", 0, "DTexture3D(t/inscatter.f32); can't open file"},
               {"t/other.f32", "bitmapTexture", 1, "Unknown hardcoded F32 file"},
               {"gone.dds", "bitmapTexture", 2, "Image 'gone.dds' loading failed (not found?) for shader s"},
               {"gone.tga", "bitmapTexture", 2, "Image 'gone.tga' not found for shader s"},
               {"$mirror", "bitmapTexture", 1, "No '$mirror' texture was created (shader 's')"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.map);
    reports.Clear();
    DShader shader;
    shader.name = "s";
    QInfo info("test.shd", QInfo::NO_READ);
    info.ReadFromText(std::string("shader_s\n{\nlayer0\n{\nmap=") + c.map + "\n}\n}\n");
    EXPECT_TRUE(DShaderLoader::Parse(info, "shader_s", shader));
    ASSERT_TRUE(shader.layer.at(0).texture);
    EXPECT_STREQ(c.type, shader.layer[0].texture->GetTypeName());
    EXPECT_EQ(c.wid, shader.layer[0].texture->width);
    EXPECT_TRUE(!c.report || reports.Contains(c.report)) << reports.All();
  }
}
