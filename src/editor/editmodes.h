#pragma once

#include "editor/editmode.h"

#include <memory>

class EditHost;
class EditView;
struct EditState;

// The mode of a slot, 0 to 9.
std::unique_ptr<EditMode> MakeEditMode(int slot, EditState& state, EditHost& host, EditView& view);
