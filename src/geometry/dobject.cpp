#include "geometry/dobject.h"

#include "geometry/dglobal.h"

#include <epoxy/gl.h>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>

DMatrix4 DObject::Matrix() const
{
  const Transformation& t = transformation;
  DMatrix4 m = glm::translate(DMatrix4(1.0f), t.translation);
  m = glm::rotate(m, glm::radians(t.rotation.x), DVector3(1, 0, 0));
  m = glm::rotate(m, glm::radians(t.rotation.y), DVector3(0, 1, 0));
  m = glm::rotate(m, glm::radians(t.rotation.z), DVector3(0, 0, 1));
  return glm::scale(m, t.scale);
}

void DObject::PaintTransformed()
{
  if ((flags & HIDDEN) || !DGlobals().hasContext)
    return;
  if (flags & NO_TRANSFORMATION) {
    Paint();
    return;
  }
  glPushMatrix();
  glMultMatrixf(glm::value_ptr(Matrix()));
  Paint();
  glPopMatrix();
}
