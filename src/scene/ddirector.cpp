#include "scene/ddirector.h"

#include "foundation/qreport.h"
#include "scene/dcamera.h"

#include <cstdlib>

DCamera* DRail::GetCamera(int i) const
{
  if (i < 0 || i >= GetNoofCameras()) {
    QWARN("DRail:GetCamera(%d) out of range (0..%d)", i, GetNoofCameras() - 1);
    return nullptr;
  }
  return cameras[static_cast<size_t>(i)];
}

DRail* DDirector::GetRail(int i) const
{
  return i >= 0 && i < GetNoofRails() ? rails[static_cast<size_t>(i)] : nullptr;
}

void DDirector::SetRail(int rail, int n)
{
  const DRail* chosen = GetRail(rail);
  currentRail = chosen ? rail : -1;
  currentCamera = chosen && n >= 0 && n < chosen->GetNoofCameras() ? chosen->GetCamera(n) : nullptr;
  currentIndex = currentCamera ? n : -1;
  if (currentCamera)
    currentCamera->Activate();
}

bool DDirector::PickAtRandom(const char* noRails, const char* noCameras)
{
  if (rails.empty()) {
    QWARN("%s", noRails);
    return false;
  }
  const int rail = std::rand() % GetNoofRails();
  const int cameras = GetRail(rail)->GetNoofCameras();
  if (cameras == 0) {
    QWARN("%s", noCameras);
    return false;
  }
  int camera = std::rand() % cameras;
  while (cameras >= 2 && rail == currentRail && camera == currentIndex)
    camera = std::rand() % cameras;
  SetRail(rail, camera);
  return true;
}

void DDirectorSimple::Step(float seconds)
{
  timeLeft -= seconds;
  if (timeLeft >= 0)
    return;
  timeLeft = interval;
  PickAtRandom("DDirectorSimple:Step(); no rails defined", "DDirectorSimple:Step(); no cameras in rail");
}

void DDirectorGoodShot::Step(float)
{
  if (GetCurrentCamera() && GetCurrentCamera()->IsGoodShot())
    return;
  for (int draw = 0; draw < MAX_DRAWS; ++draw)
    if (!PickAtRandom("DDirectorGoodShot:Step(); no rails defined", "DDirectorGoodShot:Step(); no cameras in rail") ||
        GetCurrentCamera()->IsGoodShot())
      return;
}
