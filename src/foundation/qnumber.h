#pragma once

#include <string>
#include <string_view>

// Numbers as text, the same whatever locale the process has set.

// What stands at the start of the text, as atof reads it: leading white space, a sign, decimal or hexadecimal digits,
// "inf" or "nan"; the rest is ignored. No number gives 0; one that is too large gives infinity.
double QParseDouble(std::string_view text);
// Parsed as a double and then narrowed: parsing straight to a float differs in some last bits.
float QParseFloat(std::string_view text);
// "%f": six decimals, "inf" and "nan" for what has none.
std::string QFormatFloat(double value);
