#pragma once

#include <string>
#include <string_view>

// Text of the interface is UTF-8. A byte that isn't part of a well-formed sequence stands for the character of that
// code, so that older single-byte texts read as meant.

// The character at the position, which moves behind it. The position must be inside the text.
char32_t QNextChar(std::string_view text, size_t& at);
// The position of the character before; 0 stays 0.
size_t QPreviousChar(std::string_view text, size_t at);
// Does the text begin so? Upper and lower case count as the same, in Latin, Greek and Cyrillic.
bool QBeginsWith(std::string_view text, std::string_view beginning);
// Adds the character in UTF-8.
void QAppendChar(std::string& text, char32_t c);
