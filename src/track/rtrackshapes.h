#pragma once

#include "geometry/doverlay.h"

// What stands for the track's records in the editor's view.

// A post of one metre at either end, and a line that joins their tops.
void RPaintFence(DOverlay& overlay, const DVector3& from, const DVector3& to, const DOverlayStyle& style);
// In the horizontal plane; the last point is the first again.
void RPaintCircle(DOverlay& overlay, const DVector3& center, float radius, const DOverlayStyle& style);
// The four sides, each in a colour of its own; without top and bottom. half: metres from the centre to a side.
void RPaintCube(DOverlay& overlay, const DVector3& center, float half);
