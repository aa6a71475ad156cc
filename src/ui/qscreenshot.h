#pragma once

class QWindow;

// Writes what the window shows to the next free numbered picture in "temp" below the current directory. whole: the
// interface, otherwise the 3D canvas. Reports where, or that there is no such window.
bool QSaveScreenshot(QWindow* window, bool whole);
