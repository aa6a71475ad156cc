#pragma once

#include "foundation/eval.h"
#include "fuzzing/check.h"

#include <algorithm>
#include <cstdint>
#include <optional>

// The evaluator's grammar as plain recursive descent: slower, and open to deep input, but easy to see through.
class FuzzEvaluator
{
public:
  explicit FuzzEvaluator(std::string_view text) : rest(text) {}
  int Run() { return static_cast<int>(Expression(1).value_or(0)); }

private:
  using Value = std::optional<uint32_t>;

  static int Rank(char op)
  {
    const std::string_view ranks[] = {"|", "&^", "+-", "*/%x"};
    for (int i = 0; i < 4; ++i)
      if (op != 0 && ranks[i].find(op) != std::string_view::npos)
        return i + 1;
    return 0;
  }
  char Peek()
  {
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    return rest.empty() || ended ? '\0' : rest[0];
  }
  bool Take(char c)
  {
    const bool there = Peek() == c;
    rest.remove_prefix(there);
    return there;
  }
  Value Expression(int rank)
  {
    Value left = Factor();
    while (left && Rank(Peek()) >= rank) {
      const char op = Peek();
      rest.remove_prefix(1);
      const Value right = Expression(Rank(op) + 1);
      if (right)
        left = Apply(op, *left, *right);
      ended = ended || !right;
    }
    return left;
  }
  Value Factor()
  {
    if (Take('(')) {
      const Value inner = Expression(1);
      ended = !Take(')') || !inner || ended;
      return inner;
    }
    for (const char op : {'-', '~', '+'})
      if (Take(op)) {
        const Value all = Expression(1);
        return !all || op == '+' ? all : Value(op == '-' ? 0 - *all : ~*all);
      }
    if (Take('$'))
      return Digits(16);
    if (Take('#'))
      return Digits(2);
    const char c = Peek();
    if (c < '0' || c > '9')
      return {};
    if (rest.starts_with("0x") || rest.starts_with("0X")) {
      rest.remove_prefix(2);
      return Digits(16);
    }
    return Digits(c == '0' ? 8 : 10);
  }
  uint32_t Digits(uint32_t base)
  {
    uint32_t value = 0;
    for (; !rest.empty(); rest.remove_prefix(1)) {
      const size_t digit = std::string_view("0123456789ABCDEFabcdef").find(rest[0]);
      const size_t digitValue = digit > 15 ? digit - 6 : digit;
      if (digit == std::string_view::npos || digitValue >= base)
        break;
      value = value * base + static_cast<uint32_t>(digitValue);
    }
    return value;
  }
  static uint32_t Apply(char op, uint32_t a, uint32_t b)
  {
    const int64_t left = static_cast<int32_t>(a);
    const int64_t right = static_cast<int32_t>(b);
    int64_t result = 0;
    switch (op) {
    case '|':
      return a | b;
    case '&':
      return a & b;
    case '^':
      return a ^ b;
    case '+':
      return a + b;
    case '-':
      return a - b;
    case '/':
      result = right == 0 ? 0 : left / right;
      break;
    case '%':
      result = right == 0 ? 0 : left % right;
      break;
    default:
      return a * b;
    }
    return static_cast<uint32_t>(result);
  }

  std::string_view rest;
  bool ended = false;
};

// The evaluator gives what plain recursive descent gives, as long as it takes the whole expression.
inline void FuzzEval(std::string_view input)
{
  const int value = Eval(input);
  input = input.substr(0, input.find('\0'));
  const auto operators = std::count_if(input.begin(), input.end(), [](char c) {
    return std::string_view("|&^+-*/%x~").find(c) != std::string_view::npos;
  });
  if (operators < 40 && input.size() < 1000)
    FUZZ_CHECK(value == FuzzEvaluator(input).Run());
}
