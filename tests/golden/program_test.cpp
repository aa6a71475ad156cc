#include "foundation/qfile.h"
#include "fuzzing/cg.h"
#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "golden/glwindow.h"
#include "platform/qcgcache.h"
#include "platform/qcgcompiler.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <array>
#include <epoxy/gl.h>
#include <filesystem>
#include <fstream>
#include <functional>

namespace {

void Write(const std::string& path, const std::string& text)
{
  std::ofstream(path) << text;
}

std::string Print(const DCompiledProgram& program)
{
  return program.listing + "\n" + program.code;
}

class Programs : public testing::Test
{
protected:
  Programs() : window(8, 8)
  {
    DGlobals().programsOn = true;
    DGlobals().programCompiler = QCgCompiler({});
    manager.Init();
  }
  ~Programs() override
  {
    manager.Clear();
    DGlobals().programsOn = false;
    DGlobals().programCompiler = {};
  }
  int Make(DProgramStage stage, const std::string& text)
  {
    const std::string file = root.Path() + "/p" + std::to_string(++files) + ".cg";
    Write(file, text);
    return manager.MakeObject(stage, file);
  }
  TempDir root;
  GlWindow window;
  DGPUShaderManager manager;
  int files = 0;
};

struct Snippet
{
  const char* name;
  DProgramStage stage;
  const char* text;
};

constexpr auto V = DProgramStage::VERTEX;
constexpr auto F = DProgramStage::FRAGMENT;

const Snippet SNIPPETS[] = {
    {"structs", V,
     "struct I { float4 p : POSITION; float2 t : TEXCOORD0; }; struct O { float4 p : HPOS; float4 c : COL0; float2 t : "
     "TEX0; }; O main(I i, uniform float4x4 modelViewProj) { O o; o.p = mul(modelViewProj, i.p); o.c = i.p; o.t = i.t; "
     "return o; }"},
    {"globals", V,
     "uniform float4x4 modelViewProj; float shift = 0.5; void main(float4 p : POSITION, out float4 o : POSITION) { o = "
     "mul(modelViewProj, p) + shift; }"},
    {"inout position", V, "void main(inout float4 p : POSITION, uniform float4x4 m) { p = mul(m, p); }"},
    {"state", V,
     "void main(float4 p : POSITION, float3 n : NORMAL, out float4 o : POSITION, out float4 c : COLOR, uniform "
     "float4x4 "
     "mvp : state.matrix.mvp) { o = mul(mvp, p); c = glstate.material.diffuse * glstate.light[0].diffuse; c.xyz += "
     "mul((float3x3)glstate.matrix.invtrans.modelview[0], n); c.a = glstate.material.shininess.x; }"},
    {"tangent", V,
     "void main(float4 p : POSITION, float4 tangent : TANGENT, out float4 o : POSITION, out float3 t : TEXCOORD5) { o "
     "= "
     "p; t = tangent.xyz * tangent.w; }"},
    {"bones", V,
     "uniform float4 boneMatrixArray[30]; void main(float4 p : POSITION, float4 w : BLENDWEIGHT, float4 b : "
     "BLENDINDICES, out float4 o : POSITION) { int i = (int)b.x; o = float4(dot(boneMatrixArray[i], p), "
     "dot(boneMatrixArray[i + 1], p), dot(boneMatrixArray[i + 2], p), 1) * w.x; }"},
    {"fog and point size", V,
     "void main(float4 p : POSITION, out float4 o : POSITION, out float f : FOG, out float s : PSIZE) { o = p; f = "
     "p.z; "
     "s = 2.0; }"},
    {"varying of its own", V,
     "void main(float4 p : POSITION, out float4 o : POSITION, out float3 n : NORMAL) { o = p; n = p.xyz; }"},
    {"halves and fixed", F,
     "fixed4 main(half4 c : COLOR, fixed2 t : TEXCOORD0, uniform fixed bright) : COLOR { fixed3 x = (fixed3)c.rgb * "
     "bright; half h = t.x; return fixed4(x, h); }"},
    {"samplers", F,
     "uniform sampler2D a : TEXUNIT1; uniform samplerCUBE b; uniform sampler3D d; uniform sampler1D e; float4 "
     "main(float3 t : TEXCOORD0) : COLOR { return tex2D(a, t.xy) + texCUBE(b, t) + tex3D(d, t) + tex1D(e, t.x); }"},
    {"projected and levels", F,
     "float4 main(float4 t : TEXCOORD0, uniform sampler2D a) : COLOR { return tex2Dproj(a, t) + tex2Dproj(a, t.xyw) + "
     "tex2Dbias(a, t) + tex2Dlod(a, t); }"},
    {"sampler state", F,
     "sampler2D a = sampler_state { minFilter = LinearMipMapLinear; wrapS = Repeat; }; float4 main(float2 t : "
     "TEXCOORD0) "
     ": COLOR { return tex2D(a, t); }"},
    {"sampler argument", F,
     "float3 look(uniform sampler2D s, float2 t) { return tex2D(s, t).rgb; } float4 main(float2 t : TEXCOORD0, uniform "
     "sampler2D a) : COLOR { return float4(look(a, t), 1); }"},
    {"pixel position and face", F,
     "float4 main(float4 p : WPOS, float f : FACE) : COLOR { return f > 0 ? p / 100.0 : float4(0); }"},
    {"two targets and depth", F,
     "void main(float4 c : COLOR, out float4 a : COLOR0, out float4 b : COLOR1, out float d : DEPTH) { a = c; b = "
     "c.bgra; "
     "d = 0.5; }"},
    {"flags", F,
     "uniform bool wet; bool IsDark(float x) { return x < 0.5; } float4 main(float4 c : COLOR) : COLOR { if (wet && "
     "IsDark(c.r)) discard; return c; }"},
    {"loops and arrays", F,
     "uniform float3 lights[4]; uniform int activeLights; float4 main(float4 c : COLOR) : COLOR { float3 s = 0; for "
     "(int "
     "i = 0; i < 4; i++) if (i < activeLights) s += lights[i]; while (s.x > 2.0) s *= 0.5; return float4(s, c.a); }"},
    {"functions", F,
     "float4 main(float4 c : COLOR) : COLOR { float3 n = normalize(c.xyz); float s, k; sincos(c.x, s, k); float4 l = "
     "lit(c.x, c.y, c.z); return float4(lerp(n, reflect(n, c.xyz), saturate(s * k)), l.z) + smoothstep(0, 1, c.w) + "
     "frac(c.y) + clamp(c.z, 0, 1) + rsqrt(abs(c.x) + 1) + log2(c.y + 2) + fmod(c.x, 2) + ddx(c.x) + step(0.5, c.y) + "
     "length(cross(n, c.xyz)) + distance(n, c.xyz) + any(c > 0.5); }"},
    {"constants", F,
     "static const float3 LUMA = float3(0.3, 0.59, 0.11); const float HALF = 0.5; float4 main(float4 c : COLOR) : "
     "COLOR { "
     "return dot(c.rgb, LUMA) * HALF; }"},
    {"matrix parts", F,
     "uniform float3x3 m; float4 main(float3 c : TEXCOORD1) : COLOR { float3 r = m[1]; return float4(mul(m, c) + "
     "mul(c, m) "
     "+ r * m[0][2] + transpose(m)[0] + m._m00, 1); }"},
    {"preprocessor", F,
     "#define SCALE(x) ((x) * 2.0)\n#if defined(IS_PAVEX) && !defined(CSM)\nfloat4 main(float4 c : COLOR) : COLOR { "
     "return "
     "SCALE(c); }\n#else\n#error wrong\n#endif\n"},
};

} // namespace

