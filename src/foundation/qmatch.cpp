#include "foundation/qmatch.h"

#include <string_view>
#include <vector>

namespace {

unsigned char Lower(char c)
{
  return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

// rest[t]: does the pattern behind this character match the text from t on? Turned into the same for the pattern from
// this character on. In ascending order, since most look one place ahead.
void Step(char c, bool isLast, std::string_view text, std::vector<char>& rest)
{
  const size_t end = text.size();
  switch (c) {
  case '*':
    if (isLast) {
      rest.assign(end + 1, 1);
      return;
    }
    rest[end] = 0; // the rest is tried where there is text only
    for (size_t t = end; t-- > 0;)
      rest[t] = rest[t] || rest[t + 1];
    return;
  case '!':
    for (char& r : rest)
      r = !r;
    return;
  case '(':
  case ')':
    return;
  default:
    for (size_t t = 0; t < end; ++t)
      rest[t] = (c == '?' || Lower(c) == Lower(text[t])) && rest[t + 1];
    rest[end] = 0;
  }
}

} // namespace

// From the pattern's end backward, so that each pair of places is looked at once: the obvious recursion takes a time
// that doubles with each "*".
bool QMatch(const char* pattern, const char* text)
{
  const std::string_view p = pattern ? pattern : "";
  const std::string_view t = text ? text : "";
  std::vector<char> rest(t.size() + 1, 0);
  rest[t.size()] = 1; // the end of the pattern matches the end of the text
  for (size_t i = p.size(); i-- > 0;)
    Step(p[i], i + 1 == p.size(), t, rest);
  return rest[0];
}
