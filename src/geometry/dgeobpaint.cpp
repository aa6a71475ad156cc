#include "geometry/dgeob.h"

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dshader.h"

#include <algorithm>
#include <epoxy/gl.h>

namespace {

template <typename Array>
bool Upload(GLenum target, uint32_t& name, const Array& array)
{
  if (array.empty())
    return true;
  glGenBuffers(1, &name);
  if (name == 0)
    return false;
  glBindBuffer(target, name);
  glBufferData(target, static_cast<GLsizeiptr>(array.size() * sizeof(array[0])), array.data(), GL_STATIC_DRAW);
  return true;
}

void DeleteBuffer(uint32_t& name)
{
  if (name != 0 && DGlobals().hasContext) {
    glDeleteBuffers(1, &name);
    DThePipe().ForgetBuffer(name);
  }
  name = 0;
}

template <typename Array>
const void* Source(uint32_t buffer, const Array& array)
{
  DThePipe().BindArrayBuffer(buffer);
  return buffer ? nullptr : array.data();
}

} // namespace

bool DGeob::UploadArrays()
{
  bool ok = true;
  vertexBufferCentered = DGlobals().centeredVertices;
  if (vertexBufferCentered) {
    const DVector3 middle = GetBoundingBox().Center();
    DArray<DVector3> centered = vertex;
    for (DVector3& v : centered)
      v -= middle;
    ok = Upload(GL_ARRAY_BUFFER, vertexBuffer, centered);
  } else {
    ok = Upload(GL_ARRAY_BUFFER, vertexBuffer, vertex);
  }
  ok = ok && Upload(GL_ARRAY_BUFFER, normalBuffer, normal) && Upload(GL_ARRAY_BUFFER, colorBuffer, vertexColor) &&
       Upload(GL_ARRAY_BUFFER, tangentBuffer, tangent);
  for (size_t i = 0; i < texCoord.size(); ++i)
    ok = ok && Upload(GL_ARRAY_BUFFER, texCoordBuffer[i], texCoord[i]);
  const DMaterial* m = geode ? geode->GetMaterial(materialRef) : nullptr;
  if (m && m->shader && (m->shader->shaderFlags & DShader::HAS_ADJACENCY)) {
    flags |= ADJACENCY;
    return ok && Upload(GL_ELEMENT_ARRAY_BUFFER, indexBuffer, AdjacencyIndices());
  }
  flags &= ~static_cast<uint32_t>(ADJACENCY);
  return ok && (indexArrayOverride ? Upload(GL_ELEMENT_ARRAY_BUFFER, indexBuffer, *indexArrayOverride)
                                   : Upload(GL_ELEMENT_ARRAY_BUFFER, indexBuffer, index));
}

void DGeob::EnableVBO()
{
  if ((flags & IN_VBO) || !DGlobals().hasContext)
    return;
  flags |= IN_VBO;
  const bool ok = UploadArrays();
  glBindBuffer(GL_ARRAY_BUFFER, 0);
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
  DThePipe().ForgetBuffer(0); // bound behind the pipe's back
  if (!ok) {
    QERR("DGeob:EnableVBO(); can't generate VBO buffers (%s)", GeodeName());
    DisableVBO();
  }
}

void DGeob::DisableVBO()
{
  flags &= ~static_cast<uint32_t>(IN_VBO | ADJACENCY);
  for (uint32_t* name : {&vertexBuffer, &indexBuffer, &normalBuffer, &colorBuffer, &tangentBuffer})
    DeleteBuffer(*name);
  vertexBufferCentered = false;
  for (uint32_t& name : texCoordBuffer)
    DeleteBuffer(name);
}

void DGeob::RefreshVBO()
{
  ShapeChanged();
  if (!(flags & IN_VBO))
    return;
  DisableVBO();
  EnableVBO();
}

