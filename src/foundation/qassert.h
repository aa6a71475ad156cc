#pragma once

// What must hold, or the program is wrong: it is logged with the source around it, and the program ends with a crash
// report.
[[noreturn]] void QAssertFailed(const char* what, const char* file, int line);

#define QASSERT(condition) ((condition) ? static_cast<void>(0) : QAssertFailed(#condition, __FILE__, __LINE__))
