#pragma once

#include <string_view>

// The integer expression evaluator behind every whole number of a configuration tree.
// | then & ^ then + - then * x / % then ( ), decimal, 0x.., 0.. (octal), $.., #.. (binary). Unary + - ~ take the whole
// rest. Arithmetic wraps in 32 bits; division by zero gives 0; reading stops at what isn't part of an expression.
// A null pointer is reported and gives 0.
int Eval(const char* text);
int Eval(std::string_view text);
