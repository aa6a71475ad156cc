#include "scene/renderpainter.h"

#include "foundation/qreport.h"
#include "geometry/dgeob.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dshader.h"
#include "scene/worldrenderer.h"

#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <utility>

namespace {

constexpr uint32_t NODE_IS_SKY = 0x1; // the flags that a track's node hands down to its geobs
constexpr uint32_t NODE_COLLIDE = 0x2;
constexpr uint32_t NODE_SURFACE = 0x4;

bool IsSky(const DShader* shader, const DGeob& geob)
{
  return (shader && shader->IsSky()) || geob.userFlags & NODE_IS_SKY;
}

// What a block without a shader is painted with.
const DShaderLayer& PlainLayer()
{
  static const DShaderLayer layer = [] {
    DShaderLayer plain;
    plain.flags = DShaderLayer::DEPTH_WRITE;
    plain.ambient = plain.diffuse = DVector4(0.7f, 0.7f, 0.7f, 1.0f);
    return plain;
  }();
  return layer;
}

// Colours of vertices have their light in them; where flags colour the light, it is put in their place.
bool IsLit(const DGeob& geob, const DShader* shader, uint32_t flags)
{
  const bool colored = geob.vertexColor.size() >= geob.vertex.size() && !(flags & WorldRenderer::COLOR_BY_FLAGS);
  return !IsSky(shader, geob) && !colored && geob.normal.size() >= geob.vertex.size();
}

template <typename Array>
const void* Source(DPipe& pipe, uint32_t buffer, const Array& array)
{
  pipe.BindArrayBuffer(buffer);
  return buffer ? nullptr : array.data();
}

} // namespace

void RenderPainter::Begin(DPipe& statePipe, const RenderView& frameView)
{
  view = frameView;
  pipe = &statePipe;
  gl = DGlobals().hasContext;
  pipe->Invalidate(); // panels and overlay drew since the last frame
  units.Begin(*pipe);
  programs.Begin(*pipe, view);
  if (!gl)
    return;
  glViewport(view.viewport.x, view.viewport.y, view.viewport.wid, view.viewport.hgt);
  skyProjectionSet = true;
  SetProjection(false);
  glLoadMatrixf(glm::value_ptr(view.modelView));
  glShadeModel(GL_SMOOTH);
  glFrontFace(GL_CCW);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  SetupLights();
}

void RenderPainter::SetProjection(bool sky)
{
  if (skyProjectionSet == sky || !gl)
    return;
  skyProjectionSet = sky;
  pipe->MatrixMode(GL_PROJECTION);
  glLoadMatrixf(glm::value_ptr(sky ? view.skyProjection : view.projection));
  pipe->MatrixMode(GL_MODELVIEW);
}

void RenderPainter::SetupLights()
{
  const DVector4 direction(DNormalized(view.sun.position), 0.0f);
  const DVector4 diffuse(view.sun.diffuse, 1.0f);
  const DVector4 none(0.0f, 0.0f, 0.0f, 1.0f);
  pipe->Enable(GL_LIGHT0);
  glLightModelfv(GL_LIGHT_MODEL_AMBIENT, glm::value_ptr(none));
  glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, GL_FALSE);
  glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_FALSE);
  glLightfv(GL_LIGHT0, GL_POSITION, glm::value_ptr(direction));
  SetSun(nullptr);
  glLightfv(GL_LIGHT0, GL_SPECULAR, glm::value_ptr(diffuse));
  if (view.fog.density > 0) {
    const DVector4 color(view.fog.color, 1.0f);
    glFogi(GL_FOG_MODE, GL_EXP);
    glFogf(GL_FOG_DENSITY, view.fog.density);
    glFogfv(GL_FOG_COLOR, glm::value_ptr(color));
  }
}

// The light of the sun; over a geob that shows its flags, in their colours.
void RenderPainter::SetSun(const DGeob* coloring)
{
  const auto painted = [coloring](const DVector3& c) {
    if (!coloring)
      return c;
    const bool collide = coloring->userFlags & NODE_COLLIDE;
    const bool surface = coloring->userFlags & NODE_SURFACE;
    if (!collide && !surface)
      return DVector3(glm::length(c));
    return DVector3(collide ? c.r * 10 : 0.0f, surface ? c.g * 10 : 0.0f, 0.0f);
  };
  ambient = painted(view.sun.ambient);
  sun = painted(view.sun.diffuse);
  if (!gl)
    return;
  glLightfv(GL_LIGHT0, GL_AMBIENT, glm::value_ptr(DVector4(ambient, 1.0f)));
  glLightfv(GL_LIGHT0, GL_DIFFUSE, glm::value_ptr(DVector4(sun, 1.0f)));
}

