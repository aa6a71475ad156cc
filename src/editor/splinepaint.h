#pragma once

#include <span>

class DOverlay;
class RSplineRep;

// The road as the outlines of its triangles, with the first edge and the selected lines marked and each line labelled
// with its number, top speed and the state of its marshal post. A selected line past the end counts as the last.
void PaintSplines(const RSplineRep& splines, std::span<const int> selected, DOverlay& overlay);
