#pragma once

#include <string_view>

// An identifier of a track: 1 to 32 characters out of A-Z, a-z, 0-9 and "_". What is wrong with another is reported.
bool RCheckID(std::string_view id);