void RenderPainter::SetFlags(uint32_t rendererFlags, int layers, bool plain)
{
  flags = rendererFlags;
  maxLayers = layers;
  plainPaint = plain;
}

// The later layers of a shader with a fragment program of its own are what that reads (normals, reflections): by
// themselves they aren't pictures of the surface.
int RenderPainter::LayersOf(const DShader* shader) const
{
  if (!shader || plainPaint)
    return 1;
  if (!shader->fragmentFile.empty() && !shader->IsStandard() && !(DGlobals().programsOn && shader->fragmentProgram))
    return 1;
  return std::clamp(shader->LayerCount(), 1, std::max(maxLayers, 1));
}

void RenderPainter::SetupMaterial(const DShaderLayer& layer) const
{
  if (!gl)
    return;
  const DVector4 black(0.0f, 0.0f, 0.0f, 1.0f);
  glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, glm::value_ptr(layer.ambient));
  glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, glm::value_ptr(layer.diffuse));
  glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, glm::value_ptr(layer.emission));
  // With an exponent of 0 the highlight would cover all that faces the sun.
  const bool shines = layer.shininess > 0;
  glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, glm::value_ptr(shines ? layer.specular : black));
  glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<float>(std::clamp(layer.shininess, 0, 128)));
  // Without lighting this is the colour.
  glColor4f(1.0f, 1.0f, 1.0f, layer.diffuse.a);
}

void RenderPainter::SetupLayer(const DShaderLayer& layer, bool first, bool sky)
{
  const bool blends = layer.flags & DShaderLayer::BLENDING;
  pipe->Set(GL_BLEND, blends);
  if (blends)
    pipe->BlendFunc(layer.blendSrc, layer.blendDst);
  const bool tests = layer.flags & DShaderLayer::ALPHA_TEST;
  pipe->Set(GL_ALPHA_TEST, tests);
  if (tests)
    pipe->AlphaFunc(layer.alphaFunc, layer.alphaRef);
  // The sky lies behind all else.
  pipe->Set(GL_DEPTH_TEST, !sky);
  pipe->DepthMask(!sky && layer.flags & DShaderLayer::DEPTH_WRITE);
  pipe->DepthFunc(first ? layer.depthFunc : static_cast<uint32_t>(GL_LEQUAL));
  pipe->Set(GL_SAMPLE_ALPHA_TO_COVERAGE, layer.flags & DShaderLayer::ALPHA_TO_COVERAGE);
  SetupMaterial(layer);
}

float RenderPainter::FogDensity(const DShader* shader, bool sky) const
{
  return sky || (shader && !(shader->shaderFlags & DShader::FOG)) ? 0.0f : view.fog.density;
}

void RenderPainter::SetupShader(const DShader* shader, const DGeob& geob)
{
  ++counted.shaderChanges;
  if (!shader)
    QWARN("sh is null");
  const uint32_t shaderFlags = shader ? shader->shaderFlags : 0;
  const bool sky = IsSky(shader, geob);
  const bool swapped = flags & WorldRenderer::SWAP_CULLING;
  const bool culls = shaderFlags & (DShader::CULL_BACK | DShader::CULL_FRONT);
  pipe->Set(GL_CULL_FACE, culls);
  if (culls)
    pipe->CullFace(((shaderFlags & DShader::CULL_BACK) != 0) == swapped ? GL_FRONT : GL_BACK);
  pipe->Set(GL_FOG, FogDensity(shader, sky) > 0);
  SetProjection(sky);
}

void RenderPainter::SetupGeob(const DGeob& geob, bool lit)
{
  pipe->Set(GL_LIGHTING, lit);
  const bool colored = !lit && geob.vertexColor.size() >= geob.vertex.size();
  pipe->EnableArray(DPipe::VERTEX_ARRAY);
  lit ? pipe->EnableArray(DPipe::NORMAL_ARRAY) : pipe->DisableArray(DPipe::NORMAL_ARRAY);
  colored ? pipe->EnableArray(DPipe::COLOR_ARRAY) : pipe->DisableArray(DPipe::COLOR_ARRAY);
  units.SetCoordinates(geob);
  if (!gl)
    return;
  glVertexPointer(3, GL_FLOAT, 0, Source(*pipe, geob.vertexBuffer, geob.vertex));
  if (lit)
    glNormalPointer(GL_FLOAT, 0, Source(*pipe, geob.normalBuffer, geob.normal));
  if (colored)
    glColorPointer(3, GL_FLOAT, 0, Source(*pipe, geob.colorBuffer, geob.vertexColor));
  pipe->BindIndexBuffer(geob.indexBuffer);
}

