#pragma once

#include <string>

// What a fault leaves behind. The handler only does what a handler may: it calls the crash procedures, writes the
// fault and the addresses on the stack to QLOG.txt, the console and a note for the next start, and lets the fault end
// the process. Names of functions and source lines are found at the next start, by QReportLastCrash.

// Takes over SEGV, BUS, FPE, ILL and ABRT, on a stack of its own, so that a full stack is no obstacle. directory: where
// QLOG.txt lies, up to 1,000 bytes. In a program with address sanitizer nothing is done unless always is set.
// False when the machine refuses.
bool QInstallCrashHandler(const std::string& directory, const std::string& applicationName, bool always = false);

// Did the last run end by a fault? Then its stack is logged, with names, and given as a text for the user; the note is
// gone after that. Empty otherwise.
std::string QReportLastCrash(const std::string& directory);
