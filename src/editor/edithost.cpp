#include "editor/edithost.h"

#include "foundation/eval.h"
#include "foundation/qnumber.h"
#include "foundation/qstring.h"

#include <cstdio>

namespace {

constexpr int INDEX_LENGTH = 128;
constexpr int TEXT_LENGTH = 256;
constexpr QRect NUMBER_RECT{500, 150, 350, 150};

// What isn't a number at all must not pass for index 0 and overwrite the first record.
int IndexOf(const std::string& answer)
{
  qstring reason;
  const bool isNumber = answer.find_first_of("0123456789") != std::string::npos && qstring(answer).ValidateInt(reason);
  return isNumber ? Eval(answer.c_str()) : -1;
}

} // namespace

int InputIndex(EditHost& host, const char* prompt, int count, int current)
{
  const std::string question = prompt + (count > 0 ? " (0.." + std::to_string(count - 1) + ") (empty=new)"
                                                   : std::string(" (none existing yet)"));
  while (true) {
    std::string answer = current == -1 ? std::string() : std::to_string(current);
    if (!host.AskText("Enter an index", question.c_str(), answer, INDEX_LENGTH))
      return -1;
    if (answer.empty())
      return count;
    const int n = IndexOf(answer);
    if (n >= 0 && n < count)
      return n;
    if (!host.Message("Error", "Value out of range."))
      return -1;
  }
}

bool InputText(EditHost& host, const char* title, const char* prompt, const char* text, std::string& out)
{
  std::string answer = text;
  if (!host.AskText(title, prompt, answer, TEXT_LENGTH))
    return false;
  out = answer;
  return true;
}

bool InputInt(EditHost& host, const char* title, const char* prompt, int value, int& out)
{
  std::string answer = std::to_string(value);
  if (!host.AskText(title, prompt, answer, TEXT_LENGTH, &NUMBER_RECT))
    return false;
  out = Eval(answer.c_str());
  return true;
}

bool InputFloat(EditHost& host, const char* title, const char* prompt, float value, float& out)
{
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", static_cast<double>(value));
  std::string answer = text;
  if (!host.AskText(title, prompt, answer, TEXT_LENGTH, &NUMBER_RECT))
    return false;
  out = static_cast<float>(QParseDouble(answer));
  return true;
}
