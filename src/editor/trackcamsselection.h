#pragma once

#include "geometry/dvector.h"

struct EditState;
class EditHost;
class RSplineRep;
class RTrackCam;

// The current track camera and its keyframe, which the modes of the track's cameras and of their keyframes share.

// Null when there is none.
RTrackCam* CurrentTrackCam(const EditState& state);
// The mark in the cameras' flags follows the current one.
void MarkTrackCam(EditState& state);
// Camera n, or a new one behind the last, becomes current, stands where the view is, and is measured along the line to
// the pick line's start. Radius and zooms are the usual ones again; all else of an old one stays. When the table is
// full the track reports, and no camera is current.
void DeclareTrackCam(EditState& state, int n);
// One further, or one back; the first when none was current. Neither goes round. Shows the keyframe that is selected.
void NextTrackCam(EditState& state, EditHost& host);
void PreviousTrackCam(EditState& state, EditHost& host);
// The view becomes that of the selected keyframe, whose line of the road is selected too.
void GotoKeyFrame(EditState& state, EditHost& host);
// The last line of the road at or before this distance, or -1.
int LineOfKey(const RSplineRep& road, float distance);
// Turns the view to a point. Roll and, of a view straight down or up, yaw stay as they are.
void LookAt(EditState& state, const DVector3& target);