TEST_F(Programs, CompilesAndLinksWhatTracksUse)
{
  if (!window.IsOpen())
    GTEST_SKIP() << "no OpenGL here";
  manager.AddCompilerOption("-DIS_PAVEX");
  for (const Snippet& s : SNIPPETS) {
    const int ref = Make(s.stage, s.text);
    EXPECT_NE(0, ref) << s.name;
    if (!ref)
      continue;
    manager.Release();
    manager.Bind(ref);
    EXPECT_NE(nullptr, manager.GetLink()) << s.name << Print(manager.GetGPUShader(ref)->GetProgram());
    EXPECT_EQ(0, window.TakeErrors()) << s.name;
  }
}

TEST_F(Programs, ShippedOnesForEveryOption)
{
  if (!window.IsOpen())
    GTEST_SKIP() << "no OpenGL here";
  const std::vector<std::vector<std::string>> sets = {
      {},
      {"-DIS_PAVEX", "-DUSE_CUBEMAP_MIPMAPS", "-O3", "-nofastmath", "-bestprecision"},
      {"-DCSM", "-DATI", "-DCSM_BLUR", "-DFAST", "-DREVERSED_Z", "-DSURROUND_METHOD_SPLIT", "-DTEXDMG_CHANGE_VERTS"}};
  for (const auto& options : sets) {
    manager.Clear();
    manager.Init();
    for (const std::string& option : options)
      manager.AddCompilerOption(option);
    int found = 0;
    for (const auto& entry : std::filesystem::directory_iterator(PAVEX_SOURCE_DIR "/data/renderer/shaders")) {
      const std::string name = entry.path().stem().string();
      if (name == "common")
        continue;
      ++found;
      const int ref = manager.MakeObject(name.ends_with("_v") ? V : F, entry.path().string());
      ASSERT_NE(0, ref) << name;
      manager.Release();
      manager.Bind(ref);
      EXPECT_NE(nullptr, manager.GetLink()) << name;
    }
    EXPECT_GE(found, 16);
  }
}

