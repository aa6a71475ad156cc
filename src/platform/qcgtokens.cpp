#include "platform/qcgtokens.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace {

bool IsWordCharacter(char c)
{
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Blanks, line ends, comments and directives.
size_t BlankEnd(std::string_view s, size_t i)
{
  while (i < s.size()) {
    if (std::isspace(static_cast<unsigned char>(s[i])))
      ++i;
    else if (s[i] == '#' || s.substr(i, 2) == "//")
      i = std::min(s.find('\n', i), s.size());
    else if (s.substr(i, 2) == "/*")
      i = std::min(s.find("*/", i + 2), s.size() - 2) + 2;
    else
      break;
  }
  return i;
}

size_t NumberEnd(std::string_view s, size_t i)
{
  while (i < s.size()) {
    const bool sign = (s[i] == '+' || s[i] == '-') && (s[i - 1] == 'e' || s[i - 1] == 'E');
    if (!IsWordCharacter(s[i]) && s[i] != '.' && !sign)
      break;
    ++i;
  }
  return i;
}

size_t TokenEnd(std::string_view s, size_t i)
{
  const bool digit = std::isdigit(static_cast<unsigned char>(s[i]));
  const bool point = s[i] == '.' && i + 1 < s.size() && std::isdigit(static_cast<unsigned char>(s[i + 1]));
  if (digit || point)
    return NumberEnd(s, i + 1);
  if (IsWordCharacter(s[i]))
    return static_cast<size_t>(std::find_if_not(s.begin() + static_cast<std::ptrdiff_t>(i), s.end(), IsWordCharacter) -
                               s.begin());
  if (s[i] == '"')
    return std::min(s.find('"', i + 1), s.size() - 1) + 1;
  for (const std::string_view sign : {"==", "!=", "<=", ">=", "&&", "||", "+=", "-=", "*=", "/=", "++", "--", "::"})
    if (s.substr(i, 2) == sign)
      return i + 2;
  return i + 1;
}

} // namespace

bool QCgToken::IsWord() const
{
  return !text.empty() && IsWordCharacter(text[0]) && !std::isdigit(static_cast<unsigned char>(text[0]));
}

std::vector<QCgToken> QCgTokens(std::string_view source)
{
  std::vector<QCgToken> tokens;
  for (size_t i = 0;;) {
    const size_t start = BlankEnd(source, i);
    const size_t end = start < source.size() ? TokenEnd(source, start) : start;
    tokens.push_back({std::string(source.substr(i, start - i)), std::string(source.substr(start, end - start))});
    if (start >= source.size())
      return tokens;
    i = end;
  }
}

std::string QCgJoin(const std::vector<QCgToken>& tokens, size_t from, size_t to)
{
  std::string text;
  for (size_t i = from; i < to; ++i)
    text += tokens[i].before + tokens[i].text;
  return text;
}

std::string QCgPlace(const std::vector<QCgToken>& tokens, size_t at, const std::string& file)
{
  std::string name = file;
  int line = 1;
  for (size_t i = 0; i <= at && i < tokens.size(); ++i) {
    std::string_view blanks = tokens[i].before;
    for (size_t end; (end = blanks.find('\n')) != blanks.npos; blanks.remove_prefix(end + 1)) {
      const std::string_view row = blanks.substr(0, end);
      ++line;
      const size_t directive = row.find("#line ");
      if (directive == row.npos)
        continue;
      const char* from = row.data() + directive + 6;
      std::from_chars(from, row.data() + row.size(), line);
      const size_t quote = row.find('"', directive);
      if (quote != row.npos)
        name = row.substr(quote + 1, row.rfind('"') - quote - 1);
    }
  }
  return name + ":" + std::to_string(line);
}

size_t QCgClose(const std::vector<QCgToken>& tokens, size_t open)
{
  int depth = 0;
  for (size_t i = open; i < tokens.size(); ++i) {
    const std::string& t = tokens[i].text;
    if (t == "(" || t == "{" || t == "[")
      ++depth;
    else if ((t == ")" || t == "}" || t == "]") && --depth == 0)
      return i + 1;
  }
  return tokens.size();
}
