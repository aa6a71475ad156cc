#pragma once

#include "geometry/doverlay.h"

class QInfo;
class QWindow;
struct QEvent;

// One kind of track data to edit. The shell holds ten in a table and knows them by this base only; a mode reaches the
// world by the editor's state alone, so that a test needs no window.
class EditMode
{
public:
  virtual ~EditMode() = default;
  // The mode became current: its operation buttons, its panel.
  virtual void ModeSetup() = 0;
  // A key press that the frame hasn't eaten, before the global keys. True: consumed, these don't see it.
  virtual bool ModeKey(int code) = 0;
  // A click on operation button n.
  virtual void ModeOp(int n) = 0;
  // Before the scene of a frame is painted.
  virtual void ModeUpdate() {}
  virtual void ModePaint(DOverlay& overlay) const = 0;
  virtual void ModeHud() const = 0;
  // A click on a widget that isn't the shell's; true when it was one of the mode's own.
  virtual bool ModeClick(QWindow&) { return false; }
  // A load has ended, well or not: there may be another track, or none.
  virtual void TrackLoaded() {}
  // Each event before the shell sees it; true: nobody else does.
  virtual bool ModeEvent(const QEvent&) { return false; }
  // While a dialog of the mode's is open beside the running editor: keys are the mode's alone, and the camera rests.
  virtual bool HasDialog() const { return false; }
  // What the mode keeps in the settings when the program ends.
  virtual void StoreSettings(QInfo&) const {}
};
