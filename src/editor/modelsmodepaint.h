#pragma once

class DOverlay;
struct EditState;

// Draws a walking dashed box around each selected node, and lets the nodes blink.
void PaintSelectedNodes(const EditState& state, DOverlay& overlay);
// The blink alone: shows or hides the selected nodes for the moment.
void BlinkSelectedNodes(const EditState& state);
