#pragma once

// The wildcard matcher behind all pattern prompts; letters are compared without regard to case.
// "*" any text, "?" one character, "!" reverses what the rest of the pattern says; "(" and ")" are skipped.
bool QMatch(const char* pattern, const char* text);
