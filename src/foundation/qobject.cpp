#include "foundation/qobject.h"

#include "foundation/qreport.h"

void QObject::DbgReport() const
{
  const void* self = this;
  QLOG("@%p %s (class %s)\n", self, named ? objectName.c_str() : "<unnamed_QObject>", GetClassName());
}

void QObject::SetName(const char* newName)
{
  objectName = newName ? newName : "<null-named>";
  named = true;
}