// What a pixel of a square over the whole window is, in 255ths.
class Pixels : public Programs
{
protected:
  std::array<int, 4> Paint(int vertex, int fragment, const std::function<void(const DGPULink&)>& set)
  {
    manager.Release();
    if (vertex)
      manager.Bind(vertex);
    if (fragment)
      manager.Bind(fragment);
    const DGPULink* link = manager.GetLink();
    EXPECT_NE(nullptr, link);
    if (!link)
      return {};
    glUseProgram(link->GetProgram());
    set(*link);
    glBegin(GL_TRIANGLE_STRIP);
    for (const auto& [x, y] : {std::pair(-1.0f, -1.0f), {1.0f, -1.0f}, {-1.0f, 1.0f}, {1.0f, 1.0f}}) {
      glColor4f(0.2f, 0.4f, 0.6f, 1);
      glTexCoord2f(0.5f, 0.25f);
      glVertex3f(x, y, 0);
    }
    glEnd();
    glUseProgram(0);
    EXPECT_EQ(0, window.TakeErrors());
    const uint8_t* p = reinterpret_cast<const uint8_t*>(window.Picture().GetBuffer());
    return {p[0], p[1], p[2], p[3]};
  }
};

TEST_F(Pixels, ShowParametersAsTheyWereSet)
{
  if (!window.IsOpen())
    GTEST_SKIP() << "no OpenGL here";
  using enum DGPUParameter;
  const int vertex =
      Make(V, "void main(float4 p : POSITION, uniform float3 center, out float4 o : POSITION, out float3 "
              "c : TEXCOORD3) { o = p; c = center; }");
  const int fragment = Make(
      F, "float4 main(float3 c : TEXCOORD3, uniform float4x4 modelMatrix, uniform float3x3 modelViewIT, uniform "
         "float alpha = 0.8, uniform int activeLights, uniform float3 center) : COLOR { return "
         "float4(mul(modelMatrix, float4(0, 1, 0, 0)).x, mul(modelViewIT, float3(0, 0, 1)).y + activeLights * 0.1, "
         "c.z * alpha * center.x, 1); }");
  DMatrix4 model(0.0f);
  model[1] = DVector4(0.2f, 0.9f, 0.9f, 0.9f); // where the y axis goes
  DMatrix4 turn(0.0f);
  turn[2] = DVector4(0.9f, 0.4f, 0.9f, 0);
  const auto pixel = Paint(vertex, fragment, [&](const DGPULink& link) {
    EXPECT_TRUE(link.Has(alpha) && link.Has(center));
    EXPECT_FALSE(link.Has(fogColor));
    link.Set(modelMatrix, model);
    link.Set(modelViewIT, turn);
    link.Set(activeLights, 2.0f);
    link.Set(center, DVector3(0.5f, 0, 1));
    link.Set(fogColor, DVector3(1));
  });
  EXPECT_NEAR(51, pixel[0], 1);
  EXPECT_NEAR(153, pixel[1], 1);
  EXPECT_NEAR(102, pixel[2], 1);
}