void RenderPainter::DrawIndices(const RenderBlock& block) const
{
  if (!gl)
    return;
  const GLenum shape = block.quads ? GL_QUADS : GL_TRIANGLES;
  const uint16_t* base = block.geob->indexBuffer ? nullptr : block.geob->index.data();
  if (!(flags & WorldRenderer::ARRAY_ELEMENTS)) {
    glDrawElements(shape, block.indexCount, GL_UNSIGNED_SHORT, base + block.firstIndex);
    return;
  }
  glBegin(shape);
  for (int i = 0; i < block.indexCount; ++i)
    glArrayElement(block.geob->index[static_cast<size_t>(block.firstIndex + i)]);
  glEnd();
}

void RenderPainter::Draw(const RenderBlock& block)
{
  DrawIndices(block);
  ++counted.drawCalls;
  counted.indices += block.indexCount;
}

// World coordinates of a large track lose their millimetres once they are single numbers that go through a matrix: what
// is subtracted here is subtracted in double precision.
DMatrix4 RenderPainter::BlockMatrix(const RenderBlock& block) const
{
  glm::dmat4 matrix = block.matrix ? glm::dmat4(*block.matrix) : glm::dmat4(1.0);
  if (block.geob->vertexBufferCentered)
    matrix[3] = matrix * glm::dvec4(block.geob->GetBoundingBox().Center(), 1.0);
  if (view.atOrigin)
    matrix[3] -= glm::dvec4(view.origin, 0.0);
  return DMatrix4(matrix);
}

bool RenderPainter::SetupUnits(const DShaderLayer* layers, int count)
{
  if (plainPaint) {
    units.SetupNone();
    return true;
  }
  for (int i = 0; i < count; ++i)
    if (!units.Setup(i, layers[i]))
      return false;
  units.UseUnits(count);
  return true;
}

void RenderPainter::PaintLayers(std::span<const RenderBlock> run)
{
  const DShader* shader = run.front().shader;
  const bool sky = IsSky(shader, *run.front().geob);
  const DShaderLayer* layers = shader && shader->LayerCount() > 0 ? shader->layer.data() : &PlainLayer();
  const int count = LayersOf(shader);
  const bool together = !(flags & WorldRenderer::SINGLE_PASS);
  for (int first = 0, group = 1; first < count; first += group) {
    const int byProgram = plainPaint ? 0 : programs.Use(shader, layers + first, count - first);
    group = byProgram ? byProgram : together ? units.GroupOf(layers + first, count - first) : 1;
    if (!SetupUnits(layers + first, group))
      continue;
    SetupLayer(layers[first], first == 0, sky);
    if (byProgram) {
      programs.SetShader(*shader, layers[first], FogDensity(shader, sky));
      programs.SetMatrices(model, sky ? view.skyProjection : view.projection);
    }
    for (const RenderBlock& block : run) {
      const bool lit = IsLit(*block.geob, block.shader, flags);
      SetupGeob(*block.geob, lit);
      if (byProgram) {
        programs.SetLight(lit, ambient, sun);
        programs.SetTangents(*block.geob);
      }
      Draw(block);
    }
  }
}

void RenderPainter::PaintRun(std::span<const RenderBlock> run)
{
  const RenderBlock& head = run.front();
  if (flags & WorldRenderer::USE_VBO)
    for (const RenderBlock& block : run)
      block.geob->EnableVBO();
  const bool moved = head.matrix || view.atOrigin || head.geob->vertexBufferCentered;
  model = moved ? BlockMatrix(head) : DMatrix4(1.0f);
  if (gl && moved) {
    pipe->MatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glMultMatrixf(glm::value_ptr(model));
  }
  pipe->Set(GL_NORMALIZE, head.matrix != nullptr);
  if (flags & WorldRenderer::COLOR_BY_FLAGS)
    SetSun(head.geob);
  if (flags & WorldRenderer::PAINT_TRIANGLES) {
    SetupShader(head.shader, *head.geob);
    PaintLayers(run);
  }
  if (flags & WorldRenderer::PAINT_WIREFRAME)
    PaintWireframe(run);
  if (flags & WorldRenderer::PAINT_NORMALS)
    for (const RenderBlock& block : run)
      PaintNormals(*block.geob);
  if (gl && moved)
    glPopMatrix();
}

