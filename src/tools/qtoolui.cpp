#include "tools/qtoolui.h"

// Here, once, stand the tables of these classes.
QToolProgress::~QToolProgress() = default;
QToolUi::~QToolUi() = default;
