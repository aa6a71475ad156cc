#pragma once

#include "foundation/qrect.h"

#include <string_view>

class QCanvas;

// Draws the arrow of the name ("$LEFT") in the middle of the rectangle, in the canvas's colour. False for an unknown
// name: then it is a plain caption.
bool QPaintArrow(QCanvas& cv, std::string_view name, const QRect& room);
