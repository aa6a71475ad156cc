// A whole frame of the demo circuit by the software renderer, beside the bare OpenGL calls that draw the same picture:
// the same blocks in the same order from the same buffers, each state set only where it changes.
#include "app/demo/demo.h"
#include "foundation/qinfo.h"
#include "geometry/dgeob.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "golden/glwindow.h"
#include "scene/ddirector.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "support/tempdir.h"
#include "track/rtrackvrml.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>
#include <memory>
#include <vector>

namespace {

constexpr int WID = 1280, HGT = 800;

class Circuit
{
public:
  Circuit() : window(WID, HGT), inside(root.Path())
  {
    if (!window.IsOpen())
      return;
    DemoMain({"--root", root.Path()});
    world = std::make_unique<WorldScene>();
    world->LoadSettings(QInfo(PAVEX_SOURCE_DIR "/torvik.ini"), "renderer");
    world->GetRenderer()->SetPipe(&DThePipe());
    rail.AddCamera(&camera);
    director.AddRail(&rail);
    director.SetRail(0, 0);
    world->SetFrameport(0, &director, {0, 0, WID, HGT});
    track = std::make_unique<RTrackVRML>(RTrackHost{.scene = world.get()});
    track->SetName("lakeside");
    loaded = track->Load();
    camera.Go({14, 2.2f, 170}, DVector3(0.0f), -6, 4, 0);
    camera.SetFOV(60);
  }
  void Clear()
  {
    glDepthMask(GL_TRUE);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  }
  void Frame()
  {
    Clear();
    DThePipe().Invalidate();
    world->Paint();
    glFinish();
  }
  void Bare();

  TempDir root;
  GlWindow window;
  InDirectory inside;
  std::unique_ptr<WorldScene> world;
  DCameraAnimated camera;
  DRail rail;
  DDirector director;
  std::unique_ptr<RTrackVRML> track;
  bool loaded = false;
};

void SetShader(const DShader& shader, bool sky)
{
  const DShaderLayer& layer = shader.layer.front();
  const auto set = [](GLenum cap, bool on) { on ? glEnable(cap) : glDisable(cap); };
  if (layer.texture)
    layer.texture->Select();
  set(GL_TEXTURE_2D, layer.texture != nullptr);
  set(GL_CULL_FACE, shader.shaderFlags & (DShader::CULL_BACK | DShader::CULL_FRONT));
  set(GL_BLEND, layer.flags & DShaderLayer::BLENDING);
  glBlendFunc(layer.blendSrc, layer.blendDst);
  set(GL_ALPHA_TEST, layer.flags & DShaderLayer::ALPHA_TEST);
  glAlphaFunc(layer.alphaFunc, layer.alphaRef);
  set(GL_DEPTH_TEST, !sky);
  glDepthMask(!sky && layer.flags & DShaderLayer::DEPTH_WRITE);
  glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, glm::value_ptr(layer.ambient));
  glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, glm::value_ptr(layer.diffuse));
  glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, glm::value_ptr(layer.emission));
  const DVector4 specular = layer.shininess > 0 ? layer.specular : DVector4(0, 0, 0, 1);
  glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, glm::value_ptr(specular));
  glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<float>(layer.shininess));
  glColor4f(1, 1, 1, layer.diffuse.a);
}

void Circuit::Bare()
{
  Clear();
  const WorldRenderer& renderer = *world->GetRenderer();
  glMatrixMode(GL_PROJECTION);
  const DMatrix4 skyProjection = camera.GetProjection(100000.0f);
  bool isSkyProjection = true;
  glLoadMatrixf(glm::value_ptr(skyProjection));
  glMatrixMode(GL_MODELVIEW);
  glLoadMatrixf(glm::value_ptr(renderer.GetModelViewMatrix()));
  const DVector4 direction(DNormalized(world->sun.position), 0.0f);
  glLightfv(GL_LIGHT0, GL_POSITION, glm::value_ptr(direction));
  glEnableClientState(GL_VERTEX_ARRAY);
  glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  const DShader* last = nullptr;
  int arrays = -1;
  for (const RenderBlock& block : renderer.GetBlocks()) {
    const DGeob& geob = *block.geob;
    const bool sky = block.shader->IsSky() || geob.userFlags & 1;
    if (block.shader != last)
      SetShader(*block.shader, sky);
    last = block.shader;
    if (sky != isSkyProjection) {
      isSkyProjection = sky;
      glMatrixMode(GL_PROJECTION);
      glLoadMatrixf(glm::value_ptr(sky ? skyProjection : renderer.GetProjectionMatrix()));
      glMatrixMode(GL_MODELVIEW);
    }
    if (block.matrix) {
      glPushMatrix();
      glMultMatrixf(glm::value_ptr(*block.matrix));
    }
    const bool colored = !sky && geob.vertexColor.size() >= geob.vertex.size();
    const bool lit = !sky && !colored && geob.normal.size() >= geob.vertex.size();
    if (const int wanted = lit ? 2 : colored; wanted != arrays) {
      arrays = wanted;
      lit ? glEnable(GL_LIGHTING) : glDisable(GL_LIGHTING);
      lit ? glEnableClientState(GL_NORMAL_ARRAY) : glDisableClientState(GL_NORMAL_ARRAY);
      colored ? glEnableClientState(GL_COLOR_ARRAY) : glDisableClientState(GL_COLOR_ARRAY);
    }
    glBindBuffer(GL_ARRAY_BUFFER, geob.vertexBuffer);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    glBindBuffer(GL_ARRAY_BUFFER, geob.texCoordBuffer[0]);
    glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
    if (lit) {
      glBindBuffer(GL_ARRAY_BUFFER, geob.normalBuffer);
      glNormalPointer(GL_FLOAT, 0, nullptr);
    }
    if (colored) {
      glBindBuffer(GL_ARRAY_BUFFER, geob.colorBuffer);
      glColorPointer(3, GL_FLOAT, 0, nullptr);
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, geob.indexBuffer);
    glDrawElements(GL_TRIANGLES, block.indexCount, GL_UNSIGNED_SHORT,
                   static_cast<uint16_t*>(nullptr) + block.firstIndex);
    if (block.matrix)
      glPopMatrix();
  }
  glFinish();
}

// One circuit for all rows, by turns: the machine's speed drifts.
Circuit& TheCircuit()
{
  static Circuit circuit;
  return circuit;
}

void Frames(benchmark::State& state, void (Circuit::*frame)())
{
  Circuit& circuit = TheCircuit();
  if (!circuit.loaded) {
    state.SkipWithError("no software renderer");
    return;
  }
  for (int i = 0; i < 3; ++i)
    circuit.Frame(); // buffers and textures are there, and what it leaves set is the bare calls' start
  const QBitMap& picture = circuit.window.Picture();
  const std::vector<uint8_t> expected(picture.GetBuffer(), picture.GetBuffer() + picture.GetMemSize());
  (circuit.*frame)();
  const QBitMap& drawn = circuit.window.Picture();
  int different = 0;
  for (int i = 0; i < drawn.GetMemSize(); ++i)
    different += std::abs(drawn.GetBuffer()[i] - expected[static_cast<size_t>(i)]) > 2;
  circuit.Frame();
  for (auto _ : state)
    (circuit.*frame)();
  state.counters["blocks"] = static_cast<double>(circuit.world->GetRenderBlocks().size());
  state.counters["different bytes"] = different;
}
BENCHMARK_CAPTURE(Frames, whole, &Circuit::Frame)->Name("frame of the circuit: whole")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Frames, bare, &Circuit::Bare)->Name("floor: bare GL calls")->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