TEST_F(Pixels, GoWithTheFixedPipelineOfTheOtherStage)
{
  if (!window.IsOpen())
    GTEST_SKIP() << "no OpenGL here";
  const int fragment =
      Make(F, "float4 main(float4 c : COLOR, float2 t : TEXCOORD0) : COLOR { return float4(c.r, t.x, t.y, 1); }");
  const auto none = [](const DGPULink&) {};
  EXPECT_EQ((std::array{51, 128, 64, 255}), Paint(0, fragment, none));
  const int vertex =
      Make(V, "void main(float4 p : POSITION, out float4 o : POSITION, out float4 c : COLOR) { o = p; c = "
              "float4(1, 0.6, 0, 1); }");
  EXPECT_EQ((std::array{255, 153, 0, 255}), Paint(vertex, 0, none));
}

TEST_F(Programs, FailuresAreToldOnceWithFileAndLine)
{
  if (!window.IsOpen())
    GTEST_SKIP() << "no OpenGL here";
  ReportCapture reports;
  Write(root.Path() + "/inc.cg", "float4 Tint(float4 c)\n{\n  return c * undefined;\n}\n");
  const std::string file = root.Path() + "/bad.cg";
  Write(file, "#include \"inc.cg\"\nfloat4 main(float4 c : COLOR) : COLOR\n{\n  return Tint(c);\n}\n");
  EXPECT_EQ(0, manager.MakeObject(F, file));
  EXPECT_TRUE(reports.Contains("DGPUShaderManager:MakeObject(" + file + "): can't create CG fragment shader program"));
  EXPECT_TRUE(reports.Contains("inc.cg:3:")) << reports.All();
  const int told = reports.Problems();
  EXPECT_EQ(0, manager.MakeObject(F, file));
  EXPECT_EQ(told, reports.Problems());
  // Mended, it is there after a reload; spoilt again, what was there stays.
  Write(root.Path() + "/inc.cg", "float4 Tint(float4 c) { return c; }\n");
  manager.Reload(file);
  const int ref = manager.MakeObject(F, file);
  ASSERT_NE(0, ref);
  Write(root.Path() + "/inc.cg", "float4 Tint(float4 c) { return c }\n");
  manager.Reload(file);
  EXPECT_TRUE(reports.Contains("Could not load new shader (" + file + "). Torvik will continue with the last working"));
  EXPECT_TRUE(manager.GetGPUShader(ref)->IsLoaded());
  for (const char* text :
       {"", "struct", "float4 main(", "void main(float4 c : COLOR { }", "float x[", "glstate.",
        "float4 main() : COLOR { return glstate.nothing.x; }", "struct A { struct A a; }; A main() {}",
        "#include \"none.cg\"\n", "float4 main(float4 c : COLOR) : NORMAL { return c; }"})
    EXPECT_EQ(0, Make(F, text)) << text;
}

