#include "foundation/qdrawable.h"

#include "foundation/qreport.h"

bool QDrawable::Create()
{
  QWARN("QDrawable::Create() base class called");
  return false;
}

void QDrawable::Destroy()
{
  QWARN("QDrawable::Destroy() base class called");
}
