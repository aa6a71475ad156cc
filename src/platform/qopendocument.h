#pragma once

#include <string>

// Hands a document, a program or an address to the desktop, which opens it with what the user has chosen for it. False
// when nobody is there to do so.
bool QOpenDocument(const std::string& what, const std::string& args);