TEST_F(Programs, TableOfThem)
{
  ReportCapture reports;
  EXPECT_EQ(nullptr, manager.GetGPUShader(1));
  EXPECT_TRUE(reports.Contains("DGPUShaderManager:GetGPUShader(ref=1) out of range"));
  manager.Bind(0);
  EXPECT_TRUE(reports.Contains("DGPUShaderManager:Bind(0) is not accepted"));
  manager.Init();
  EXPECT_TRUE(reports.Contains("DGPUShaderManager:Init() called twice"));
  for (int i = 0; i < DGPUShaderManager::MAX_OPTIONS; ++i)
    manager.AddCompilerOption("-DX" + std::to_string(i));
  EXPECT_FALSE(reports.Contains("out of space"));
  manager.AddCompilerOption("-DONE_MORE");
  EXPECT_TRUE(reports.Contains("DGPUShaderManager:AddCompilerOption(-DONE_MORE) out of space"));
  const int ref =
      Make(F, "float4 main(uniform int Annotations < int adjacency = 1; int vertOut = 0; >) : COLOR { return "
              "float4(1); }");
  ASSERT_NE(0, ref);
  EXPECT_TRUE(manager.GetGPUShader(ref)->WantsAdjacency());
  EXPECT_EQ(3, manager.GetGPUShader(ref)->VertexOut());
}

TEST(ProgramCache, GivesBackWhatIsWholeAndNothingElse)
{
  TempDir root;
  const QCgCache cache(root.Path() + "/new/programs");
  DCompiledProgram program;
  program.code = "code";
  program.parameters = {{"tint", "fp.tint", false, -1, {0.5f, 1}}, {"map", "fp_map", true, 3, {}}};
  program.attributes = {{"cga_TANGENT", 14}};
  program.annotations = {{"vertOut", 6}};
  EXPECT_FALSE(cache.Find("source"));
  cache.Keep("source", program);
  const auto kept = cache.Find("source");
  ASSERT_TRUE(kept);
  EXPECT_EQ("code", kept->code);
  ASSERT_EQ(2u, kept->parameters.size());
  EXPECT_EQ((std::vector<float>{0.5f, 1}), kept->parameters[0].initial);
  EXPECT_EQ(3, kept->parameters[1].unit);
  EXPECT_EQ(14, kept->attributes.at(0).location);
  EXPECT_EQ(6, kept->annotations.at(0).second);
  EXPECT_FALSE(cache.Find("sourcf"));
  const std::string file = std::filesystem::directory_iterator(root.Path() + "/new/programs")->path().string();
  std::string content;
  ASSERT_TRUE(QReadFile(file, content));
  for (size_t i = 0; i < content.size(); ++i) {
    std::string broken = content;
    broken[i] = static_cast<char>(broken[i] ^ 1);
    Write(file, broken);
    EXPECT_FALSE(cache.Find("source")) << i;
    Write(file, content.substr(0, i));
    EXPECT_FALSE(cache.Find("source")) << i;
  }
}

TEST(ProgramCache, SparesCompilation)
{
  TempDir root;
  const std::string file = root.Path() + "/a.cg";
  Write(file, "float4 main(float4 c : COLOR) : COLOR { return c * BRIGHT; }");
  const DProgramCompiler compiler = QCgCompiler(root.Path() + "/cache");
  const std::vector<std::string> options = {"-DBRIGHT=0.5"}, others = {"-DBRIGHT=0.25"};
  const std::string code = compiler.compile(F, file, options).code;
  ASSERT_NE("", code);
  EXPECT_NE(code, compiler.compile(F, file, others).code);
  EXPECT_EQ(code, compiler.compile(F, file, options).code);
  const auto entries = std::filesystem::directory_iterator(root.Path() + "/cache");
  EXPECT_EQ(2, std::distance(begin(entries), end(entries)));
}

TEST(CgSource, FuzzCorpus)
{
  for (const auto& entry : std::filesystem::directory_iterator(PAVEX_SOURCE_DIR "/fuzzing/corpus/cg")) {
    SCOPED_TRACE(entry.path().string());
    std::string content;
    ASSERT_TRUE(QReadFile(entry.path().string(), content));
    FuzzCg(content);
  }
}
