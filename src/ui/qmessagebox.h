#pragma once

#include "foundation/qrect.h"

#include <string>
#include <string_view>

// Each asks the user and waits for the answer, running the application's loop meanwhile. Without an application the
// answer is 2.

// 1: OK, 2: Cancel or closed. style 1: OK alone. The default rectangle is 100, 150, 300 x 160. The box gets
// higher when the message needs it. Captions that are null are the usual ones.
int QMessageBox(std::string_view title, std::string_view text, int style = 0, const QRect* pos = nullptr,
                const char* okText = nullptr, const char* cancelText = nullptr);
// 1: OK, and text is what was typed; 2: Cancel, and text is as before. The default rectangle is 400, 250, 300 wide and
// as high as the lines need.
int QDlgString(std::string_view title, std::string_view prompt, std::string& text, int maxLen, int lines = 1,
               const QRect* pos = nullptr);
