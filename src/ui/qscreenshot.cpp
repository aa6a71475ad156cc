#include "ui/qscreenshot.h"

#include "foundation/qreport.h"

bool QSaveScreenshot(QWindow* window, bool whole)
{
  if (!window) {
    qinfo(whole ? "> No UI present.\n" : "> No BC present.\n");
    return false;
  }
  return false;
}
