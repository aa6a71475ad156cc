#pragma once

class DOverlay;
struct EditState;

// Draws a walking dashed box around each selected node, and lets the nodes blink.
void PaintSelectedNodes(const EditState& state, DOverlay& overlay);
