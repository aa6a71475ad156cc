#include "foundation/eval.h"

#include "foundation/qreport.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

// A value that waits for its right side, with what is to be done with it. Parentheses leave no entry of their own: an
// operator belongs to the parentheses that were open when it was met.
struct Waiting
{
  char op = 0; // '|', '&', '^', '+', '-', '*', '/', '%'; 'n', 'i', 'p' for unary minus, inversion, plus
  int parentheses = 0;
  uint32_t left = 0;
};

int Rank(char op)
{
  switch (op) {
  case '|':
    return 1;
  case '&':
  case '^':
    return 2;
  case '+':
  case '-':
    return 3;
  case '*':
  case '/':
  case '%':
    return 4;
  default:
    return 0; // a unary operator takes all that follows
  }
}

uint32_t Divide(char op, uint32_t left, uint32_t right)
{
  if (right == 0)
    return 0;
  if (right == UINT32_MAX) // by -1; the smallest number has no opposite
    return op == '/' ? 0 - left : 0;
  const auto a = static_cast<int32_t>(left);
  const auto b = static_cast<int32_t>(right);
  return static_cast<uint32_t>(op == '/' ? a / b : a % b);
}

uint32_t Apply(const Waiting& w, uint32_t right)
{
  switch (w.op) {
  case '|':
    return w.left | right;
  case '&':
    return w.left & right;
  case '^':
    return w.left ^ right;
  case '+':
    return w.left + right;
  case '-':
    return w.left - right;
  case '*':
    return w.left * right;
  case '/':
  case '%':
    return Divide(w.op, w.left, right);
  case 'n':
    return 0 - right;
  case 'i':
    return ~right;
  default:
    return right;
  }
}

int DigitValue(char c)
{
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : 16;
}

// Reads left to right and works out what can't change any more, so that nothing recurses however deep the parentheses.
class Evaluator
{
public:
  explicit Evaluator(std::string_view text) : rest(text) {}

  int Run()
  {
    while (ReadOperand() && ReadOperator())
      ;
    // What waits for a value that never came is dropped, with the value on its left kept.
    while (!hasValue && count > 0) {
      const Waiting w = waiting[--count];
      hasValue = Rank(w.op) > 0;
      value = w.left;
    }
    while (count > 0)
      value = Apply(waiting[--count], value);
    return static_cast<int>(value);
  }

private:
  char Peek()
  {
    while (rest.starts_with(' '))
      rest.remove_prefix(1);
    return rest.empty() ? '\0' : rest[0];
  }

  // False when no more can wait; the expression ends there.
  bool Wait(char op)
  {
    if (count == waiting.size())
      return false;
    waiting[count++] = {op, parentheses, value};
    hasValue = false;
    value = 0;
    return true;
  }

  // Opening parentheses, unary operators and one number.
  bool ReadOperand()
  {
    for (;;) {
      const char c = Peek();
      const auto unary = std::string_view("-~+").find(c);
      if (c == '(')
        ++parentheses;
      else if (unary == std::string_view::npos)
        return ReadNumber(c);
      else if (!Wait("nip"[unary]))
        return false;
      rest.remove_prefix(1);
    }
  }

  bool ReadNumber(char first)
  {
    if (first == '$' || first == '#') {
      rest.remove_prefix(1);
      ReadDigits(first == '$' ? 16 : 2);
    } else if (rest.starts_with("0x") || rest.starts_with("0X")) {
      rest.remove_prefix(2);
      ReadDigits(16);
    } else if (first >= '0' && first <= '9') {
      ReadDigits(first == '0' ? 8 : 10);
    } else {
      return false;
    }
    hasValue = true;
    return true;
  }

  void ReadDigits(int base)
  {
    for (; !rest.empty() && DigitValue(rest[0]) < base; rest.remove_prefix(1))
      value = value * static_cast<uint32_t>(base) + static_cast<uint32_t>(DigitValue(rest[0]));
  }

  // Closing parentheses and one binary operator.
  bool ReadOperator()
  {
    for (; Peek() == ')' && parentheses > 0; rest.remove_prefix(1)) {
      Close(0);
      --parentheses;
    }
    const char c = Peek() == 'x' ? '*' : Peek();
    if (Rank(c) == 0)
      return false;
    rest.remove_prefix(1);
    Close(Rank(c));
    return Wait(c);
  }

  // Works out what waits inside the current parentheses and binds at least as tight.
  void Close(int rank)
  {
    while (count > 0 && waiting[count - 1].parentheses == parentheses && Rank(waiting[count - 1].op) >= rank)
      value = Apply(waiting[--count], value);
  }

  std::string_view rest;
  std::array<Waiting, 40> waiting;
  size_t count = 0;
  int parentheses = 0;
  uint32_t value = 0;
  bool hasValue = false;
};

} // namespace

int Eval(std::string_view text)
{
  return Evaluator(text.substr(0, text.find('\0'))).Run();
}

int Eval(const char* text)
{
  if (text)
    return Eval(std::string_view(text));
  QWARN("Eval() is passed 0-pointer");
  return 0;
}
