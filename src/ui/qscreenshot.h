#pragma once

class QBitMap;
class QWindow;
struct QRect;

// The pixels of the back buffer, or of a part of the top-level window, as they stand now. False, with the picture as
// it was, without a context.
[[nodiscard]] bool QReadBackBuffer(QBitMap& bitmap, const QRect* part = nullptr);
// Writes what the window shows to the next free numbered picture in "temp" below the current directory. whole: the
// interface, otherwise the 3D canvas. Reports where, or that there is no such window.
bool QSaveScreenshot(QWindow* window, bool whole);