void RenderPainter::PaintWireframe(std::span<const RenderBlock> run)
{
  programs.Release();
  units.SetupNone();
  pipe->Disable(GL_BLEND);
  pipe->Disable(GL_ALPHA_TEST);
  pipe->Disable(GL_FOG);
  pipe->Set(GL_DEPTH_TEST, true);
  pipe->DepthFunc(GL_LEQUAL);
  pipe->PolygonOffset(-10, -10);
  if (gl) {
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glEnable(GL_POLYGON_OFFSET_LINE);
    glColor4f(1, 1, 1, 1);
  }
  for (const RenderBlock& block : run) {
    SetupGeob(*block.geob, false);
    pipe->DisableArray(DPipe::COLOR_ARRAY); // it would win over white
    Draw(block);
  }
  pipe->PolygonOffset(0, 0);
  if (gl) {
    glDisable(GL_POLYGON_OFFSET_LINE);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  }
}

void RenderPainter::PaintNormals(const DGeob& geob)
{
  if (!gl || geob.normal.size() < geob.vertex.size())
    return;
  programs.Release();
  units.SetupNone();
  for (const int cap : {GL_LIGHTING, GL_BLEND, GL_ALPHA_TEST, GL_FOG})
    pipe->Disable(static_cast<uint32_t>(cap));
  pipe->Enable(GL_DEPTH_TEST);
  pipe->DepthFunc(GL_LEQUAL);
  pipe->DepthMask(false);
  glBegin(GL_LINES);
  for (size_t i = 0; i < geob.vertex.size(); ++i) {
    const DVector3& normal = geob.normal[i];
    const DVector3 tip = geob.vertex[i] + normal;
    glColor3f(normal.y, normal.y, normal.y);
    glVertex3fv(glm::value_ptr(geob.vertex[i]));
    glVertex3fv(glm::value_ptr(tip));
  }
  glEnd();
}

void RenderPainter::PaintLines(std::span<const RenderLine> lines, const DShader& shader)
{
  const DShaderLayer& layer = PlainLayer();
  units.SetupNone();
  programs.Use(&shader, &layer, 1);
  programs.SetMatrices(DMatrix4(1.0f), view.projection);
  if (gl) {
    glBegin(GL_LINES);
    for (const RenderLine& line : lines) {
      glColor3fv(glm::value_ptr(line.color));
      glVertex3fv(glm::value_ptr(line.from));
      glVertex3fv(glm::value_ptr(line.to));
    }
    glEnd();
  }
  programs.Release();
}

void RenderPainter::End()
{
  SetProjection(false);
  programs.Release();
  for (const DPipe::Array array : {DPipe::VERTEX_ARRAY, DPipe::NORMAL_ARRAY, DPipe::COLOR_ARRAY})
    pipe->DisableArray(array);
  units.End();
  pipe->BindArrayBuffer(0);
  pipe->BindIndexBuffer(0);
  pipe->Disable(GL_BLEND);
  pipe->Disable(GL_SAMPLE_ALPHA_TO_COVERAGE);
  pipe->AlphaFunc(GL_ALWAYS, 0);
}

void RenderPainter::ResetState()
{
  pipe->SelectUnit(0);
  pipe->DisableTexture(GL_TEXTURE_2D);
  pipe->TexEnv(GL_MODULATE);
  for (const int cap : {GL_FOG, GL_ALPHA_TEST, GL_LIGHTING, GL_NORMALIZE, GL_CULL_FACE, GL_BLEND})
    pipe->Disable(static_cast<uint32_t>(cap));
  pipe->Enable(GL_DEPTH_TEST);
  pipe->DepthMask(true);
  pipe->DepthFunc(GL_LEQUAL);
  pipe->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  pipe->MatrixMode(GL_MODELVIEW);
}

void RenderPainter::AddTo(RenderStats& stats)
{
  const RenderStats more = std::exchange(counted, {});
  stats.indices += more.indices;
  stats.drawCalls += more.drawCalls;
  stats.shaderChanges += more.shaderChanges;
}
