#include "editor/pendingmode.h"

#include "editor/edithost.h"

void PendingMode::ModeSetup()
{
  host.SetOpButtons({});
}

void PendingMode::ModeHud() const
{
  host.HudPrint("The mode " + name + " isn't part of this version yet.");
}