void DGeob::SetArrays() const
{
  DPipe& pipe = DThePipe();
  pipe.EnableArray(DPipe::VERTEX_ARRAY);
  glVertexPointer(3, GL_FLOAT, 0, Source(vertexBufferCentered ? 0 : vertexBuffer, vertex)); // where they belong
  if (normal.size() >= vertex.size()) {
    pipe.EnableArray(DPipe::NORMAL_ARRAY);
    glNormalPointer(GL_FLOAT, 0, Source(normalBuffer, normal));
  } else {
    pipe.DisableArray(DPipe::NORMAL_ARRAY);
  }
  pipe.SelectUnit(0);
  if (texCoord[0].size() >= vertex.size()) {
    pipe.EnableTexCoordArray();
    glTexCoordPointer(2, GL_FLOAT, 0, Source(texCoordBuffer[0], texCoord[0]));
  } else {
    pipe.DisableTexCoordArray();
  }
  if (vertexColor.size() >= vertex.size()) {
    pipe.EnableArray(DPipe::COLOR_ARRAY);
    glColorPointer(3, GL_FLOAT, 0, Source(colorBuffer, vertexColor));
  } else {
    pipe.DisableArray(DPipe::COLOR_ARRAY);
  }
}

void DGeob::DrawBurst(int i) const
{
  const DBurst& b = burst[static_cast<size_t>(i)];
  if (b.vperP != 3 && b.vperP != 4) {
    QWARN("DGeob; draw poly NYI\n");
    return;
  }
  const auto indices = PaintedIndices(i);
  if (indices.empty())
    return;
  DThePipe().BindIndexBuffer(indexBuffer);
  const uint16_t* base =
      indexBuffer ? reinterpret_cast<const uint16_t*>((indices.data() - index.data()) * 2) : indices.data();
  glDrawElements(b.vperP == 3 ? GL_TRIANGLES : GL_QUADS, static_cast<GLsizei>(indices.size()), GL_UNSIGNED_SHORT, base);
}

void DGeob::PaintLayer(int i, int layer, DMaterial& m) const
{
  if (!m.PrepareToPaint(layer))
    return;
  DPipe& pipe = DThePipe();
  const int last = m.LayerCount() - 1;
  pipe.DepthMask(!m.IsTransparent() && (layer == 0 || layer < last));
  if (!m.IsTransparent() && last > 0 && layer == 0)
    pipe.Disable(GL_BLEND);
  if (!m.IsTransparent() && layer > 0) {
    pipe.Enable(GL_POLYGON_OFFSET_FILL);
    pipe.PolygonOffset(static_cast<float>(-layer), 0);
  }
  SetArrays();
  const bool colored = vertexColor.size() >= vertex.size() && !vertex.empty() && !(m.flags & DMaterial::FLAT_COLOR);
  if (colored)
    pipe.Disable(GL_LIGHTING);
  else
    pipe.DisableArray(DPipe::COLOR_ARRAY);
  DrawBurst(i);
  if (colored)
    pipe.Enable(GL_LIGHTING);
  m.FinishPaint(layer);
}

void DGeob::Paint()
{
  if (!DGlobals().hasContext || vertex.empty())
    return;
  for (int i = 0; i < Bursts(); ++i) {
    DMaterial* m = GetMaterial(burst[static_cast<size_t>(i)].mtlID);
    if (!m) {
      QWARN("DGeob::Paint(); no material in burst %d", i);
      continue;
    }
    if ((flags & TRANSPARENT_PASS) && !m->IsTransparent())
      continue;
    for (int layer = 0; layer < m->LayerCount(); ++layer)
      PaintLayer(i, layer, *m);
    DThePipe().DepthMask(true);
    DThePipe().Disable(GL_POLYGON_OFFSET_FILL);
  }
}

void DGeob::PaintOptimized(int i)
{
  if (!DGlobals().hasContext || vertex.empty() || i < 0 || i >= Bursts())
    return;
  SetArrays();
  DrawBurst(i);
}
